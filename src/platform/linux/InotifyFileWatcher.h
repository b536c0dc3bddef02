#pragma once

// The Linux file watcher. inotify watches every folder on the way from the root to the
// file's folder, as far as they exist: the file's folder for anything done to an entry of
// the file's name, each folder above for its entry of the next folder's name. When such an
// entry appears, goes or is renamed, or a watched folder is deleted or moved, the chain is
// watched again from the root, which follows a folder created later, several levels deep,
// or deleted and recreated. The watched file itself is never opened.
//
// Every change starts a timer of the latency unless one runs; changes while it runs are
// gathered into its one callback. A change of the chain and a lost queue (IN_Q_OVERFLOW)
// count as a change of the file.

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/FileDescriptor.h"
#include "platform/FileWatcher.h"
#include "platform/RunLoop.h"

struct inotify_event;

namespace tov {

class InotifyFileWatcher final : public FileWatcher {
public:
    // Null when the path names no file or inotify cannot be set up (logged).
    static std::unique_ptr<InotifyFileWatcher> open(RunLoop& loop, const std::string& path,
                                                    std::chrono::milliseconds latency, std::function<void()> onChange);
    ~InotifyFileWatcher() override;

private:
    InotifyFileWatcher(RunLoop& loop, std::string path, std::vector<std::string> folders, std::vector<std::string> names,
                       std::chrono::milliseconds latency, std::function<void()> onChange, FileDescriptor inotify);

    bool watchChain();
    // What an event means, in increasing order of what it asks for.
    enum class Effect { None, FileChanged, ChainChanged };

    void readEvents();
    Effect effectOf(const inotify_event& event) const;
    void changed();
    void deliver();

    RunLoop& loop_;
    const std::string path_;
    // folders_[level] is watched for its entry names_[level]: the next folder, or the file.
    const std::vector<std::string> folders_;
    const std::vector<std::string> names_;
    const std::chrono::milliseconds latency_;
    const std::function<void()> onChange_;
    FileDescriptor inotify_;
    std::map<int, std::size_t> levels_;  // inotify watch → its level
    RunLoop::WatchId watch_ = 0;
    std::optional<RunLoop::TimerId> timer_;
};

}  // namespace tov
