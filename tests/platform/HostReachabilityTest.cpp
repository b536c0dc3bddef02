#include "platform/HostReachability.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(HostReachability, LoopbackAddressIsReachable) {
    const std::optional<std::uint32_t> flags = reachabilityFlagsForHost("127.0.0.1");
    ASSERT_TRUE(flags.has_value());
    EXPECT_TRUE(*flags & kReachabilityReachable);
}

TEST(HostReachability, LocalhostIsReachable) {
    const std::optional<std::uint32_t> flags = reachabilityFlagsForHost("localhost");
    ASSERT_TRUE(flags.has_value());
    EXPECT_TRUE(*flags & kReachabilityReachable);
}

TEST(HostReachability, NameThatDoesNotResolveIsNeverReachable) {
    const std::optional<std::uint32_t> flags = reachabilityFlagsForHost("no-such-host.invalid");
    EXPECT_FALSE(flags.has_value() && (*flags & kReachabilityReachable));
}

TEST(HostReachability, NoNameGivesNoFlags) {
    EXPECT_FALSE(reachabilityFlagsForHost(nullptr).has_value());
    EXPECT_FALSE(reachabilityFlagsForHost("").has_value());
}

}  // namespace
}  // namespace tov
