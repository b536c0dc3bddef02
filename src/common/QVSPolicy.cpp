#include "common/QVSPolicy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <istream>
#include <memory>
#include <optional>
#include <stdexcept>

#include "common/BoundedInputBuffer.h"
#include "common/Paths.h"
#include "common/QVSFileUtils.h"
#include "common/QVSLogger.h"
#include "common/QVSMD5Utils.h"
#include "common/QVSSettings.h"
#include "common/TextUtils.h"
#include "common/TopLevelJsonKeys.h"
#include "common/ZipMemberReader.h"

namespace tov {
namespace {

// A policy value that is neither a number nor text cannot be read as one; reading stops.
class UnreadablePolicyValue : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

bool isReadableRegularFile(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_size <= QVSPolicy::kMaximumPolicyFileBytes;
}

// Reads the plain file at path a chunk at a time; nothing when it cannot be opened.
BoundedInputBuffer::ChunkReader plainFileReader(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return nullptr;
    const auto file = std::shared_ptr<int>(new int(descriptor), [](int* opened) {
        ::close(*opened);
        delete opened;
    });
    return [file](char* buffer, std::size_t size) -> std::int64_t {
        ssize_t count;
        do {
            count = ::read(*file, buffer, size);
        } while (count < 0 && errno == EINTR);
        return count;
    };
}

// Reads the members of the ZIP archive at path a chunk at a time; nothing when it is not
// an archive.
BoundedInputBuffer::ChunkReader zipMembersReader(const std::string& path) {
    const auto archive = std::make_shared<ZipMemberReader>(path);
    if (!archive->isOpen()) return nullptr;
    return [archive](char* buffer, std::size_t size) { return archive->read(buffer, size); };
}

BoundedInputBuffer::ChunkReader policyBytesReader(const std::string& path) {
    return QVSFileUtils::IsZipFile(path) ? zipMembersReader(path) : plainFileReader(path);
}

// The policy's keys at the top level of its JSON document, read in one bounded pass;
// nothing, with a debug line, when the file cannot be read whole or is not JSON.
std::optional<TopLevelJsonKeys> readPolicyKeys(const std::string& path) {
    BoundedInputBuffer::ChunkReader reader = policyBytesReader(path);
    if (!reader) {
        QVSLogger::debug("read policy file failed: [%s] could not be read.", path.c_str());
        return std::nullopt;
    }
    BoundedInputBuffer buffer(std::move(reader), QVSPolicy::kMaximumPolicyFileBytes);
    std::istream input(&buffer);
    TopLevelJsonKeys keys = readTopLevelJsonKeys(
        input, {QVSPolicy::kFullScanIntervalHoursKey, QVSPolicy::kScanAfterRestartKey, QVSPolicy::kEventDrivenScanKey});
    if (buffer.readFailed() || buffer.exceededBound()) {
        QVSLogger::debug("read policy file failed: [%s] could not be read.", path.c_str());
        return std::nullopt;
    }
    if (!keys.parsed) {
        QVSLogger::debug("read policy file failed: [%s] is not JSON (%s).", path.c_str(), keys.error.c_str());
        return std::nullopt;
    }
    return keys;
}

// Text reads as a boolean when it starts, after blanks, a sign and zeros, with Y, T or a
// digit 1 to 9, in either case.
bool textBoolValue(const std::string& text) {
    std::size_t position = text.find_first_not_of(" \t\n\r\f\v");
    if (position == std::string::npos) return false;
    if (text[position] == '+' || text[position] == '-') ++position;
    while (position < text.size() && text[position] == '0') ++position;
    if (position >= text.size()) return false;
    const char first = text[position];
    return first == 'Y' || first == 'y' || first == 'T' || first == 't' || (first >= '1' && first <= '9');
}

std::int64_t integerValue(const Value& value, const char* key) {
    if (value.isNumber()) return value.toInt64();
    if (value.isString()) return leadingIntegerValue(*value.string());
    throw UnreadablePolicyValue(std::string("\"") + key + "\" is neither a number nor text");
}

bool boolValue(const Value& value, const char* key) {
    if (value.isNumber()) return value.toBool();
    if (value.isString()) return textBoolValue(*value.string());
    throw UnreadablePolicyValue(std::string("\"") + key + "\" is neither a number nor text");
}

void copyPolicyKeys(const Dictionary& policy, Dictionary& dictionary) {
    if (const Value* hours = policy.find(QVSPolicy::kFullScanIntervalHoursKey)) {
        dictionary.set(QVSPolicy::kFullScanIntervalHoursKey,
                       Value(integerValue(*hours, QVSPolicy::kFullScanIntervalHoursKey)));
    }
    for (const char* key : {QVSPolicy::kScanAfterRestartKey, QVSPolicy::kEventDrivenScanKey}) {
        if (const Value* flag = policy.find(key)) dictionary.set(key, Value(boolValue(*flag, key)));
    }
}

// A hash that was never stored is shown the way the log shows a missing value.
std::string shownHash(const std::optional<std::string>& hash) { return hash ? *hash : "(null)"; }

std::string describeRootType(JsonRootKind root) {
    if (root == JsonRootKind::Array) return "the policy is a JSON array, not an object";
    return "the policy is a single JSON value, not an object";
}

}  // namespace

QVSPolicy& QVSPolicy::sharedPolicy() {
    static QVSPolicy policy;
    return policy;
}

void QVSPolicy::lazyInitializeFileSystemEventStream(RunLoop& loop) {
    std::lock_guard<std::mutex> guard(streamLock_);
    if (fileSystemEventStream_) return;
    fileSystemEventStream_ =
        FileWatcher::create(loop, Paths::policyFile(), kFileEventLatency, [this] { policyObserveCallback(); });
}

void QVSPolicy::releaseFileSystemEventStream() {
    std::unique_ptr<FileWatcher> stream;
    {
        std::lock_guard<std::mutex> guard(streamLock_);
        stream = std::move(fileSystemEventStream_);
    }
}

void QVSPolicy::populateDictionary(Dictionary& dictionary, const std::string& path) {
    if (path.empty() || !isReadableRegularFile(path)) return;
    const std::optional<TopLevelJsonKeys> policy = readPolicyKeys(path);
    if (!policy) return;
    try {
        if (policy->root != JsonRootKind::Object) throw UnreadablePolicyValue(describeRootType(policy->root));
        copyPolicyKeys(policy->values, dictionary);
    } catch (const std::exception& problem) {
        QVSLogger::warning("read policy file failed with exception. %s", problem.what());
    }
}

Dictionary QVSPolicy::readPolicy(Dictionary defaults) const {
    populateDictionary(defaults, Paths::policyFile());
    return defaults;
}

double QVSPolicy::fullScanIntervalSeconds() const {
    Dictionary defaults;
    defaults.set(kFullScanIntervalHoursKey, Value(kDefaultFullScanIntervalHours));
    const std::int64_t hours = readPolicy(std::move(defaults)).get(kFullScanIntervalHoursKey).toInt64();
    std::int64_t seconds = 0;
    if (__builtin_mul_overflow(hours, std::int64_t{3600}, &seconds)) {
        seconds = hours < 0 ? INT64_MIN : INT64_MAX;
    }
    return static_cast<double>(seconds);
}

bool QVSPolicy::scanAfterRestart() const { return readPolicy().get(kScanAfterRestartKey).toBool(); }

bool QVSPolicy::eventDrivenScan() const { return readPolicy().get(kEventDrivenScanKey).toBool(); }

bool QVSPolicy::isPolicyFileExist() const {
    const Dictionary policy = readPolicy();
    return policy.contains(kFullScanIntervalHoursKey) || policy.contains(kScanAfterRestartKey) ||
           policy.contains(kEventDrivenScanKey);
}

std::string QVSPolicy::md5() const {
    if (!isPolicyFileExist()) return "";
    return QVSMD5Utils::md5OfFile(Paths::policyFile());
}

void QVSPolicy::setDelegate(QVSPolicyDelegate* delegate) { delegate_.store(delegate); }

QVSPolicyDelegate* QVSPolicy::delegate() const { return delegate_.load(); }

void QVSPolicy::policyObserveCallback() {
    const std::string newHash = md5();
    if (newHash.empty()) {
        QVSLogger::debug("POC: Invalid Policy.");
        return;
    }
    const std::optional<std::string> oldHash = QVSSettings::defaultSettings().previousPolicyHash();
    if (oldHash && !oldHash->empty() && *oldHash == newHash) {
        QVSLogger::debug("POC: Policy file is not changed.");
        return;
    }
    applyChangedPolicy(shownHash(oldHash), newHash);
}

// A new policy starts from nothing: the persisted state (report hash, full-scan time,
// addresses) goes, so the next scan counts as a first one.
void QVSPolicy::applyChangedPolicy(const std::string& oldHash, const std::string& newHash) {
    QVSLogger::debug("POC: Policy hash is changed from [%s] to [%s].", oldHash.c_str(), newHash.c_str());
    QVSLogger::information("POC: Start apply the new policy...");
    QVSLogger::information("POC: Remove old settings...");
    QVSSettings& settings = QVSSettings::defaultSettings();
    settings.removeSettingsFile();
    settings.setPreviousPolicyHash(newHash);
    settings.synchronize();
    QVSLogger::debug("POC: Set new policy hash to [%s] in settings.", shownHash(settings.previousPolicyHash()).c_str());
    if (QVSPolicyDelegate* observer = delegate()) observer->didPolicyChanged(*this);
    QVSLogger::information(" POC:Applied new policy.");
}

}  // namespace tov
