#pragma once

// The USB volume events: the registry of the mount paths of USB volumes (at most 50), the
// judgement of mount and unmount events, and the pending flags of the scheduler they set.
// Everything here runs on the main thread.

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "app/PendingMediaFlags.h"
#include "model/Value.h"
#include "platform/VolumeWatcher.h"

namespace tov {

class QVRemovableMedia {
public:
    static constexpr std::size_t kMountPathCountLimit = 50;

    // The disk information of the volume at a mount path ("BusProtocol" among its keys);
    // null when there is none.
    using VolumeInfo = std::function<DictionaryRef(const std::string& mountPath)>;
    // The mount paths of the volumes mounted now.
    using MountPaths = std::function<std::vector<std::string>()>;
    // Starts delivering volume events to the handler; null when that could not be done.
    using WatcherFactory = std::function<std::unique_ptr<VolumeWatcher>(VolumeWatcher::Handler)>;

    QVRemovableMedia(PendingMediaFlags& flags, VolumeInfo volumeInfo, MountPaths mountPaths,
                     WatcherFactory watcherFactory);
    // Stops the watcher first, so no event arrives while the registry goes away.
    ~QVRemovableMedia();
    QVRemovableMedia(const QVRemovableMedia&) = delete;
    QVRemovableMedia& operator=(const QVRemovableMedia&) = delete;

    void collectAllUSBPath();
    void setupUsbArrivalDepartureNotificationSystem();
    void discardArrivalDepartureNotificationSystem();
    bool isRegisteredForUsbDeviceEvents() const;

    bool isValidVolumeEvent(const VolumeEvent& event);
    void deviceMounted(const VolumeEvent& event);
    void deviceUnmounted(const VolumeEvent& event);

    bool isRegisteredMountPath(const std::string& mountPath) const;

private:
    void handle(const VolumeEvent& event);
    bool isUsbVolume(const std::string& mountPath) const;
    // Judges the event and enters or removes its path; true when the registry changed.
    bool registerVolumeEvent(const VolumeEvent& event);
    void enterMountPath(const std::string& mountPath);
    bool removeMountPath(const std::string& mountPath);
    std::unique_ptr<VolumeWatcher> takeWatcher();

    PendingMediaFlags& flags_;
    VolumeInfo volumeInfo_;
    MountPaths mountPaths_;
    WatcherFactory watcherFactory_;
    // The delegate's monitor: registration and the pending flags.
    mutable std::recursive_mutex monitor_;
    bool registeredForUsbDeviceEvents_ = false;
    std::unique_ptr<VolumeWatcher> watcher_;
    // Mount paths in the order they were entered, the oldest evicted first beyond the limit.
    std::vector<std::string> mountPathCache_;
};

}  // namespace tov
