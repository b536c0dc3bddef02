#include "app/LogLevelChoice.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "common/TextUtils.h"

namespace tov {
namespace {

// A level name is a few characters; more than this is not a level.
constexpr std::size_t kMaximumTriggerBytes = 4096;

std::string readSmallFileWithoutFollowingLinks(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return "";
    std::string text(kMaximumTriggerBytes, '\0');
    ssize_t count;
    do {
        count = ::read(descriptor, text.data(), text.size());
    } while (count < 0 && errno == EINTR);
    ::close(descriptor);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

bool isAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

std::optional<std::string> readDebugTriggerText(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
    const std::string text = readSmallFileWithoutFollowingLinks(path);
    return isAscii(text) ? trimWhitespaceAndNewlines(text) : std::string();
}

std::string chooseLogLevel(const QVSAppArgument& arguments, const std::string& debugTriggerPath) {
    std::optional<std::string> level = arguments.logLevel();
    if (const std::optional<std::string> trigger = readDebugTriggerText(debugTriggerPath)) level = trigger;
    return level && !level->empty() ? *level : kDefaultLogLevel;
}

}  // namespace tov
