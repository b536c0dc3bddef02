#include "platform/macos/FSEventsFileWatcher.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "common/QVSLogger.h"
#include "platform/WatchPoint.h"
#include "platform/macos/CoreFoundationValue.h"

namespace tov {
namespace {

// Events whose paths say nothing precise: the system dropped or coalesced events.
constexpr FSEventStreamEventFlags kEventsLost =
    kFSEventStreamEventFlagMustScanSubDirs | kFSEventStreamEventFlagUserDropped | kFSEventStreamEventFlagKernelDropped;
// What a folder on the way may undergo that moves the file out of sight or back into it.
constexpr FSEventStreamEventFlags kWayChanged =
    kFSEventStreamEventFlagItemCreated | kFSEventStreamEventFlagItemRemoved | kFSEventStreamEventFlagItemRenamed;
constexpr FSEventStreamCreateFlags kStreamFlags =
    kFSEventStreamCreateFlagFileEvents | kFSEventStreamCreateFlagWatchRoot;

// A folder's event path may end in a slash; the file's never does.
std::string withoutTrailingSlash(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

// Lets every callback the queue has begun end before the caller goes on.
void drain(dispatch_queue_t queue) {
    dispatch_sync_f(queue, nullptr, [](void*) {});
}

}  // namespace

std::unique_ptr<FileWatcher> FileWatcher::create(RunLoop& loop, const std::string& path,
                                                 std::chrono::milliseconds latency, std::function<void()> onChange) {
    return FSEventsFileWatcher::open(loop, path, latency, std::move(onChange));
}

std::unique_ptr<FSEventsFileWatcher> FSEventsFileWatcher::open(RunLoop& loop, const std::string& path,
                                                               std::chrono::milliseconds latency,
                                                               std::function<void()> onChange) {
    const std::optional<std::string> file = watchedFilePath(path);
    if (!file) {
        QVSLogger::error("The path [%s] names no file to watch.", path.c_str());
        return nullptr;
    }
    dispatch_queue_t queue = dispatch_queue_create("tov.file-watcher", DISPATCH_QUEUE_SERIAL);
    if (queue == nullptr) {
        QVSLogger::error("The file %s cannot be watched: no dispatch queue.", path.c_str());
        return nullptr;
    }
    std::unique_ptr<FSEventsFileWatcher> watcher(
        new FSEventsFileWatcher(loop, *file, latency, std::move(onChange), queue));
    if (!watcher->arm()) return nullptr;
    return watcher;
}

FSEventsFileWatcher::FSEventsFileWatcher(RunLoop& loop, std::string file, std::chrono::milliseconds latency,
                                         std::function<void()> onChange, dispatch_queue_t queue)
    : file_(std::move(file)),
      latency_(latency),
      onChange_(std::move(onChange)),
      queue_(queue),
      relay_(std::make_shared<Relay>(Relay{loop, this})) {}

// Batches already posted find no watcher; the queue is drained before the relay's owner
// (this) goes, so no callback reads a freed member.
FSEventsFileWatcher::~FSEventsFileWatcher() {
    relay_->watcher = nullptr;
    stopStream(stream_);
    drain(queue_);
    dispatch_release(queue_);
}

// Starts a stream on the nearest existing folder, unless one already watches it; the old
// stream stops only once the new one runs, so no event falls between the two.
bool FSEventsFileWatcher::arm() {
    const std::optional<WatchPoint> point = nearestWatchPoint(file_);
    if (!point) {
        QVSLogger::error("The file %s cannot be watched: no folder on its way exists.", file_.c_str());
        return false;
    }
    if (stream_ != nullptr && point->folder == watchedFolder_) {
        target_ = point->target;
        return true;
    }
    FSEventStreamRef stream = startStream(point->folder);
    if (stream == nullptr) return false;
    stopStream(stream_);
    stream_ = stream;
    watchedFolder_ = point->folder;
    target_ = point->target;
    return true;
}

FSEventStreamRef FSEventsFileWatcher::startStream(const std::string& folder) {
    const OwnedCFReference<CFStringRef> folderText(
        CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, folder.c_str()));
    const void* values[] = {folderText.get()};
    const OwnedCFReference<CFArrayRef> paths(
        folderText ? CFArrayCreate(kCFAllocatorDefault, values, 1, &kCFTypeArrayCallBacks) : nullptr);
    FSEventStreamContext context{};
    context.version = 0;
    context.info = &relay_;
    FSEventStreamRef stream =
        paths ? FSEventStreamCreate(kCFAllocatorDefault, streamCallback, &context, paths.get(),
                                    kFSEventStreamEventIdSinceNow,
                                    static_cast<CFTimeInterval>(latency_.count()) / 1000.0, kStreamFlags)
              : nullptr;
    if (stream == nullptr) {
        QVSLogger::error("The file %s cannot be watched: no event stream on %s.", file_.c_str(), folder.c_str());
        return nullptr;
    }
    FSEventStreamSetDispatchQueue(stream, queue_);
    if (!FSEventStreamStart(stream)) {
        QVSLogger::error("The file %s cannot be watched: the event stream on %s does not start.", file_.c_str(),
                         folder.c_str());
        FSEventStreamInvalidate(stream);
        FSEventStreamRelease(stream);
        return nullptr;
    }
    return stream;
}

void FSEventsFileWatcher::stopStream(FSEventStreamRef stream) {
    if (stream == nullptr) return;
    FSEventStreamStop(stream);
    FSEventStreamInvalidate(stream);
    drain(queue_);
    FSEventStreamRelease(stream);
}

// Runs on the watcher's queue: copies the batch (its paths live only during the call) and
// hands it to the loop thread.
void FSEventsFileWatcher::streamCallback(ConstFSEventStreamRef, void* info, size_t count, void* paths,
                                         const FSEventStreamEventFlags flags[], const FSEventStreamEventId[]) {
    const std::shared_ptr<Relay> relay = *static_cast<const std::shared_ptr<Relay>*>(info);
    const char* const* pathTexts = static_cast<const char* const*>(paths);
    std::vector<Event> events;
    events.reserve(count);
    for (size_t index = 0; index < count; ++index) {
        events.push_back(Event{withoutTrailingSlash(pathTexts[index] ? pathTexts[index] : ""), flags[index]});
    }
    relay->loop.post([relay, events = std::move(events)] {
        if (relay->watcher != nullptr) relay->watcher->eventsArrived(events);
    });
}

// The watcher may be ended by its own callback: nothing of it is used after the call.
void FSEventsFileWatcher::eventsArrived(const std::vector<Event>& events) {
    Effect effect = Effect::None;
    for (const Event& event : events) effect = std::max(effect, effectOf(event));
    if (effect == Effect::ChainChanged) arm();
    if (effect == Effect::None) return;
    const std::function<void()> onChange = onChange_;
    if (onChange) onChange();
}

FSEventsFileWatcher::Effect FSEventsFileWatcher::effectOf(const Event& event) const {
    if (event.flags & kEventsLost) {
        QVSLogger::warning("Events of %s were lost; it is taken as changed.", file_.c_str());
        return Effect::ChainChanged;
    }
    if (event.flags & kFSEventStreamEventFlagRootChanged) return Effect::ChainChanged;
    if (event.path == target_) return Effect::FileChanged;
    const WatchPoint point{watchedFolder_, target_};
    if (!point.isFolderOnTheWay(event.path)) return Effect::None;
    // The watched folder itself counts only when it goes; a folder below it in any case.
    if (event.path == watchedFolder_ && !(event.flags & kWayChanged)) return Effect::None;
    return Effect::ChainChanged;
}

}  // namespace tov
