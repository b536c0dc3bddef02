#pragma once

// A test of the platform's file watcher: a run loop, a folder "watched" with the file
// "policy.json" to watch, and waits that run the loop until the watcher has called back
// or until everything done so far has surely reached it. Waits are bounded only to end a
// failing test; a passing one ends as soon as what it waits for has happened.
// The folder lies below the system's temporary folder, which on macOS is reached through a
// link (/tmp is /private/tmp): the paths given are spelled through the link, and a watcher
// must match them to the real paths its platform reports.

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/FileWatcher.h"
#include "platform/RunLoop.h"
#include "support/TemporaryRootTest.h"

namespace tov::testing {

class FileWatcherFixture : public TemporaryRootTest {
protected:
    static constexpr std::chrono::milliseconds kLatency{200};

    void SetUp() override;

    // Watches path, counting callbacks in calls.
    void watch(const std::string& path, std::chrono::milliseconds latency = kLatency);
    // Runs the loop until done answers true; false when the failure deadline passed first.
    bool runUntil(const std::function<bool()>& done);
    bool waitForCalls(int count);
    // Lets everything done so far reach the watcher under test: a file in another folder is
    // changed after it, and its own watcher, with three times the latency, calls back after
    // any callback the watcher under test owes.
    void settle(std::chrono::milliseconds latency = kLatency);

    std::unique_ptr<RunLoop> loop;
    std::unique_ptr<FileWatcher> watcher;
    std::string watched;  // the folder
    std::string file;     // the file in it
    int calls = 0;
};

}  // namespace tov::testing
