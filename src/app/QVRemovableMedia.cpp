#include "app/QVRemovableMedia.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"

namespace tov {
namespace {

constexpr const char* kBusProtocolKey = "BusProtocol";
constexpr const char* kUsbProtocol = "USB";

// Mount paths and volume names come from whoever formatted or mounted the volume: they
// are logged only as printable text, so a line break or a control byte in them cannot
// forge log lines.
void logValidVolumeEvent(const VolumeEvent& event) {
    QVSLogger::information("VolumeEvent is valid. VolumePath: [%s] nameKey: [%s]",
                           printableText(event.mountPath).c_str(), printableText(event.volumeName).c_str());
}

std::string describe(const std::exception& problem) { return printableText(problem.what()); }

constexpr const char* kUnknownException = "unknown exception";

}  // namespace

QVRemovableMedia::QVRemovableMedia(PendingMediaFlags& flags, VolumeInfo volumeInfo, MountPaths mountPaths,
                                   WatcherFactory watcherFactory)
    : flags_(flags),
      volumeInfo_(std::move(volumeInfo)),
      mountPaths_(std::move(mountPaths)),
      watcherFactory_(std::move(watcherFactory)) {}

QVRemovableMedia::~QVRemovableMedia() { takeWatcher().reset(); }

void QVRemovableMedia::collectAllUSBPath() {
    std::lock_guard<std::recursive_mutex> guard(monitor_);
    mountPathCache_.clear();
    try {
        for (const std::string& mountPath : mountPaths_()) {
            if (isUsbVolume(mountPath)) enterMountPath(mountPath);
        }
    } catch (const std::exception& problem) {
        QVSLogger::warning("collectAllUSBPath ex: %s", describe(problem).c_str());
    } catch (...) {
        QVSLogger::warning("collectAllUSBPath ex: %s", kUnknownException);
    }
}

void QVRemovableMedia::setupUsbArrivalDepartureNotificationSystem() {
    std::lock_guard<std::recursive_mutex> guard(monitor_);
    if (registeredForUsbDeviceEvents_) return;
    registeredForUsbDeviceEvents_ = true;
    QVSLogger::information("Setup USB disk notification system.");
    if (watcherFactory_) watcher_ = watcherFactory_([this](const VolumeEvent& event) { handle(event); });
    if (!watcher_) {
        // Left unregistered, so the next policy change that asks for events tries again.
        registeredForUsbDeviceEvents_ = false;
        QVSLogger::warning("USB disk notification system could not be set up; volume events are not seen.");
    }
}

void QVRemovableMedia::discardArrivalDepartureNotificationSystem() {
    std::unique_ptr<VolumeWatcher> stopped;
    {
        std::lock_guard<std::recursive_mutex> guard(monitor_);
        if (!registeredForUsbDeviceEvents_) return;
        QVSLogger::information("Remove USB disk notification system.");
        stopped = takeWatcher();
        registeredForUsbDeviceEvents_ = false;
    }
    // Stopped outside the monitor: a watcher that waits for a running handler must not wait
    // on a handler that waits for the monitor.
    stopped.reset();
}

bool QVRemovableMedia::isRegisteredForUsbDeviceEvents() const {
    std::lock_guard<std::recursive_mutex> guard(monitor_);
    return registeredForUsbDeviceEvents_;
}

bool QVRemovableMedia::isValidVolumeEvent(const VolumeEvent& event) {
    std::lock_guard<std::recursive_mutex> guard(monitor_);
    const bool valid = registerVolumeEvent(event);
    if (valid) logValidVolumeEvent(event);
    return valid;
}

void QVRemovableMedia::deviceMounted(const VolumeEvent& event) {
    std::lock_guard<std::recursive_mutex> guard(monitor_);
    if (!isValidVolumeEvent(event)) return;
    if (flags_.pendingMountNotification()) return;
    flags_.setPendingMountNotification(true);
    QVSLogger::information("One or more devices were mounted.  Will re-scan shortly...");
}

void QVRemovableMedia::deviceUnmounted(const VolumeEvent& event) {
    std::lock_guard<std::recursive_mutex> guard(monitor_);
    if (!isValidVolumeEvent(event)) return;
    if (flags_.pendingUnmountNotification()) return;
    flags_.setPendingUnmountNotification(true);
    QVSLogger::information("One or more devices were unmounted.  Will re-scan shortly...");
}

bool QVRemovableMedia::isRegisteredMountPath(const std::string& mountPath) const {
    std::lock_guard<std::recursive_mutex> guard(monitor_);
    return std::find(mountPathCache_.begin(), mountPathCache_.end(), mountPath) != mountPathCache_.end();
}

void QVRemovableMedia::handle(const VolumeEvent& event) {
    if (event.kind == VolumeEvent::Kind::Mounted) {
        deviceMounted(event);
    } else {
        deviceUnmounted(event);
    }
}

bool QVRemovableMedia::isUsbVolume(const std::string& mountPath) const {
    const DictionaryRef info = volumeInfo_(mountPath);
    if (!info) return false;
    const Value* protocol = info->find(kBusProtocolKey);
    return protocol && protocol->isString() && *protocol->string() == kUsbProtocol;
}

// A volume is known at its unmount only when it was seen mounted; its information is
// asked for all the same, although a volume already gone has none. A failure leaves the
// event invalid, as nothing was entered or removed before it.
bool QVRemovableMedia::registerVolumeEvent(const VolumeEvent& event) {
    try {
        const bool usb = isUsbVolume(event.mountPath);
        if (event.kind == VolumeEvent::Kind::Unmounted) return removeMountPath(event.mountPath);
        if (!usb) return false;
        enterMountPath(event.mountPath);
        return true;
    } catch (const std::exception& problem) {
        QVSLogger::warning("isValidVolumeEvent Ex: %s", describe(problem).c_str());
    } catch (...) {
        QVSLogger::warning("isValidVolumeEvent Ex: %s", kUnknownException);
    }
    return false;
}

// Entering a known path makes it the newest; beyond the limit the oldest is forgotten.
void QVRemovableMedia::enterMountPath(const std::string& mountPath) {
    removeMountPath(mountPath);
    mountPathCache_.push_back(mountPath);
    if (mountPathCache_.size() > kMountPathCountLimit) mountPathCache_.erase(mountPathCache_.begin());
}

bool QVRemovableMedia::removeMountPath(const std::string& mountPath) {
    const auto entry = std::find(mountPathCache_.begin(), mountPathCache_.end(), mountPath);
    if (entry == mountPathCache_.end()) return false;
    mountPathCache_.erase(entry);
    return true;
}

std::unique_ptr<VolumeWatcher> QVRemovableMedia::takeWatcher() {
    std::lock_guard<std::recursive_mutex> guard(monitor_);
    return std::move(watcher_);
}

}  // namespace tov
