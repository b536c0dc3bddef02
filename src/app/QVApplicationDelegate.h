#pragma once

// The one long-lived object of tov. It carries every mode of the executable: the
// environment report, installation and removal of the service, the forced full scan, and
// the daemon: start-up on the main thread's run loop (signal handler, debug trigger,
// settings, outbox, service self-repair, policy watcher, scan thread, USB volume events,
// optional scan after restart), the events that loop delivers, and shut-down.

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "app/QVDaemonInstaller.h"
#include "app/QVMemoryGuard.h"
#include "app/QVRemovableMedia.h"
#include "app/QVScanScheduler.h"
#include "app/QVScanThread.h"
#include "common/QVSPolicyDelegate.h"
#include "common/Version.h"
#include "discovery/QVDiscovererFactory.h"
#include "platform/FileWatcher.h"
#include "platform/RunLoop.h"
#include "platform/ServiceManager.h"

namespace tov {

class QVApplicationDelegate : public QVScanScheduler::Host, public QVSPolicyDelegate {
public:
    static constexpr const char* kVersion = kTovVersion;
    static constexpr std::chrono::milliseconds kDebugFileLatency {500};

    // What a test puts in place of the machine: the clock, the tick's sleep, the service
    // manager and the discoverer factory asked about consoles and volumes.
    struct Options {
        QVScanScheduler::Clock clock = std::chrono::system_clock::now;
        // Empty: the real 5-second sleep.
        QVScanThread::TickSleep tickSleep;
        ServiceManager* serviceManager = nullptr;
        std::shared_ptr<QVDiscovererFactory> factory;
    };

    QVApplicationDelegate();
    explicit QVApplicationDelegate(Options options);
    ~QVApplicationDelegate() override;
    QVApplicationDelegate(const QVApplicationDelegate&) = delete;
    QVApplicationDelegate& operator=(const QVApplicationDelegate&) = delete;

    // "Version:", "Outbox:" and, when a policy exists, "ConfigHash:" lines, each ended by
    // a line feed.
    std::string environment() const;
    // Writes "Force Full Scan." and a line feed to standard output, then runs a forced full
    // scan and its report decision on this thread.
    void forceFullScan();

    bool lazyInstallAsDaemonWithExecutionInterval(double interval, bool runAtLoad) override;
    bool lazyUninstallDaemon();
    bool isInstalledAsDaemon() override;

    // The user at the console, for the gate of the daemon mode.
    QVDiscovererFactory::ConsoleUser currentHumanUsername();

    void setExecutablePath(const std::string& path);
    const std::string& executablePath() const;
    void setMemoryThreshold(std::int64_t threshold);
    std::int64_t memoryThreshold() const;

    // The daemon: makes the run loop, starts up on it, delivers its events until the
    // application terminates, and shuts down. False when there is no run loop (logged).
    bool runApplication();
    void applicationDidFinishLaunching();
    void applicationWillTerminate();
    void startup();
    void shutdown();
    // Asks the application to terminate, from any thread.
    void terminate() override;

    void didPolicyChanged(QVSPolicy& policy) override;
    void lazyInitScanThread();
    void performScanTimerLogic();
    void lazyInitializeDebugFileEventStream();

    bool isBeyondMemoryConsumptionThreshold() override;
    void spawnNewAppInstance() override;

private:
    QVDiscovererFactory& factory();
    void catchSigterm();
    std::unique_ptr<VolumeWatcher> startVolumeWatcher(VolumeWatcher::Handler handler);

    Options options_;
    QVDaemonInstaller installer_;
    QVMemoryGuard memoryGuard_;
    QVScanScheduler scheduler_;
    QVRemovableMedia removableMedia_;
    std::unique_ptr<RunLoop> runLoop_;
    std::unique_ptr<FileWatcher> debugFileSystemEventStream_;
    std::unique_ptr<QVScanThread> scanThread_;
    // The delegate's monitor: the debug stream's creation (the media registration has its own).
    std::recursive_mutex monitor_;
    bool terminating_ = false;
};

}  // namespace tov
