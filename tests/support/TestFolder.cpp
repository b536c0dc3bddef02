#include "support/TestFolder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace tov::testing {

TestFolder::TestFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tov-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    // The path without links: a Mac's temporary folder lies below /var, a link to
    // /private/var, and paths the code under test resolves must equal the test's own.
    path_ = std::filesystem::canonical(pattern).string();
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TestFolder::write(const std::string& name, const std::string& bytes) const {
    const std::string target = file(name);
    std::ofstream(target, std::ios::binary | std::ios::trunc) << bytes;
    return target;
}

std::string TestFolder::makeFolder(const std::string& name) const {
    const std::string target = file(name);
    std::filesystem::create_directory(target);
    return target;
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool runningAsRoot() { return ::geteuid() == 0; }

struct stat lstatOf(const std::string& path) {
    struct stat status {};
    ::lstat(path.c_str(), &status);
    return status;
}

}  // namespace tov::testing
