#pragma once

// The two flags a volume event sets on the main thread and the scheduler's disk check
// reads and clears on the scan thread.

namespace tov {

class PendingMediaFlags {
public:
    virtual ~PendingMediaFlags() = default;
    virtual void setPendingMountNotification(bool pending) = 0;
    virtual bool pendingMountNotification() const = 0;
    virtual void setPendingUnmountNotification(bool pending) = 0;
    virtual bool pendingUnmountNotification() const = 0;
};

}  // namespace tov
