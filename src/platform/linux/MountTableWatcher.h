#pragma once

// Volume events on Linux: the process's mount table (/proc/self/mountinfo) raises an
// exceptional condition (EPOLLPRI, with EPOLLERR) whenever it changes; each time the whole
// table is read again and compared with the one known before.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/FileDescriptor.h"
#include "discovery/linux/MountInfo.h"
#include "platform/RunLoop.h"
#include "platform/VolumeWatcher.h"

namespace tov {

class MountTableWatcher final : public VolumeWatcher {
public:
    // Far beyond any real table (a thousand mounts take about 150 KiB), yet bounded.
    static constexpr std::uint64_t kTableLimit = 64 * 1024 * 1024;

    // Null when the table cannot be opened, read or watched (logged). A table that grows
    // beyond tableLimit is logged and left unread until it is smaller again.
    static std::unique_ptr<MountTableWatcher> open(RunLoop& loop, Handler handler,
                                                   const std::string& tablePath = MountInfo::kPath,
                                                   std::uint64_t tableLimit = kTableLimit);
    ~MountTableWatcher() override;

private:
    MountTableWatcher(RunLoop& loop, Handler handler, std::string tablePath, std::uint64_t tableLimit,
                      FileDescriptor table, std::vector<MountEntry> known);

    bool startWatching();
    void tableChanged();
    std::optional<std::vector<MountEntry>> readTable();

    RunLoop& loop_;
    Handler handler_;
    std::string tablePath_;
    std::uint64_t tableLimit_;
    FileDescriptor table_;
    std::vector<MountEntry> known_;
    RunLoop::WatchId watch_ = 0;
    // Cleared by the destructor, so a handler that ends the watcher stops the reporting.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace tov
