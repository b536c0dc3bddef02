#include "platform/linux/MountTableWatcher.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "common/QVSLogger.h"
#include "discovery/linux/MountTableChanges.h"

namespace tov {
namespace {

constexpr std::size_t kChunkSize = 64 * 1024;
// Readings of a table that changes while it is read are made again, at most this often.
constexpr int kMaximumReadings = 20;

// The whole text from its start; nothing when it cannot be read or exceeds limit (logged).
std::optional<std::string> readFromStart(int descriptor, const char* path, std::uint64_t limit) {
    if (::lseek(descriptor, 0, SEEK_SET) < 0) {
        QVSLogger::warning("The mount table %s cannot be read again: %s", path, std::strerror(errno));
        return std::nullopt;
    }
    std::string text;
    std::vector<char> chunk(kChunkSize);
    for (;;) {
        const ssize_t count = ::read(descriptor, chunk.data(), chunk.size());
        if (count == 0) return text;
        if (count < 0) {
            if (errno == EINTR) continue;
            QVSLogger::warning("The mount table %s cannot be read: %s", path, std::strerror(errno));
            return std::nullopt;
        }
        if (text.size() + static_cast<std::uint64_t>(count) > limit) {
            QVSLogger::warning("The mount table %s holds more than %llu bytes: its changes are not reported until it is smaller.",
                               path, static_cast<unsigned long long>(limit));
            return std::nullopt;
        }
        text.append(chunk.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace

std::unique_ptr<VolumeWatcher> VolumeWatcher::create(RunLoop& loop, Handler handler) {
    return MountTableWatcher::open(loop, std::move(handler));
}

std::unique_ptr<MountTableWatcher> MountTableWatcher::open(RunLoop& loop, Handler handler, const std::string& tablePath,
                                                           std::uint64_t tableLimit) {
    FileDescriptor table(::open(tablePath.c_str(), O_RDONLY | O_CLOEXEC));
    if (!table.isOpen()) {
        QVSLogger::error("The mount table %s cannot be opened: %s", tablePath.c_str(), std::strerror(errno));
        return nullptr;
    }
    const std::optional<std::string> text = readFromStart(table.get(), tablePath.c_str(), tableLimit);
    if (!text) return nullptr;
    std::unique_ptr<MountTableWatcher> watcher(
        new MountTableWatcher(loop, std::move(handler), tablePath, tableLimit, std::move(table),
                              MountInfo::parse(*text)));
    if (!watcher->startWatching()) return nullptr;
    return watcher;
}

MountTableWatcher::MountTableWatcher(RunLoop& loop, Handler handler, std::string tablePath, std::uint64_t tableLimit,
                                     FileDescriptor table, std::vector<MountEntry> known)
    : loop_(loop),
      handler_(std::move(handler)),
      tablePath_(std::move(tablePath)),
      tableLimit_(tableLimit),
      table_(std::move(table)),
      known_(std::move(known)) {}

MountTableWatcher::~MountTableWatcher() {
    *alive_ = false;
    loop_.unwatchDescriptor(watch_);
}

bool MountTableWatcher::startWatching() {
    watch_ = loop_.watchDescriptor(table_.get(), RunLoop::Readiness::Priority, [this] { tableChanged(); });
    if (watch_ == 0) {
        QVSLogger::error("The mount table %s cannot be watched.", tablePath_.c_str());
        return false;
    }
    return true;
}

// Changes made while the table is read raise the condition again, so none is missed.
void MountTableWatcher::tableChanged() {
    std::optional<std::vector<MountEntry>> current = readTable();
    if (!current) return;
    const std::vector<VolumeEvent> events = mountTableChanges(known_, *current);
    known_ = std::move(*current);
    if (events.empty()) return;
    QVSLogger::debug("The mount table changed: %zu mount and unmount events.", events.size());
    const std::shared_ptr<bool> alive = alive_;
    const Handler handler = handler_;
    for (const VolumeEvent& event : events) {
        if (!*alive) return;
        if (handler) handler(event);
    }
}

// The kernel hands the table out in pieces, and a piece read while mounts change can show
// an entry twice or not at all. A reading counts once the next one is the same; during a
// burst of mounts that waits for the burst's end, and all its changes come together.
std::optional<std::vector<MountEntry>> MountTableWatcher::readTable() {
    std::optional<std::string> text = readFromStart(table_.get(), tablePath_.c_str(), tableLimit_);
    for (int reading = 1; text && reading < kMaximumReadings; ++reading) {
        std::optional<std::string> again = readFromStart(table_.get(), tablePath_.c_str(), tableLimit_);
        if (!again || *again == *text) break;
        text = std::move(again);
    }
    if (!text) return std::nullopt;
    return MountInfo::parse(*text);
}

}  // namespace tov
