#pragma once

// The policy file that another component drops to tune the daemon. It is read anew on
// every question, plain or zipped; a missing or unreadable policy gives the defaults.
// When the file's content changes, the change handler records the new content hash in
// the settings and tells the delegate.

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>

#include "common/QVSPolicyDelegate.h"
#include "model/Value.h"
#include "platform/FileWatcher.h"
#include "platform/RunLoop.h"

namespace tov {

class QVSPolicy {
public:
    static constexpr const char* kFullScanIntervalHoursKey = "FullScanIntervalHours";
    static constexpr const char* kScanAfterRestartKey = "ScanAfterRestart";
    static constexpr const char* kEventDrivenScanKey = "EventDrivenScan";
    static constexpr long long kDefaultFullScanIntervalHours = 744;
    // Larger files are not read at all.
    static constexpr long long kMaximumPolicyFileBytes = 104857600;

    static QVSPolicy& sharedPolicy();
    QVSPolicy(const QVSPolicy&) = delete;
    QVSPolicy& operator=(const QVSPolicy&) = delete;

    // The interval in hours times 3600, without bounds.
    double fullScanIntervalSeconds() const;
    bool scanAfterRestart() const;
    bool eventDrivenScan() const;
    // The file holds at least one of the three keys.
    bool isPolicyFileExist() const;
    // The MD5 of the policy file, or "" when no policy exists.
    std::string md5() const;

    // Adds to dictionary the policy keys found in the file at path.
    static void populateDictionary(Dictionary& dictionary, const std::string& path);

    // The delegate told of a changed policy; not owned, null for none. It must outlive its
    // time as delegate. Safe from any thread.
    void setDelegate(QVSPolicyDelegate* delegate);
    QVSPolicyDelegate* delegate() const;

    // The change handler, run on the thread that watches the policy file: a policy whose
    // hash differs from the stored one discards the persisted settings, stores its hash and
    // is handed to the delegate. A missing or invalid policy changes nothing.
    void policyObserveCallback();

    // Starts watching the policy file on the loop's thread, where the change handler then
    // runs, 3 seconds after the last of a series of changes; does nothing when it watches.
    static constexpr std::chrono::milliseconds kFileEventLatency {3000};
    void lazyInitializeFileSystemEventStream(RunLoop& loop);
    // Stops watching (before the loop goes away).
    void releaseFileSystemEventStream();

private:
    QVSPolicy() = default;
    // The policy's keys over the given defaults.
    Dictionary readPolicy(Dictionary defaults = {}) const;
    void applyChangedPolicy(const std::string& oldHash, const std::string& newHash);

    std::atomic<QVSPolicyDelegate*> delegate_{nullptr};
    std::mutex streamLock_;
    std::unique_ptr<FileWatcher> fileSystemEventStream_;
};

}  // namespace tov
