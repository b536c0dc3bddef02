#include "support/FileWatcherFixture.h"

#include <gtest/gtest.h>

namespace tov::testing {
namespace {

// Bounds a wait that fails; a passing wait ends long before.
constexpr std::chrono::milliseconds kFailureDeadline{30000};
constexpr std::chrono::milliseconds kPollInterval{5};

}  // namespace

void FileWatcherFixture::SetUp() {
    TemporaryRootTest::SetUp();
    loop = RunLoop::create();
    ASSERT_NE(loop, nullptr);
    folder.makeFolder("sentinel");
    watched = folder.makeFolder("watched");
    file = watched + "/policy.json";
}

void FileWatcherFixture::watch(const std::string& path, std::chrono::milliseconds latency) {
    watcher = FileWatcher::create(*loop, path, latency, [this] { ++calls; });
    ASSERT_NE(watcher, nullptr);
}

bool FileWatcherFixture::runUntil(const std::function<bool()>& done) {
    bool finished = done();
    if (finished) return true;
    const RunLoop::TimerId deadline = loop->startTimer(kFailureDeadline, [this] { loop->stop(); });
    RunLoop::TimerId poll = 0;
    std::function<void()> check = [&] {
        if (done()) {
            finished = true;
            loop->stop();
        } else {
            poll = loop->startTimer(kPollInterval, check);
        }
    };
    poll = loop->startTimer(std::chrono::milliseconds(0), check);
    loop->run();
    loop->cancelTimer(deadline);
    loop->cancelTimer(poll);
    return finished;
}

bool FileWatcherFixture::waitForCalls(int count) {
    return runUntil([&] { return calls >= count; });
}

void FileWatcherFixture::settle(std::chrono::milliseconds latency) {
    bool sentinelFired = false;
    const std::unique_ptr<FileWatcher> sentinel =
        FileWatcher::create(*loop, folder.file("sentinel/now"), latency * 3, [&] { sentinelFired = true; });
    ASSERT_NE(sentinel, nullptr);
    writeFile(folder.file("sentinel/now"), "x");
    ASSERT_TRUE(runUntil([&] { return sentinelFired; }));
}

}  // namespace tov::testing
