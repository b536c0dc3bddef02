#include "common/QVSSettings.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <utility>

#include "common/FileAccess.h"
#include "common/KeyedArchive.h"
#include "common/Paths.h"
#include "common/QVFileUtil.h"

namespace tov {
namespace {

// The class lock and the instances by path. Neither is ever destroyed, so a thread still
// running while the process exits keeps a valid instance.
std::mutex& classLock() {
    static std::mutex* const lock = new std::mutex;
    return *lock;
}

std::map<std::string, std::unique_ptr<QVSSettings>>& instances() {
    static auto* const registry = new std::map<std::string, std::unique_ptr<QVSSettings>>;
    return *registry;
}

struct RegisteredInstance {
    QVSSettings& settings;
    bool created;
};

// The instance registered for path, created on first use; the caller holds the class lock.
RegisteredInstance registeredInstance(const std::string& path) {
    std::unique_ptr<QVSSettings>& slot = instances()[path];
    const bool created = slot == nullptr;
    if (created) slot = std::make_unique<QVSSettings>(path);
    return RegisteredInstance{*slot, created};
}

Dictionary decodeFile(const std::string& path) {
    const std::optional<std::string> bytes = readWholeFile(path, kMaximumKeyedArchiveBytes);
    if (!bytes) return Dictionary();
    std::optional<DictionaryRef> decoded = decodeKeyedArchive(*bytes);
    return decoded ? std::move(**decoded) : Dictionary();
}

bool isNonFolderItem(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

bool isFolderItem(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Replaces whatever stands at path by bytes: the old file stays until the new one is
// complete and on disk, a symbolic link is replaced rather than followed, and a folder in
// the way is removed first. On failure, why.
std::optional<std::string> replaceFile(const std::string& path, const std::string& bytes) {
    if (isFolderItem(path) && !removeItemWithoutFollowing(path)) {
        return "could not remove the folder at " + path + ": " + std::strerror(errno);
    }
    if (!writeFileAtomically(path, bytes)) return "could not write " + path + ": " + std::strerror(errno);
    return std::nullopt;
}

}  // namespace

QVSSettings& QVSSettings::defaultSettings() {
    const std::string path = Paths::settingsFile();
    std::lock_guard<std::mutex> guard(classLock());
    return registeredInstance(path).settings;
}

QVSSettings& QVSSettings::settingsWithFile(const std::string& path) {
    if (path == Paths::settingsFile()) return defaultSettings();
    QVSSettings* settings = nullptr;
    bool created = false;
    {
        std::lock_guard<std::mutex> guard(classLock());
        const RegisteredInstance registered = registeredInstance(path);
        settings = &registered.settings;
        created = registered.created;
    }
    if (!created) settings->checkFileUpdate();
    return *settings;
}

QVSSettings::QVSSettings(std::string path) : path_(std::move(path)) {
    settings_ = readSettings();
    updateOn_ = fileModificationTime(path_);
}

Dictionary QVSSettings::readSettings() const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    try {
        repairPermissions();
        return decodeFile(path_);
    } catch (const std::exception&) {
        return Dictionary();
    }
}

// The permission repair of an existing file runs before the write; a new file is written
// with mode 0600 and gets its group on the next read. A failed write leaves the old file
// as it was and the values marked as changed.
bool QVSSettings::saveSettings() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    try {
        const std::optional<int> repairError = repairPermissions();
        const std::optional<std::string> archive = encodeKeyedArchive(settings_);
        if (!archive) {
            QVSLogger::error("saveSettings. ex = [%s]", "the settings cannot be written as a keyed archive");
            return false;
        }
        if (const std::optional<std::string> failure = replaceFile(path_, *archive)) {
            QVSLogger::error("saveSettings. ex = [%s]", failure->c_str());
            return false;
        }
        if (repairError) {
            QVSLogger::error("Could not ensure proper permissions on setting file. Error code = [%lu]",
                             static_cast<unsigned long>(*repairError));
            return false;
        }
        updateOn_ = fileModificationTime(path_);
        dirty_ = false;
        return true;
    } catch (const std::exception& exception) {
        QVSLogger::error("saveSettings. ex = [%s]", exception.what());
        return false;
    }
}

bool QVSSettings::synchronize() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return dirty_ ? saveSettings() : true;
}

// An outside change shows only as a different modification time. A file that changed into
// something empty or undecodable leaves the values in memory (and the old time) alone.
void QVSSettings::checkFileUpdate() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    const std::optional<FileModificationTime> modified = fileModificationTime(path_);
    if (!modified) {
        saveSettings();
        return;
    }
    if (modified == updateOn_) return;
    Dictionary fresh = readSettings();
    if (fresh.empty()) return;
    settings_ = std::move(fresh);
    updateOn_ = modified;
}

void QVSSettings::removeSettingsFile() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    repairPermissions();
    if (!isNonFolderItem(path_)) return;
    if (!removeItemWithoutFollowing(Paths::settingsFile())) {
        QVSLogger::error("removeSettingsFile: could not remove %s: %s", Paths::settingsFile().c_str(),
                         std::strerror(errno));
    }
    settings_.clear();
    updateOn_.reset();
    dirty_ = false;
}

std::optional<std::string> QVSSettings::previousPolicyHash() const { return stringSetting(kPreviousPolicyHashKey); }

void QVSSettings::setPreviousPolicyHash(std::optional<std::string_view> hash) {
    recordString(kPreviousPolicyHashKey, hash, "setPreviousPolicyHash. ex = [%s]");
}

std::optional<std::string> QVSSettings::previousReportHash() const { return stringSetting(kPreviousReportHashKey); }

void QVSSettings::setPreviousReportHash(std::optional<std::string_view> hash) {
    recordString(kPreviousReportHashKey, hash, "setPreviousReportHash. ex = [%s]");
}

double QVSSettings::previousFullScanDatetime() const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return settings_.get(kPreviousFullScanDatetimeKey).toDouble();
}

void QVSSettings::setPreviousFullScanDatetime(double datetime) {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    try {
        settings_.set(kPreviousFullScanDatetimeKey, Value(datetime));
        dirty_ = true;
    } catch (const std::exception& exception) {
        QVSLogger::error("setPreviousFullScanDatetime. ex = [%s]", exception.what());
    }
}

std::optional<std::string> QVSSettings::localIP() const { return stringSetting(kLocalIpKey); }

void QVSSettings::setLocalIP(std::optional<std::string_view> address) {
    recordString(kLocalIpKey, address, "setLocalIP. ex = [%s]");
}

std::optional<std::string> QVSSettings::publicIP() const { return stringSetting(kPublicIpKey); }

void QVSSettings::setPublicIP(std::optional<std::string_view> address) {
    recordString(kPublicIpKey, address, "setPublicIP. ex = [%s]");
}

bool QVSSettings::isDirty() const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return dirty_;
}

const std::string& QVSSettings::path() const { return path_; }

std::optional<std::string> QVSSettings::stringSetting(const char* key) const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    const Value* value = settings_.find(key);
    if (value == nullptr || !value->isString()) return std::nullopt;
    return *value->string();
}

// An equal value changes nothing; an absent one removes the key when it is there.
void QVSSettings::recordString(const char* key, std::optional<std::string_view> text, const char* failureFormat) {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    try {
        if (!text) {
            if (settings_.remove(key)) dirty_ = true;
            return;
        }
        const Value* stored = settings_.find(key);
        if (stored != nullptr && stored->isString() && *stored->string() == *text) return;
        settings_.set(key, Value(*text));
        dirty_ = true;
    } catch (const std::exception& exception) {
        QVSLogger::error(failureFormat, exception.what());
    }
}

// Only an existing item is repaired: a settings file that is not there yet (a new
// installation) is nothing to report, and its first save must not fail for it.
std::optional<int> QVSSettings::repairPermissions() const {
    if (!itemExists(path_)) return std::nullopt;
    QVFileUtilErrorSlot error;
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(path_, &error);
    if (!error) return std::nullopt;
    if (error->domain == QVFileUtilError::kDomain) QVSLogger::error("%s", error->message.c_str());
    return error->code;
}

}  // namespace tov
