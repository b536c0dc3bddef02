#include "app/LogLevelChoice.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "common/TextUtils.h"

namespace tov {
namespace {

// A level name is a few characters; more than this is not a level.
constexpr std::size_t kMaximumTriggerBytes = 4096;

std::string readSmallFile(int descriptor) {
    std::string text(kMaximumTriggerBytes, '\0');
    ssize_t count;
    do {
        count = ::read(descriptor, text.data(), text.size());
    } while (count < 0 && errno == EINTR);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

// Anyone may create files in /tmp; only root's own regular file may choose the level.
bool isRootOwnedRegularFile(const struct stat& status) { return S_ISREG(status.st_mode) && status.st_uid == 0; }

// A trigger that could not be opened: root's regular file counts as empty, anything else
// as no file.
std::optional<std::string> unopenedTrigger(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !isRootOwnedRegularFile(status)) return std::nullopt;
    return std::string();
}

bool isAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

std::optional<std::string> readDebugTriggerText(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return unopenedTrigger(path);
    struct stat status {};
    const bool counts = ::fstat(descriptor, &status) == 0 && isRootOwnedRegularFile(status);
    const std::string text = counts ? readSmallFile(descriptor) : std::string();
    ::close(descriptor);
    if (!counts) return std::nullopt;
    return isAscii(text) ? trimWhitespaceAndNewlines(text) : std::string();
}

std::string chooseLogLevel(const QVSAppArgument& arguments, const std::string& debugTriggerPath) {
    std::optional<std::string> level = arguments.logLevel();
    if (const std::optional<std::string> trigger = readDebugTriggerText(debugTriggerPath)) level = trigger;
    return level && !level->empty() ? *level : kDefaultLogLevel;
}

}  // namespace tov
