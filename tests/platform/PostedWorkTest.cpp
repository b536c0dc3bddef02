#include "platform/PostedWork.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

namespace tov {
namespace {

TEST(PostedWork, RunsTheQueuedWorkInOrderOfPosting) {
    PostedWork work;
    std::atomic<bool> stop{false};
    std::string order;
    work.push([&order] { order += "a"; });
    work.push([&order] { order += "b"; });
    work.push([&order] { order += "c"; });
    EXPECT_FALSE(work.runQueued(stop));
    EXPECT_EQ(order, "abc");
    EXPECT_FALSE(work.runQueued(stop));
    EXPECT_EQ(order, "abc");
}

TEST(PostedWork, WorkPostedWhileRunningWaitsForTheNextCall) {
    PostedWork work;
    std::atomic<bool> stop{false};
    std::string order;
    work.push([&] {
        order += "a";
        work.push([&order] { order += "b"; });
    });
    EXPECT_TRUE(work.runQueued(stop));
    EXPECT_EQ(order, "a");
    EXPECT_FALSE(work.runQueued(stop));
    EXPECT_EQ(order, "ab");
}

TEST(PostedWork, AStopLeavesTheRestForLater) {
    PostedWork work;
    std::atomic<bool> stop{false};
    std::string order;
    work.push([&] {
        order += "a";
        stop = true;
    });
    work.push([&order] { order += "b"; });
    EXPECT_TRUE(work.runQueued(stop));
    EXPECT_EQ(order, "a");
    stop = false;
    EXPECT_FALSE(work.runQueued(stop));
    EXPECT_EQ(order, "ab");
}

TEST(PostedWork, AnEmptyCallbackIsSkipped) {
    PostedWork work;
    std::atomic<bool> stop{false};
    int runs = 0;
    work.push(nullptr);
    work.push([&runs] { ++runs; });
    EXPECT_FALSE(work.runQueued(stop));
    EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace tov
