#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "support/ChildProcess.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

constexpr uid_t kNobody = 65534;

// The built executable run by an ordinary user: it refuses at once, with exit code 1 and
// nothing on standard output.
TEST(TovExecutableAsUser, NonRootUserIsRefused) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root to switch to another user";
    testing::TestFolder folder;
    ::chmod(folder.path().c_str(), 0755);
    const std::string program = folder.file("tov");
    std::filesystem::copy_file(TOV_EXECUTABLE, program);
    const testing::ChildResult result = testing::runInChild([&] {
        if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) return 99;
        return testing::executeProgram(program, {"-e"});
    });
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
}

}  // namespace
}  // namespace tov
