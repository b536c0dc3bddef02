#pragma once

// A pipe for run loop tests: both ends closed at exec and when the pipe goes.

#include <string>

namespace tov::testing {

class TestPipe {
public:
    TestPipe();
    ~TestPipe();
    TestPipe(const TestPipe&) = delete;
    TestPipe& operator=(const TestPipe&) = delete;

    int readEnd() const { return ends_[0]; }
    int writeEnd() const { return ends_[1]; }
    // Writes all of bytes (a failed test otherwise).
    void write(const std::string& bytes) const;
    // What one read gives: at most 256 bytes, empty at the end or on an error.
    std::string read() const;

private:
    int ends_[2] = {-1, -1};
};

}  // namespace tov::testing
