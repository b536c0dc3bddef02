#pragma once

// Watches one file path: its creation, any change of its contents, its replacement by a
// rename and its deletion, also when its folder is created, deleted or recreated later.
// After a change it waits for the latency, gathering further changes, then calls back
// once on the run loop's thread.

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/RunLoop.h"

namespace tov {

class FileWatcher {
public:
    // Starts watching at once; null when the platform's watcher could not be set up (logged).
    static std::unique_ptr<FileWatcher> create(RunLoop& loop, const std::string& path,
                                               std::chrono::milliseconds latency, std::function<void()> onChange);
    // Stops watching; no callback runs afterwards.
    virtual ~FileWatcher() = default;
};

}  // namespace tov
