#include "platform/linux/InotifyFileWatcher.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "common/QVSLogger.h"

namespace tov {
namespace {

constexpr std::uint32_t kSelfEvents = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT;
constexpr std::uint32_t kEntryEvents = IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
constexpr std::uint32_t kAncestorMask = kEntryEvents | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::uint32_t kFolderMask = kAncestorMask | IN_CLOSE_WRITE | IN_MODIFY | IN_ATTRIB;
// Reads per readiness, so a busy folder (/tmp) cannot hold the loop; the rest waits for
// the next pass.
constexpr int kReadsPerPass = 8;

struct FolderChain {
    std::vector<std::string> folders;  // from the root down to the file's folder
    std::vector<std::string> names;    // the entry looked for in each
};

std::optional<FolderChain> folderChainOf(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error).lexically_normal();
    if (error || path.empty() || !absolute.has_filename()) return std::nullopt;
    FolderChain chain;
    std::filesystem::path folder;
    for (const std::filesystem::path& part : absolute.parent_path()) {
        folder /= part;
        if (!chain.folders.empty()) chain.names.push_back(part.string());
        chain.folders.push_back(folder.string());
    }
    chain.names.push_back(absolute.filename().string());
    return chain;
}

bool isQuietWatchFailure(int error) { return error == ENOENT || error == ENOTDIR || error == EACCES; }

}  // namespace

std::unique_ptr<FileWatcher> FileWatcher::create(RunLoop& loop, const std::string& path,
                                                 std::chrono::milliseconds latency, std::function<void()> onChange) {
    return InotifyFileWatcher::open(loop, path, latency, std::move(onChange));
}

std::unique_ptr<InotifyFileWatcher> InotifyFileWatcher::open(RunLoop& loop, const std::string& path,
                                                             std::chrono::milliseconds latency,
                                                             std::function<void()> onChange) {
    std::optional<FolderChain> chain = folderChainOf(path);
    if (!chain) {
        QVSLogger::error("The path [%s] names no file to watch.", path.c_str());
        return nullptr;
    }
    FileDescriptor inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!inotify.isOpen()) {
        QVSLogger::error("The file %s cannot be watched: inotify: %s", path.c_str(), std::strerror(errno));
        return nullptr;
    }
    std::unique_ptr<InotifyFileWatcher> watcher(new InotifyFileWatcher(loop, path, std::move(chain->folders),
                                                                       std::move(chain->names), latency,
                                                                       std::move(onChange), std::move(inotify)));
    if (!watcher->watchChain()) return nullptr;
    watcher->watch_ =
        loop.watchDescriptor(watcher->inotify_.get(), RunLoop::Readiness::Readable, [raw = watcher.get()] { raw->readEvents(); });
    if (watcher->watch_ == 0) return nullptr;
    return watcher;
}

InotifyFileWatcher::InotifyFileWatcher(RunLoop& loop, std::string path, std::vector<std::string> folders,
                                       std::vector<std::string> names, std::chrono::milliseconds latency,
                                       std::function<void()> onChange, FileDescriptor inotify)
    : loop_(loop),
      path_(std::move(path)),
      folders_(std::move(folders)),
      names_(std::move(names)),
      latency_(latency),
      onChange_(std::move(onChange)),
      inotify_(std::move(inotify)) {}

InotifyFileWatcher::~InotifyFileWatcher() {
    if (timer_) loop_.cancelTimer(*timer_);
    loop_.unwatchDescriptor(watch_);
}

// Watches the folders from the root down as far as they exist, before letting go of the
// watches no longer on the way, so no event falls between the two. A folder made below the
// deepest one after its watch began is reported by that watch.
bool InotifyFileWatcher::watchChain() {
    std::map<int, std::size_t> levels;
    for (std::size_t level = 0; level < folders_.size(); ++level) {
        const std::uint32_t mask = level + 1 == folders_.size() ? kFolderMask : kAncestorMask;
        const int watch = ::inotify_add_watch(inotify_.get(), folders_[level].c_str(), mask);
        if (watch < 0) {
            if (!isQuietWatchFailure(errno)) {
                QVSLogger::warning("The folder %s cannot be watched for %s: %s", folders_[level].c_str(), path_.c_str(),
                                   std::strerror(errno));
            }
            break;
        }
        // The same folder met twice (a link back up the path): the way ends here.
        if (!levels.emplace(watch, level).second) break;
    }
    for (const auto& [watch, level] : levels_) {
        if (!levels.count(watch)) ::inotify_rm_watch(inotify_.get(), watch);
    }
    levels_ = std::move(levels);
    if (levels_.empty()) {
        QVSLogger::error("The file %s cannot be watched: not even %s can be.", path_.c_str(), folders_.front().c_str());
        return false;
    }
    return true;
}

void InotifyFileWatcher::readEvents() {
    alignas(inotify_event) char buffer[16 * 1024];
    Effect effect = Effect::None;
    for (int pass = 0; pass < kReadsPerPass; ++pass) {
        const ssize_t count = ::read(inotify_.get(), buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno != EAGAIN) {
            QVSLogger::warning("The events of %s cannot be read: %s", path_.c_str(), std::strerror(errno));
        }
        if (count <= 0) break;
        for (ssize_t offset = 0; offset < count;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + offset);
            effect = std::max(effect, effectOf(*event));
            offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
    if (effect == Effect::ChainChanged) watchChain();
    if (effect != Effect::None) changed();
}

InotifyFileWatcher::Effect InotifyFileWatcher::effectOf(const inotify_event& event) const {
    if (event.mask & IN_Q_OVERFLOW) {
        QVSLogger::warning("Events of %s were lost; it is taken as changed.", path_.c_str());
        return Effect::ChainChanged;
    }
    const auto level = levels_.find(event.wd);
    if (level == levels_.end()) return Effect::None;  // a watch let go of before
    if (event.mask & kSelfEvents) return Effect::ChainChanged;
    if (event.len == 0 || std::string_view(event.name) != names_[level->second]) return Effect::None;
    return level->second + 1 < folders_.size() ? Effect::ChainChanged : Effect::FileChanged;
}

void InotifyFileWatcher::changed() {
    if (timer_) return;
    timer_ = loop_.startTimer(latency_, [this] { deliver(); });
}

// The watcher may be ended by its own callback: nothing of it is used after the call.
void InotifyFileWatcher::deliver() {
    timer_.reset();
    const std::function<void()> onChange = onChange_;
    if (onChange) onChange();
}

}  // namespace tov
