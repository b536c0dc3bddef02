#pragma once

// Test helpers: a fresh temporary folder per test, and work done in a forked child that
// reports its verdict through its exit code.

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tov::testing {

class TestFolder {
public:
    TestFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tov-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
        path_ = pattern;
    }
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

    // Writes bytes to a file in the folder and returns its path.
    std::string write(const std::string& name, const std::string& bytes) const {
        const std::string target = file(name);
        std::ofstream(target, std::ios::binary | std::ios::trunc) << bytes;
        return target;
    }

    std::string makeFolder(const std::string& name) const {
        const std::string target = file(name);
        std::filesystem::create_directory(target);
        return target;
    }

private:
    std::string path_;
};

inline bool runningAsRoot() {
    return geteuid() == 0;
}

// Runs work in a forked child; the child's exit code, or -1 when it did not exit normally.
inline int exitCodeOfChild(const std::function<int()>& work) {
    const pid_t child = fork();
    if (child == -1) return -1;
    if (child == 0) _exit(work());
    int status = 0;
    while (waitpid(child, &status, 0) == -1) {
        if (errno != EINTR) return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline struct stat lstatOf(const std::string& path) {
    struct stat status {};
    lstat(path.c_str(), &status);
    return status;
}

}  // namespace tov::testing
