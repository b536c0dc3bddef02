#include "support/TestPipe.h"

#include <sys/types.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstddef>

#include "platform/CloseOnExecPipe.h"

namespace tov::testing {

TestPipe::TestPipe() { EXPECT_TRUE(openCloseOnExecPipe(ends_)); }

TestPipe::~TestPipe() {
    if (ends_[0] >= 0) ::close(ends_[0]);
    if (ends_[1] >= 0) ::close(ends_[1]);
}

void TestPipe::write(const std::string& bytes) const {
    EXPECT_EQ(::write(ends_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

std::string TestPipe::read() const {
    char buffer[256];
    const ssize_t count = ::read(ends_[0], buffer, sizeof buffer);
    return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : std::string();
}

}  // namespace tov::testing
