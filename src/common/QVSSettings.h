#pragma once

// The few values that must survive a restart of the daemon: the hashes of the last policy
// and report, the time of the last full scan and the machine's addresses. They live in
// memory as one dictionary, are written to one file (a keyed archive) on request, and are
// read again when another process changed that file. One instance per file, kept until
// the process exits; each instance is safe to use from several threads.

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "common/QVSLogger.h"
#include "model/Value.h"
#include "platform/FileModificationTime.h"

namespace tov {

class QVSSettings {
public:
    static constexpr const char* kPreviousPolicyHashKey = "previous-policy-hash";
    static constexpr const char* kPreviousReportHashKey = "previous-report-hash";
    static constexpr const char* kPreviousFullScanDatetimeKey = "previous-full-scan-datetime";
    static constexpr const char* kLocalIpKey = "localIp";
    static constexpr const char* kPublicIpKey = "publicIp";

    // The instance for Paths::settingsFile() as it is now (a test root gets its own instance).
    static QVSSettings& defaultSettings();
    // The default path gives defaultSettings(); another path gets its own instance, and a
    // known one is first brought up to date with checkFileUpdate().
    static QVSSettings& settingsWithFile(const std::string& path);

    // Reads the file at path, if any.
    explicit QVSSettings(std::string path);
    QVSSettings(const QVSSettings&) = delete;
    QVSSettings& operator=(const QVSSettings&) = delete;

    // The file's dictionary after repairing its owner and mode; empty when the file is
    // missing or cannot be decoded. Does not replace the values in memory.
    Dictionary readSettings() const;
    // Replaces the file by the values (a link or folder standing there is replaced, never
    // followed); false, with an error line, when the permission repair reported an error
    // (the file is written all the same), the values could not be encoded or the file could
    // not be written (the old file then stays as it was).
    bool saveSettings();
    // Saves when a value changed since the last successful save; true otherwise.
    bool synchronize();
    // Re-creates a vanished file from memory, or takes the file's values when its
    // modification time changed and it holds any.
    void checkFileUpdate();
    // Removes whatever stands at the default settings path (not this instance's own path;
    // a link is not followed) when something that is not a folder exists at this
    // instance's path, and forgets all values.
    void removeSettingsFile();

    std::optional<std::string> previousPolicyHash() const;
    void setPreviousPolicyHash(std::optional<std::string_view> hash);
    std::optional<std::string> previousReportHash() const;
    void setPreviousReportHash(std::optional<std::string_view> hash);
    // Seconds since 1970-01-01 UTC; 0 when never recorded.
    double previousFullScanDatetime() const;
    void setPreviousFullScanDatetime(double datetime);
    std::optional<std::string> localIP() const;
    void setLocalIP(std::optional<std::string_view> address);
    std::optional<std::string> publicIP() const;
    void setPublicIP(std::optional<std::string_view> address);

    bool isDirty() const;
    const std::string& path() const;

private:
    std::optional<std::string> stringSetting(const char* key) const;
    // Stores, replaces or removes a string value; failureFormat logs an exception's text.
    void recordString(const char* key, std::optional<std::string_view> text, const char* failureFormat)
        TOV_PRINTF_FORMAT(4, 0);
    // Repairs the file's owner and mode; the error the repair left, if any, is logged and
    // answered.
    std::optional<int> repairPermissions() const;

    const std::string path_;
    mutable std::recursive_mutex lock_;
    // The file's modification time when this instance last read or wrote it.
    std::optional<FileModificationTime> updateOn_;
    Dictionary settings_;
    bool dirty_ = false;
};

}  // namespace tov
