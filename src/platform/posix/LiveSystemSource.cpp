#include "platform/LiveSystemSource.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "common/QVSCommand.h"
#include "common/QVSLogger.h"
#include "platform/NativeFacts.h"

namespace tov {
namespace {

class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() {
        if (descriptor_ != -1) close(descriptor_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return descriptor_; }

private:
    int descriptor_;
};

// Reads at most limit + 1 bytes, so that a larger file is noticed without reading it all.
std::optional<std::string> readBounded(int descriptor, std::uint64_t limit) {
    std::string bytes;
    char chunk[16384];
    for (;;) {
        const std::uint64_t wanted = std::min<std::uint64_t>(sizeof chunk, limit + 1 - bytes.size());
        const ssize_t count = read(descriptor, chunk, static_cast<std::size_t>(wanted));
        if (count == 0) return bytes;
        if (count < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;
        }
        bytes.append(chunk, static_cast<std::size_t>(count));
        if (bytes.size() > limit) return std::nullopt;
    }
}

// The regular file at path opened for reading, or -1. Non-blocking, so that a FIFO
// planted where a file was expected cannot stall the scan.
int openRegularFile(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor == -1) return -1;
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

// Up to length bytes from offset, in chunks, so that no more is held than the file gives.
std::optional<std::string> readPartAt(int descriptor, std::uint64_t offset, std::uint64_t length) {
    constexpr std::uint64_t kChunk = 65536;
    std::string bytes;
    while (bytes.size() < length) {
        const std::uint64_t at = offset + bytes.size();
        if (at > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) break;
        const std::size_t before = bytes.size();
        bytes.resize(before + static_cast<std::size_t>(std::min(kChunk, length - before)));
        const ssize_t count = pread(descriptor, bytes.data() + before, bytes.size() - before, static_cast<off_t>(at));
        if (count < 0 && errno == EINTR) {
            bytes.resize(before);
            continue;
        }
        if (count < 0) return std::nullopt;
        bytes.resize(before + static_cast<std::size_t>(count));
        if (count == 0) break;
    }
    return bytes;
}

void logToolEnd(QVSCommand::RunEnd end, const std::string& program, std::chrono::milliseconds limit) {
    switch (end) {
        case QVSCommand::RunEnd::TimedOut:
            QVSLogger::warning("The tool %s did not finish within %lld seconds; it was ended.", program.c_str(),
                               static_cast<long long>(limit.count() / 1000));
            break;
        case QVSCommand::RunEnd::OutputTooLarge:
            QVSLogger::warning("The tool %s printed more than %zu bytes; it was ended.", program.c_str(),
                               LiveSystemSource::kToolOutputLimit);
            break;
        case QVSCommand::RunEnd::NotStarted:
            QVSLogger::debug("The tool %s could not be started.", program.c_str());
            break;
        case QVSCommand::RunEnd::Finished:
            break;
    }
}

}  // namespace

LiveSystemSource::LiveSystemSource(std::chrono::milliseconds toolTimeLimit) : toolTimeLimit_(toolTimeLimit) {}

std::string LiveSystemSource::platform() const { return hostPlatformName(); }

std::optional<std::string> LiveSystemSource::runTool(const std::vector<std::string>& argv) {
    if (argv.empty() || argv[0].empty() || argv[0][0] != '/') return std::nullopt;
    QVSCommand::RunEnd end = QVSCommand::RunEnd::NotStarted;
    std::optional<std::string> output = QVSCommand::runProgramWithLimits(
        argv[0], std::vector<std::string>(argv.begin() + 1, argv.end()), toolTimeLimit_, kToolOutputLimit, &end);
    logToolEnd(end, argv[0], toolTimeLimit_);
    return output;
}

std::optional<std::string> LiveSystemSource::readFile(const std::string& path, std::uint64_t maximumBytes) {
    const Descriptor file(openRegularFile(path));
    if (file.get() == -1) return std::nullopt;
    std::optional<std::string> bytes = readBounded(file.get(), maximumBytes);
    if (!bytes) {
        QVSLogger::debug("%s holds more than %llu bytes or cannot be read; it is left out.", path.c_str(),
                         static_cast<unsigned long long>(maximumBytes));
    }
    return bytes;
}

std::optional<std::string> LiveSystemSource::readFilePart(const std::string& path, std::uint64_t offset,
                                                          std::uint64_t length) {
    const Descriptor file(openRegularFile(path));
    if (file.get() == -1) return std::nullopt;
    return readPartAt(file.get(), offset, length);
}

std::optional<std::vector<std::string>> LiveSystemSource::listFolder(const std::string& path) {
    DIR* folder = opendir(path.c_str());
    if (folder == nullptr) return std::nullopt;
    std::vector<std::string> names;
    while (const dirent* entry = readdir(folder)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            names.emplace_back(entry->d_name);
        }
    }
    closedir(folder);
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<std::string> LiveSystemSource::readLink(const std::string& path) {
    std::string target(256, '\0');
    for (;;) {
        const ssize_t length = readlink(path.c_str(), target.data(), target.size());
        if (length < 0) return std::nullopt;
        if (static_cast<std::size_t>(length) < target.size()) {
            target.resize(static_cast<std::size_t>(length));
            return target;
        }
        if (target.size() >= 65536) return std::nullopt;
        target.resize(target.size() * 2);
    }
}

PathKind LiveSystemSource::pathKind(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return PathKind::None;
    if (S_ISREG(status.st_mode)) return PathKind::File;
    if (S_ISDIR(status.st_mode)) return PathKind::Folder;
    if (S_ISLNK(status.st_mode)) return PathKind::Link;
    return PathKind::Other;
}

Value LiveSystemSource::fact(const std::string& name, const std::string& key) { return nativeFact(name, key); }

}  // namespace tov
