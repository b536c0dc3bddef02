#include "common/QVSPolicy.h"

#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>

#include "common/Paths.h"
#include "common/QVSFileUtils.h"
#include "common/QVSLogger.h"
#include "common/QVSMD5Utils.h"
#include "common/TextUtils.h"
#include "common/ZipMembers.h"
#include "model/Json.h"

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

std::optional<std::string> readPlainFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::optional<std::string> readPolicyBytes(const std::string& path) {
    if (QVSFileUtils::IsZipFile(path)) return readZipMembers(path, QVSPolicy::kMaximumPolicyFileBytes);
    return readPlainFile(path);
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

std::string describeRootType(const Value& root) {
    if (root.isArray()) return "the policy is a JSON array, not an object";
    return "the policy is a single JSON value, not an object";
}

}  // namespace

QVSPolicy& QVSPolicy::sharedPolicy() {
    static QVSPolicy policy;
    return policy;
}

void QVSPolicy::populateDictionary(Dictionary& dictionary, const std::string& path) {
    if (path.empty() || !isReadableRegularFile(path)) return;
    const std::optional<std::string> bytes = readPolicyBytes(path);
    if (!bytes) {
        QVSLogger::debug("read policy file failed: [%s] could not be read.", path.c_str());
        return;
    }
    std::string error;
    const std::optional<Value> root = parseJson(*bytes, &error);
    if (!root) {
        QVSLogger::debug("read policy file failed: [%s] is not JSON (%s).", path.c_str(), error.c_str());
        return;
    }
    try {
        const DictionaryRef policy = root->dictionary();
        if (!policy) throw UnreadablePolicyValue(describeRootType(*root));
        copyPolicyKeys(*policy, dictionary);
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

}  // namespace tov
