#include "platform/linux/MountTableWatcher.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <iostream>
#include <thread>
#include <vector>

#include "platform/linux/EpollRunLoop.h"
#include "support/ChildProcess.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using namespace std::chrono_literals;

// Bounds a wait that fails; a passing wait ends long before.
constexpr std::chrono::milliseconds kFailureDeadline = 120s;

bool enterPrivateMounts() {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool privateMountsAvailable() {
    if (::geteuid() != 0) return false;
    return testing::runInChild([] { return enterPrivateMounts() ? 0 : 1; }).exitCode == 0;
}

bool mountTmpfs(const std::string& path) { return ::mount("tmpfs", path.c_str(), "tmpfs", 0, "size=16k") == 0; }

// Runs the loop until done answers true or the failure deadline passes.
bool runUntil(RunLoop& loop, const std::function<bool()>& done) {
    bool finished = false;
    const RunLoop::TimerId deadline = loop.startTimer(kFailureDeadline, [&] { loop.stop(); });
    RunLoop::TimerId poll = 0;
    std::function<void()> check = [&] {
        finished = done();
        if (finished) loop.stop();
        else poll = loop.startTimer(5ms, check);
    };
    poll = loop.startTimer(0ms, check);
    loop.run();
    loop.cancelTimer(deadline);
    loop.cancelTimer(poll);
    return finished;
}

std::string describe(const VolumeEvent& event) {
    return std::string(event.kind == VolumeEvent::Kind::Mounted ? "+" : "-") + event.mountPath + "|" + event.volumeName;
}

class MountTableWatcherTest : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        if (!privateMountsAvailable()) GTEST_SKIP() << "needs root and mount namespaces";
    }

    // body runs in a child with a mount namespace of its own, so no mount reaches the
    // machine; its output is shown when it fails.
    void inPrivateMounts(const std::function<int()>& body) {
        const testing::ChildResult result = testing::runInChild([&] { return enterPrivateMounts() ? body() : 125; });
        EXPECT_EQ(result.exitCode, 0) << result.output;
    }
};

TEST_F(MountTableWatcherTest, AMountAndItsUnmountAreReportedWithTheExactPathAndName) {
    const std::string name = std::string("USB Stick\nline two\t\\ \xff\xfe end");
    const std::string path = folder.makeFolder(name);
    inPrivateMounts([&] {
        std::unique_ptr<RunLoop> loop = RunLoop::create();
        std::vector<VolumeEvent> events;
        std::unique_ptr<VolumeWatcher> watcher =
            VolumeWatcher::create(*loop, [&](const VolumeEvent& event) { events.push_back(event); });
        if (!watcher) return 2;
        if (!mountTmpfs(path)) return 3;
        if (!runUntil(*loop, [&] { return !events.empty(); })) return 4;
        if (::umount(path.c_str()) != 0) return 5;
        if (!runUntil(*loop, [&] { return events.size() >= 2; })) return 6;
        const std::vector<std::string> expected{"+" + path + "|" + name, "-" + path + "|" + name};
        for (std::size_t index = 0; index < events.size(); ++index) std::cout << describe(events[index]) << "\n";
        return events.size() == 2 && describe(events[0]) == expected[0] && describe(events[1]) == expected[1] ? 0 : 1;
    });
}

TEST_F(MountTableWatcherTest, WhatWasMountedBeforeTheWatcherStartedIsNotReported) {
    const std::string before = folder.makeFolder("before");
    const std::string after = folder.makeFolder("after");
    inPrivateMounts([&] {
        if (!mountTmpfs(before)) return 3;
        std::unique_ptr<RunLoop> loop = RunLoop::create();
        std::vector<VolumeEvent> events;
        std::unique_ptr<VolumeWatcher> watcher =
            VolumeWatcher::create(*loop, [&](const VolumeEvent& event) { events.push_back(event); });
        if (!watcher) return 2;
        if (!mountTmpfs(after)) return 3;
        if (!runUntil(*loop, [&] { return !events.empty(); })) return 4;
        for (const VolumeEvent& event : events) std::cout << describe(event) << "\n";
        return events.size() == 1 && describe(events[0]) == "+" + after + "|after" ? 0 : 1;
    });
}

TEST_F(MountTableWatcherTest, AFileSystemStackedOnAMountedPathAndItsRemovalAreReported) {
    const std::string path = folder.makeFolder("stacked");
    inPrivateMounts([&] {
        if (!mountTmpfs(path)) return 3;
        std::unique_ptr<RunLoop> loop = RunLoop::create();
        std::vector<VolumeEvent> events;
        std::unique_ptr<VolumeWatcher> watcher =
            VolumeWatcher::create(*loop, [&](const VolumeEvent& event) { events.push_back(event); });
        if (!watcher) return 2;
        if (!mountTmpfs(path)) return 3;
        if (!runUntil(*loop, [&] { return !events.empty(); })) return 4;
        if (::umount(path.c_str()) != 0) return 5;  // the upper one
        if (!runUntil(*loop, [&] { return events.size() >= 2; })) return 6;
        for (const VolumeEvent& event : events) std::cout << describe(event) << "\n";
        return events.size() == 2 && describe(events[0]) == "+" + path + "|stacked" &&
                       describe(events[1]) == "-" + path + "|stacked"
                   ? 0
                   : 1;
    });
}

// A burst of a thousand mounts, then one of a thousand unmounts once the mounts were seen.
// The table is compared between readings, so a volume mounted and unmounted again between
// two readings is not seen at all: the unmounts wait for the mounts' events.
TEST_F(MountTableWatcherTest, AThousandMountsAndUnmountsMadeWhileTheLoopRunsAreAllReportedInOrder) {
    constexpr int kCount = 1000;
    std::vector<std::string> paths;
    for (int index = 0; index < kCount; ++index) paths.push_back(folder.makeFolder("m" + std::to_string(index)));
    inPrivateMounts([&] {
        std::unique_ptr<RunLoop> loop = RunLoop::create();
        std::vector<std::string> mounted;
        std::vector<std::string> unmounted;
        std::atomic<int> mountsSeen{0};
        std::unique_ptr<VolumeWatcher> watcher = VolumeWatcher::create(*loop, [&](const VolumeEvent& event) {
            (event.kind == VolumeEvent::Kind::Mounted ? mounted : unmounted).push_back(event.mountPath);
            if (event.kind == VolumeEvent::Kind::Mounted) ++mountsSeen;
        });
        if (!watcher) return 2;
        std::atomic<int> failures{0};
        std::atomic<bool> giveUp{false};
        std::thread mounter([&] {
            for (const std::string& path : paths) failures += mountTmpfs(path) ? 0 : 1;
            while (mountsSeen < kCount && !giveUp) std::this_thread::sleep_for(5ms);
            for (const std::string& path : paths) failures += ::umount(path.c_str()) == 0 ? 0 : 1;
        });
        const bool all = runUntil(*loop, [&] { return int(mounted.size()) >= kCount && int(unmounted.size()) >= kCount; });
        giveUp = true;
        mounter.join();
        std::cout << mounted.size() << " mounted, " << unmounted.size() << " unmounted, " << failures << " failed\n";
        if (!all || failures != 0) return 4;
        return mounted == paths && unmounted == paths ? 0 : 1;
    });
}

TEST_F(MountTableWatcherTest, NoHandlerRunsAfterTheWatcherEnds) {
    const std::string path = folder.makeFolder("late");
    const std::string marker = folder.makeFolder("marker");
    inPrivateMounts([&] {
        std::unique_ptr<RunLoop> loop = RunLoop::create();
        int events = 0;
        std::unique_ptr<VolumeWatcher> watcher = VolumeWatcher::create(*loop, [&](const VolumeEvent&) { ++events; });
        bool markerSeen = false;
        std::unique_ptr<VolumeWatcher> witness =
            VolumeWatcher::create(*loop, [&](const VolumeEvent& event) { markerSeen |= event.mountPath == marker; });
        if (!watcher || !witness) return 2;
        if (!mountTmpfs(path)) return 3;
        watcher.reset();
        if (!mountTmpfs(marker)) return 3;
        if (!runUntil(*loop, [&] { return markerSeen; })) return 4;
        return events == 0 ? 0 : 1;
    });
}

TEST_F(MountTableWatcherTest, AHandlerMayEndItsWatcher) {
    const std::string first = folder.makeFolder("first");
    const std::string second = folder.makeFolder("second");
    inPrivateMounts([&] {
        std::unique_ptr<RunLoop> loop = RunLoop::create();
        int events = 0;
        std::unique_ptr<VolumeWatcher> watcher;
        watcher = VolumeWatcher::create(*loop, [&](const VolumeEvent&) {
            ++events;
            watcher.reset();
        });
        if (!watcher) return 2;
        // Both in one reading: the second event is not delivered once the watcher is gone.
        if (!mountTmpfs(first) || !mountTmpfs(second)) return 3;
        if (!runUntil(*loop, [&] { return events > 0; })) return 4;
        return events == 1 ? 0 : 1;
    });
}

TEST_F(MountTableWatcherTest, ATableGrownBeyondTheLimitIsLoggedAndReadAgainOnceItFits) {
    const std::string big = folder.makeFolder("a folder with a long name to make the table grow quickly");
    const std::string small = folder.makeFolder("small");
    inPrivateMounts([&] {
        std::unique_ptr<RunLoop> loop = RunLoop::create();
        const std::string table = testing::readFile(MountInfo::kPath);
        std::vector<VolumeEvent> events;
        std::unique_ptr<VolumeWatcher> watcher = MountTableWatcher::open(
            *loop, [&](const VolumeEvent& event) { events.push_back(event); }, MountInfo::kPath, table.size() + 300);
        if (!watcher) return 2;
        for (int index = 0; index < 10; ++index) {
            if (!mountTmpfs(big)) return 3;
        }
        if (!runUntil(*loop, [&] { return logHas("holds more than"); })) return 4;
        for (int index = 0; index < 10; ++index) {
            if (::umount(big.c_str()) != 0) return 5;
        }
        if (!mountTmpfs(small)) return 3;
        if (!runUntil(*loop, [&] { return !events.empty(); })) return 6;
        for (const VolumeEvent& event : events) std::cout << describe(event) << "\n";
        return events.size() == 1 && describe(events[0]) == "+" + small + "|small" ? 0 : 1;
    });
    EXPECT_TRUE(logHas("its changes are not reported until it is smaller."));
}

TEST_F(MountTableWatcherTest, ATableThatCannotBeOpenedOrWatchedIsLogged) {
    std::unique_ptr<RunLoop> loop = RunLoop::create();
    EXPECT_EQ(MountTableWatcher::open(*loop, [](const VolumeEvent&) {}, folder.file("missing")), nullptr);
    EXPECT_TRUE(logHas("The mount table " + folder.file("missing") + " cannot be opened"));
    const std::string regular = folder.write("regular", "22 1 8:1 / / rw - ext4 /dev/sda1 rw\n");
    EXPECT_EQ(MountTableWatcher::open(*loop, [](const VolumeEvent&) {}, regular), nullptr);
    EXPECT_TRUE(logHas("The mount table " + regular + " cannot be watched."));
}

}  // namespace
}  // namespace tov
