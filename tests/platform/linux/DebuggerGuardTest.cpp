#include "platform/DebuggerGuard.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>

#include "support/ChildProcess.h"

namespace tov {
namespace {

TEST(DebuggerGuard, MakesTheProcessNonDumpable) {
    const testing::ChildResult result = testing::runInChild([] {
        if (::prctl(PR_GET_DUMPABLE) != 1) return 2;
        denyDebuggerAttachment();
        return ::prctl(PR_GET_DUMPABLE) == 0 ? 0 : 1;
    });
    EXPECT_EQ(result.exitCode, 0);
}

}  // namespace
}  // namespace tov
