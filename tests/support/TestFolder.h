#pragma once

// A fresh folder below the system's temporary folder for each test, removed with
// everything in it when the test ends, and small file helpers.

#include <sys/stat.h>

#include <string>

namespace tov::testing {

class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    // Writes bytes to a file in the folder and returns its path.
    std::string write(const std::string& name, const std::string& bytes) const;
    std::string makeFolder(const std::string& name) const;

private:
    std::string path_;
};

// Writes bytes to path, creating the missing folders on the way.
void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);

bool runningAsRoot();
struct stat lstatOf(const std::string& path);

}  // namespace tov::testing
