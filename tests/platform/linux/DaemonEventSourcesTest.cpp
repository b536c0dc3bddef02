// The daemon's event sources on the real kernel: a memory file system mounted in a private
// mount namespace reaches the volume events through the mount table's change signal and is
// judged by the live machine's disk information; the debug trigger written while the
// daemon runs switches the log level through the real file watcher.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "app/QVRemovableMedia.h"
#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "discovery/QVDiscovererFactory.h"
#include "platform/RunLoop.h"
#include "platform/VolumeWatcher.h"
#include "support/ChildProcess.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using namespace std::chrono_literals;

bool enterPrivateMounts() {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool privateMountsAvailable() {
    return ::geteuid() == 0 && testing::runInChild([] { return enterPrivateMounts() ? 0 : 1; }).exitCode == 0;
}

class Flags : public PendingMediaFlags {
public:
    void setPendingMountNotification(bool pending) override { mount_ = pending; }
    bool pendingMountNotification() const override { return mount_; }
    void setPendingUnmountNotification(bool pending) override { unmount_ = pending; }
    bool pendingUnmountNotification() const override { return unmount_; }

private:
    std::atomic<bool> mount_ {false};
    std::atomic<bool> unmount_ {false};
};

class DaemonEventSourcesTest : public testing::TemporaryRootTest {};

// The memory file system is mounted and unmounted while the loop runs; both events arrive,
// neither is a USB volume, so no flag is raised and nothing is said at information level.
TEST_F(DaemonEventSourcesTest, AMemoryFileSystemMountedInAPrivateNamespaceIsSeenAndIsNotUsb) {
    if (!privateMountsAvailable()) GTEST_SKIP() << "needs root and mount namespaces";
    const std::string mountPath = folder.makeFolder("memory stick");
    const testing::ChildResult result = testing::runInChild([&] {
        if (!enterPrivateMounts()) return 10;
        const std::unique_ptr<RunLoop> loop = RunLoop::create();
        if (!loop) return 11;
        QVDiscovererFactory factory;
        Flags flags;
        int events = 0;
        bool judgedUsb = false;
        QVRemovableMedia media(
            flags, [&](const std::string& path) { return factory.volumeInfoForMountPath(path); },
            [&] { return factory.volumeMountPaths(); },
            [&](VolumeWatcher::Handler handler) {
                return VolumeWatcher::create(*loop, [&, handler](const VolumeEvent& event) {
                    if (event.mountPath != mountPath) return;
                    ++events;
                    judgedUsb = judgedUsb || media.isRegisteredMountPath(mountPath);
                    handler(event);
                    if (event.kind == VolumeEvent::Kind::Mounted) {
                        ::umount(mountPath.c_str());
                    } else {
                        loop->stop();
                    }
                });
            });
        media.collectAllUSBPath();
        media.setupUsbArrivalDepartureNotificationSystem();
        if (::mount("tmpfs", mountPath.c_str(), "tmpfs", 0, "size=1m") != 0) return 12;
        loop->startTimer(60s, [&] { loop->stop(); });
        loop->run();
        media.discardArrivalDepartureNotificationSystem();
        if (events != 2) return 13;
        if (judgedUsb || media.isRegisteredMountPath(mountPath)) return 14;
        if (flags.pendingMountNotification() || flags.pendingUnmountNotification()) return 15;
        return 0;
    });
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_TRUE(logHas("Setup USB disk notification system."));
    EXPECT_FALSE(logHas("VolumeEvent is valid."));
    EXPECT_FALSE(logHas("One or more devices were"));
}

}  // namespace
}  // namespace tov
