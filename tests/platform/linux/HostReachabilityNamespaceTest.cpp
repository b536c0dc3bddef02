#include "platform/HostReachability.h"

#include <gtest/gtest.h>
#include <sched.h>

#include "support/ChildProcess.h"
#include "support/TestFolder.h"
#include "common/NetworkUtils.h"

namespace tov {
namespace {

constexpr int kNoNamespace = 77;

// A fresh network namespace has only a loopback interface that is down: no route leads
// anywhere, so nothing may be judged reachable there.
TEST(HostReachabilityLinux, NothingIsReachableInANetworkWithoutRoutes) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "needs root";
    const int verdict = testing::runInChild([] {
        if (unshare(CLONE_NEWNET) != 0) return kNoNamespace;
        if (IsHostReachable("192.0.2.1")) return 1;
        if (IsHostReachable("127.0.0.1")) return 2;
        if (reachabilityFlagsForHost("192.0.2.1") != 0u) return 3;
        return 0;
    }).exitCode;
    if (verdict == kNoNamespace) GTEST_SKIP() << "cannot make a network namespace here";
    EXPECT_EQ(verdict, 0);
}

}  // namespace
}  // namespace tov
