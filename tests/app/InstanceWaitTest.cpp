#include "app/InstanceWait.h"

#include <gtest/gtest.h>

#include <string>

namespace tov {
namespace {

// Records the polls and sleeps in the order they happen: "p" for a poll, "s" for a sleep.
struct WaitRecord {
    std::string events;
    int busyPolls = 0;

    bool wait() {
        return waitForOtherInstances(
            [this] {
                events += 'p';
                return busyPolls-- > 0 ? std::int64_t{1} : std::int64_t{0};
            },
            [this] { events += 's'; });
    }
};

TEST(InstanceWait, NoOtherInstanceEndsAtTheFirstPollWithoutSleeping) {
    WaitRecord record;
    EXPECT_TRUE(record.wait());
    EXPECT_EQ(record.events, "p");
}

TEST(InstanceWait, BusyThenFreeEndsAtTheFreePoll) {
    WaitRecord record{.events = {}, .busyPolls = 3};
    EXPECT_TRUE(record.wait());
    EXPECT_EQ(record.events, "pspspsp");
}

TEST(InstanceWait, FreeAtTheLastPollStillEndsTheWait) {
    WaitRecord record{.events = {}, .busyPolls = 18};
    EXPECT_TRUE(record.wait());
    std::string expected;
    for (int poll = 0; poll < 18; ++poll) expected += "ps";
    EXPECT_EQ(record.events, expected + "p");
}

TEST(InstanceWait, BusyNineteenTimesGivesUpAfterTheNineteenthSleep) {
    WaitRecord record{.events = {}, .busyPolls = 1000};
    EXPECT_FALSE(record.wait());
    std::string expected;
    for (int poll = 0; poll < 19; ++poll) expected += "ps";
    EXPECT_EQ(record.events, expected);
}

TEST(InstanceWait, CountsOtherThanOneAlsoMeanBusy) {
    int polls = 0;
    int sleeps = 0;
    EXPECT_FALSE(waitForOtherInstances(
        [&] {
            ++polls;
            return std::int64_t{-1};
        },
        [&] { ++sleeps; }));
    EXPECT_EQ(polls, 19);
    EXPECT_EQ(sleeps, 19);
}

}  // namespace
}  // namespace tov
