#pragma once

// Reports the file systems mounted and unmounted while it runs, on the run loop's thread,
// each with its mount path and a volume name.

#include <functional>
#include <memory>
#include <string>

#include "platform/RunLoop.h"

namespace tov {

struct VolumeEvent {
    enum class Kind { Mounted, Unmounted };
    Kind kind = Kind::Mounted;
    std::string mountPath;
    // The name a user knows the volume by (the last component of its mount path on Linux).
    std::string volumeName;
};

class VolumeWatcher {
public:
    using Handler = std::function<void(const VolumeEvent&)>;
    // Starts watching at once: what is mounted now is known and not reported; null when the
    // platform's watcher could not be set up (logged).
    static std::unique_ptr<VolumeWatcher> create(RunLoop& loop, Handler handler);
    // Stops watching; no handler runs afterwards.
    virtual ~VolumeWatcher() = default;
};

}  // namespace tov
