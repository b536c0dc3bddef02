#include "app/QVRemovableMedia.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

// The scheduler's side of the flags: counts how often each was raised.
class RecordedFlags : public PendingMediaFlags {
public:
    void setPendingMountNotification(bool pending) override {
        if (pending) ++mountRaised;
        mount.store(pending);
    }
    bool pendingMountNotification() const override { return mount.load(); }
    void setPendingUnmountNotification(bool pending) override {
        if (pending) ++unmountRaised;
        unmount.store(pending);
    }
    bool pendingUnmountNotification() const override { return unmount.load(); }

    std::atomic<bool> mount{false};
    std::atomic<bool> unmount{false};
    std::atomic<int> mountRaised{0};
    std::atomic<int> unmountRaised{0};
};

// What the watcher's factory made: the handler it was given and whether it still runs.
struct WatcherState {
    int created = 0;
    int stopped = 0;
    VolumeWatcher::Handler handler;
    bool running() const { return created > stopped; }
};

class RecordedWatcher : public VolumeWatcher {
public:
    explicit RecordedWatcher(WatcherState& state) : state_(state) {}
    ~RecordedWatcher() override {
        ++state_.stopped;
        state_.handler = nullptr;
    }

private:
    WatcherState& state_;
};

DictionaryRef volumeOnBus(const std::string& protocol) {
    auto info = std::make_shared<Dictionary>();
    info->set("MountPoint", Value("/somewhere"));
    info->set("BusProtocol", Value(protocol));
    return info;
}

VolumeEvent mounted(const std::string& path, const std::string& name = "STICK") {
    return {VolumeEvent::Kind::Mounted, path, name};
}

VolumeEvent unmounted(const std::string& path, const std::string& name = "STICK") {
    return {VolumeEvent::Kind::Unmounted, path, name};
}

std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
    return count;
}

class QVRemovableMediaTest : public testing::TemporaryRootTest {
protected:
    // The machine as the media code sees it: volumes by mount path, in mount order.
    void attach(const std::string& path, const std::string& protocol) {
        volumes[path] = volumeOnBus(protocol);
        mountOrder.push_back(path);
    }
    void detach(const std::string& path) {
        volumes.erase(path);
        std::erase(mountOrder, path);
    }

    // Delivers an event the way the platform's watcher does.
    void deliver(const VolumeEvent& event) {
        ASSERT_TRUE(watcher.handler) << "no watcher is running";
        watcher.handler(event);
    }

    // The log written since the last call.
    std::string newLog() {
        const std::string whole = log();
        const std::string fresh = whole.substr(std::min(seen, whole.size()));
        seen = whole.size();
        return fresh;
    }

    std::map<std::string, DictionaryRef> volumes;
    std::vector<std::string> mountOrder;
    std::vector<std::string> askedPaths;
    std::string throwingPath;
    bool mountPathsThrow = false;
    bool factoryFails = false;
    WatcherState watcher;
    RecordedFlags flags;
    std::size_t seen = 0;

    QVRemovableMedia media{
        flags,
        [this](const std::string& path) -> DictionaryRef {
            askedPaths.push_back(path);
            if (path == throwingPath) throw std::runtime_error("disk information failed for " + path);
            const auto volume = volumes.find(path);
            return volume == volumes.end() ? nullptr : volume->second;
        },
        [this] {
            if (mountPathsThrow) throw std::runtime_error("disk list failed");
            return mountOrder;
        },
        [this](VolumeWatcher::Handler handler) -> std::unique_ptr<VolumeWatcher> {
            if (factoryFails) return nullptr;
            ++watcher.created;
            watcher.handler = std::move(handler);
            return std::make_unique<RecordedWatcher>(watcher);
        }};
};

TEST_F(QVRemovableMediaTest, CollectEntersOnlyTheUsbVolumesMountedNow) {
    attach("/", "SATA");
    attach("/media/stick", "USB");
    attach("/media/nvme", "NVMe");
    attach("/media/other-stick", "USB");
    media.collectAllUSBPath();
    EXPECT_TRUE(media.isRegisteredMountPath("/media/stick"));
    EXPECT_TRUE(media.isRegisteredMountPath("/media/other-stick"));
    EXPECT_FALSE(media.isRegisteredMountPath("/"));
    EXPECT_FALSE(media.isRegisteredMountPath("/media/nvme"));
    EXPECT_FALSE(flags.mount);
    EXPECT_EQ(watcher.created, 0);
}

TEST_F(QVRemovableMediaTest, CollectReplacesTheRegistry) {
    attach("/media/old", "USB");
    media.collectAllUSBPath();
    detach("/media/old");
    attach("/media/new", "USB");
    media.collectAllUSBPath();
    EXPECT_FALSE(media.isRegisteredMountPath("/media/old"));
    EXPECT_TRUE(media.isRegisteredMountPath("/media/new"));
}

TEST_F(QVRemovableMediaTest, TheBusMustBeExactlyUsb) {
    attach("/media/lower", "usb");
    attach("/media/padded", "USB ");
    auto numeric = std::make_shared<Dictionary>();
    numeric->set("BusProtocol", Value(1));
    volumes["/media/number"] = numeric;
    mountOrder.push_back("/media/number");
    volumes["/media/no-bus"] = std::make_shared<Dictionary>();
    mountOrder.push_back("/media/no-bus");
    media.collectAllUSBPath();
    for (const std::string& path : mountOrder) EXPECT_FALSE(media.isRegisteredMountPath(path)) << path;
}

TEST_F(QVRemovableMediaTest, StickPluggedWhileEventsAreOffIsNotSeenAndItsLaterUnmountIsNotValid) {
    media.collectAllUSBPath();
    attach("/media/stick", "USB");  // mounted now; no watcher exists to report it
    EXPECT_EQ(watcher.created, 0);
    EXPECT_FALSE(media.isRegisteredForUsbDeviceEvents());

    media.setupUsbArrivalDepartureNotificationSystem();
    detach("/media/stick");
    newLog();
    deliver(unmounted("/media/stick"));

    EXPECT_FALSE(flags.unmount);
    EXPECT_EQ(flags.unmountRaised, 0);
    EXPECT_FALSE(flags.mount);
    EXPECT_EQ(newLog().find("VolumeEvent is valid"), std::string::npos);
}

TEST_F(QVRemovableMediaTest, NonUsbVolumeIsNotValidAndLogsNothingAtInformationLevel) {
    media.setupUsbArrivalDepartureNotificationSystem();
    attach("/media/image", "Virtual");
    newLog();
    deliver(mounted("/media/image", "Disk Image"));
    deliver(mounted("/mnt/share", "share"));  // a network share has no disk information
    EXPECT_FALSE(media.isValidVolumeEvent(mounted("/media/image")));

    EXPECT_FALSE(flags.mount);
    EXPECT_FALSE(media.isRegisteredMountPath("/media/image"));
    EXPECT_EQ(newLog().find("INFORMATION"), std::string::npos);
}

TEST_F(QVRemovableMediaTest, TwoMountsBeforeTheNextTickGiveOneLineAndOneFlag) {
    media.setupUsbArrivalDepartureNotificationSystem();
    attach("/media/one", "USB");
    attach("/media/two", "USB");
    deliver(mounted("/media/one", "ONE"));
    deliver(mounted("/media/two", "TWO"));

    EXPECT_TRUE(flags.mount);
    EXPECT_EQ(flags.mountRaised, 1);
    EXPECT_EQ(occurrences(log(), "One or more devices were mounted.  Will re-scan shortly..."), 1U);
    EXPECT_TRUE(logHas("VolumeEvent is valid. VolumePath: [/media/one] nameKey: [ONE]"));
    EXPECT_TRUE(logHas("VolumeEvent is valid. VolumePath: [/media/two] nameKey: [TWO]"));
    EXPECT_TRUE(media.isRegisteredMountPath("/media/one"));
    EXPECT_TRUE(media.isRegisteredMountPath("/media/two"));

    // The scheduler's disk check clears the flag; the next mount raises it again.
    flags.setPendingMountNotification(false);
    attach("/media/three", "USB");
    deliver(mounted("/media/three"));
    EXPECT_EQ(flags.mountRaised, 2);
    EXPECT_EQ(occurrences(log(), "One or more devices were mounted.  Will re-scan shortly..."), 2U);
}

TEST_F(QVRemovableMediaTest, UnmountOfARegisteredVolumeIsValidAndForgetsIt) {
    attach("/media/stick", "USB");
    media.collectAllUSBPath();
    media.setupUsbArrivalDepartureNotificationSystem();
    detach("/media/stick");
    deliver(unmounted("/media/stick", "STICK"));

    EXPECT_TRUE(flags.unmount);
    EXPECT_FALSE(flags.mount);
    EXPECT_FALSE(media.isRegisteredMountPath("/media/stick"));
    EXPECT_TRUE(logHas("VolumeEvent is valid. VolumePath: [/media/stick] nameKey: [STICK]"));
    EXPECT_EQ(occurrences(log(), "One or more devices were unmounted.  Will re-scan shortly..."), 1U);
    // Its disk information is asked for, although the volume is gone.
    EXPECT_EQ(askedPaths.back(), "/media/stick");

    // Unmounted twice: the second is no longer known.
    EXPECT_FALSE(media.isValidVolumeEvent(unmounted("/media/stick")));
}

TEST_F(QVRemovableMediaTest, MountThenUnmountSetsBothFlagsOnce) {
    media.setupUsbArrivalDepartureNotificationSystem();
    attach("/media/stick", "USB");
    deliver(mounted("/media/stick"));
    detach("/media/stick");
    deliver(unmounted("/media/stick"));
    EXPECT_EQ(flags.mountRaised, 1);
    EXPECT_EQ(flags.unmountRaised, 1);
    EXPECT_FALSE(media.isRegisteredMountPath("/media/stick"));
}

TEST_F(QVRemovableMediaTest, SettingUpTwiceOrDiscardingTwiceHasNoFurtherEffect) {
    newLog();
    media.discardArrivalDepartureNotificationSystem();
    EXPECT_EQ(newLog(), "");

    media.setupUsbArrivalDepartureNotificationSystem();
    media.setupUsbArrivalDepartureNotificationSystem();
    EXPECT_EQ(watcher.created, 1);
    EXPECT_TRUE(watcher.running());
    EXPECT_TRUE(media.isRegisteredForUsbDeviceEvents());
    EXPECT_EQ(occurrences(log(), "Setup USB disk notification system."), 1U);

    media.discardArrivalDepartureNotificationSystem();
    media.discardArrivalDepartureNotificationSystem();
    EXPECT_EQ(watcher.stopped, 1);
    EXPECT_FALSE(watcher.running());
    EXPECT_FALSE(watcher.handler);
    EXPECT_FALSE(media.isRegisteredForUsbDeviceEvents());
    EXPECT_EQ(occurrences(log(), "Remove USB disk notification system."), 1U);

    // Events can be switched on again later.
    media.setupUsbArrivalDepartureNotificationSystem();
    EXPECT_EQ(watcher.created, 2);
    EXPECT_TRUE(watcher.running());
}

TEST_F(QVRemovableMediaTest, AWatcherThatCannotStartLeavesEventsOffForALaterTry) {
    factoryFails = true;
    media.setupUsbArrivalDepartureNotificationSystem();
    EXPECT_FALSE(media.isRegisteredForUsbDeviceEvents());
    EXPECT_TRUE(logHas("USB disk notification system could not be set up"));

    factoryFails = false;
    media.setupUsbArrivalDepartureNotificationSystem();
    EXPECT_TRUE(media.isRegisteredForUsbDeviceEvents());
    EXPECT_TRUE(watcher.running());
}

TEST_F(QVRemovableMediaTest, DestroyingTheMediaStopsItsWatcher) {
    WatcherState state;
    {
        QVRemovableMedia own(
            flags, [](const std::string&) { return DictionaryRef(); }, [] { return std::vector<std::string>(); },
            [&state](VolumeWatcher::Handler handler) -> std::unique_ptr<VolumeWatcher> {
                ++state.created;
                state.handler = std::move(handler);
                return std::make_unique<RecordedWatcher>(state);
            });
        own.setupUsbArrivalDepartureNotificationSystem();
        EXPECT_TRUE(state.running());
    }
    EXPECT_FALSE(state.running());
}

TEST_F(QVRemovableMediaTest, TheRegistryHoldsTheFiftyNewestMountPaths) {
    for (int index = 0; index < 55; ++index) attach("/media/stick" + std::to_string(index), "USB");
    media.collectAllUSBPath();
    for (int index = 0; index < 5; ++index) {
        EXPECT_FALSE(media.isRegisteredMountPath("/media/stick" + std::to_string(index))) << index;
    }
    for (int index = 5; index < 55; ++index) {
        EXPECT_TRUE(media.isRegisteredMountPath("/media/stick" + std::to_string(index))) << index;
    }

    // One more mounted: the oldest goes, and its unmount is then not recognised.
    media.setupUsbArrivalDepartureNotificationSystem();
    attach("/media/newest", "USB");
    deliver(mounted("/media/newest"));
    EXPECT_TRUE(media.isRegisteredMountPath("/media/newest"));
    EXPECT_FALSE(media.isRegisteredMountPath("/media/stick5"));
    EXPECT_TRUE(media.isRegisteredMountPath("/media/stick6"));
    EXPECT_FALSE(media.isValidVolumeEvent(unmounted("/media/stick5")));
}

TEST_F(QVRemovableMediaTest, ARemountedVolumeCountsAsTheNewest) {
    for (int index = 0; index < 50; ++index) attach("/media/stick" + std::to_string(index), "USB");
    media.collectAllUSBPath();
    EXPECT_TRUE(media.isValidVolumeEvent(mounted("/media/stick0")));
    attach("/media/newest", "USB");
    EXPECT_TRUE(media.isValidVolumeEvent(mounted("/media/newest")));
    EXPECT_TRUE(media.isRegisteredMountPath("/media/stick0"));
    EXPECT_FALSE(media.isRegisteredMountPath("/media/stick1"));
}

TEST_F(QVRemovableMediaTest, AFailingDiskListEndsTheWalkWithAWarning) {
    attach("/media/stick", "USB");
    media.collectAllUSBPath();
    mountPathsThrow = true;
    media.collectAllUSBPath();
    EXPECT_TRUE(logHas("collectAllUSBPath ex: disk list failed"));
    EXPECT_FALSE(media.isRegisteredMountPath("/media/stick"));
}

TEST_F(QVRemovableMediaTest, AFailingVolumeKeepsTheEntriesMadeBeforeIt) {
    attach("/media/first", "USB");
    attach("/media/broken", "USB");
    attach("/media/after", "USB");
    throwingPath = "/media/broken";
    media.collectAllUSBPath();
    EXPECT_TRUE(logHas("collectAllUSBPath ex: disk information failed for /media/broken"));
    EXPECT_TRUE(media.isRegisteredMountPath("/media/first"));
    EXPECT_FALSE(media.isRegisteredMountPath("/media/broken"));
    EXPECT_FALSE(media.isRegisteredMountPath("/media/after"));
}

TEST_F(QVRemovableMediaTest, AFailureJudgingAMountIsAWarningAndNotValid) {
    media.setupUsbArrivalDepartureNotificationSystem();
    attach("/media/broken", "USB");
    throwingPath = "/media/broken";
    deliver(mounted("/media/broken"));
    EXPECT_TRUE(logHas("isValidVolumeEvent Ex: disk information failed for /media/broken"));
    EXPECT_FALSE(media.isRegisteredMountPath("/media/broken"));
    EXPECT_FALSE(flags.mount);
    EXPECT_FALSE(logHas("VolumeEvent is valid"));
}

TEST_F(QVRemovableMediaTest, AFailureJudgingAnUnmountLeavesTheRegistryAsItWas) {
    attach("/media/stick", "USB");
    media.collectAllUSBPath();
    throwingPath = "/media/stick";
    EXPECT_FALSE(media.isValidVolumeEvent(unmounted("/media/stick")));
    EXPECT_TRUE(logHas("isValidVolumeEvent Ex: disk information failed for /media/stick"));
    EXPECT_TRUE(media.isRegisteredMountPath("/media/stick"));
}

TEST_F(QVRemovableMediaTest, HostileMountPathsAndNamesAreOnlyData) {
    const std::string path = "/media/a b\n2026-01-01 00:00:00.000 tov[1]    CRITICAL forged %s%n$(reboot)\xff";
    const std::string name = "NAME\r\n%s%n%d $(reboot) `id`\xc3";
    media.setupUsbArrivalDepartureNotificationSystem();
    attach(path, "USB");
    deliver(mounted(path, name));

    EXPECT_TRUE(flags.mount);
    EXPECT_TRUE(media.isRegisteredMountPath(path));
    EXPECT_EQ(askedPaths.back(), path);
    const std::string written = log();
    EXPECT_NE(written.find("VolumeEvent is valid. VolumePath: [/media/a b2026-01-01 00:00:00.000 tov[1]    CRITICAL "
                           "forged %s%n$(reboot)\xef\xbf\xbd] nameKey: [NAME%s%n%d $(reboot) `id`\xef\xbf\xbd]"),
              std::string::npos)
        << written;
    EXPECT_EQ(written.find("\n2026-01-01 00:00:00.000 tov[1]"), std::string::npos);
    EXPECT_EQ(::access((folder.path() + "/reboot").c_str(), F_OK), -1);

    // A failure whose text carries the path does not break the line either.
    throwingPath = path;
    detach(path);
    EXPECT_FALSE(media.isValidVolumeEvent(unmounted(path, name)));
    EXPECT_EQ(occurrences(log(), "\n2026-01-01 00:00:00.000 tov[1]"), 0U);
    EXPECT_TRUE(logHas("isValidVolumeEvent Ex: disk information failed for /media/a b2026"));

    throwingPath.clear();
    deliver(unmounted(path, name));
    EXPECT_TRUE(flags.unmount);
    EXPECT_FALSE(media.isRegisteredMountPath(path));
}

TEST_F(QVRemovableMediaTest, TheScanThreadMayClearTheFlagsWhileEventsArrive) {
    media.setupUsbArrivalDepartureNotificationSystem();
    attach("/media/stick", "USB");
    std::atomic<bool> done{false};
    std::thread scanThread([&] {
        while (!done.load()) {
            flags.setPendingMountNotification(false);
            flags.setPendingUnmountNotification(false);
            std::this_thread::yield();
        }
    });
    for (int round = 0; round < 200; ++round) {
        deliver(mounted("/media/stick"));
        deliver(unmounted("/media/stick"));
    }
    done.store(true);
    scanThread.join();

    // Every raise of a flag, and only that, wrote its line.
    EXPECT_GE(flags.mountRaised, 1);
    EXPECT_EQ(occurrences(log(), "One or more devices were mounted.  Will re-scan shortly..."),
              static_cast<std::size_t>(flags.mountRaised.load()));
    EXPECT_EQ(occurrences(log(), "One or more devices were unmounted.  Will re-scan shortly..."),
              static_cast<std::size_t>(flags.unmountRaised.load()));
    EXPECT_FALSE(media.isRegisteredMountPath("/media/stick"));
}

}  // namespace
}  // namespace tov
