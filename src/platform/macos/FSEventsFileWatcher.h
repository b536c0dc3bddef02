#pragma once

// The macOS file watcher. One FSEvents stream with per-file events watches the nearest
// folder on the way to the file that exists (the file's own folder once it does), under
// its real path (/tmp is /private/tmp), and the events are filtered to the file's path.
// When a folder on the way appears, goes, is renamed, or the watched folder itself is
// moved or deleted (kFSEventStreamEventFlagRootChanged), the stream is made again on the
// nearest existing folder; such a change, and events lost by the system, count as a change
// of the file, as with the inotify watcher.
//
// The stream gathers events for the latency itself. It is served by a serial dispatch
// queue of the watcher (scheduling on a run loop is deprecated since macOS 13); each batch
// is copied and posted to the run loop, where it gives at most one callback.

#include <CoreServices/CoreServices.h>
#include <dispatch/dispatch.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/FileWatcher.h"
#include "platform/RunLoop.h"

namespace tov {

class FSEventsFileWatcher final : public FileWatcher {
public:
    // Null when the path names no file or the stream cannot be started (logged).
    static std::unique_ptr<FSEventsFileWatcher> open(RunLoop& loop, const std::string& path,
                                                     std::chrono::milliseconds latency, std::function<void()> onChange);
    ~FSEventsFileWatcher() override;

private:
    struct Event {
        std::string path;
        FSEventStreamEventFlags flags;
    };
    // What the stream's queue shares with the loop thread: the loop to post to, and the
    // watcher while it lives (read and cleared on the loop thread only).
    struct Relay {
        RunLoop& loop;
        FSEventsFileWatcher* watcher;
    };
    // What an event means, in increasing order of what it asks for.
    enum class Effect { None, FileChanged, ChainChanged };

    FSEventsFileWatcher(RunLoop& loop, std::string file, std::chrono::milliseconds latency,
                        std::function<void()> onChange, dispatch_queue_t queue);

    bool arm();
    FSEventStreamRef startStream(const std::string& folder);
    void stopStream(FSEventStreamRef stream);
    static void streamCallback(ConstFSEventStreamRef stream, void* info, size_t count, void* paths,
                               const FSEventStreamEventFlags flags[], const FSEventStreamEventId ids[]);
    void eventsArrived(const std::vector<Event>& events);
    Effect effectOf(const Event& event) const;

    const std::string file_;  // absolute and normal, as given
    const std::chrono::milliseconds latency_;
    const std::function<void()> onChange_;
    dispatch_queue_t queue_;
    std::shared_ptr<Relay> relay_;
    FSEventStreamRef stream_ = nullptr;
    std::string watchedFolder_;  // real path of the folder the stream watches
    std::string target_;         // the file's path as the stream reports it
};

}  // namespace tov
