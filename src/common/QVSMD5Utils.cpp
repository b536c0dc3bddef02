#include "common/QVSMD5Utils.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <optional>

#include "platform/Md5Digest.h"

namespace tov {
namespace {

std::string lowerCaseHex(const Md5Digest::Value& digest) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(digest.size() * 2);
    for (const std::uint8_t byte : digest) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0f];
    }
    return text;
}

std::string hexOfDigest(Md5Digest& digest) {
    const std::optional<Md5Digest::Value> value = digest.finish();
    return value ? lowerCaseHex(*value) : std::string();
}

class OpenFile {
public:
    // Opening does not wait: a pipe without a writer would otherwise block the caller.
    explicit OpenFile(const std::string& path)
        : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
    ~OpenFile() {
        if (descriptor_ != -1) close(descriptor_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int descriptor() const { return descriptor_; }
    bool isRegularFile() const {
        struct stat status {};
        return descriptor_ != -1 && fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
    }

private:
    int descriptor_;
};

// Feeds the whole file to the digest in chunks; false on a read error.
bool digestFile(int descriptor, Md5Digest& digest) {
    char chunk[65536];
    for (;;) {
        const ssize_t count = read(descriptor, chunk, sizeof chunk);
        if (count > 0) {
            digest.update(chunk, static_cast<std::size_t>(count));
        } else if (count == 0) {
            return true;
        } else if (errno != EINTR) {
            return false;
        }
    }
}

}  // namespace

std::string QVSMD5Utils::md5OfFile(const std::string& path) {
    try {
        OpenFile file(path);
        if (!file.isRegularFile()) return "";
        Md5Digest digest;
        if (!digestFile(file.descriptor(), digest)) return "";
        return hexOfDigest(digest);
    } catch (const std::exception&) {
        return "";
    }
}

std::string QVSMD5Utils::md5OfData(std::string_view bytes) {
    if (bytes.empty()) return "";
    try {
        Md5Digest digest;
        digest.update(bytes.data(), bytes.size());
        return hexOfDigest(digest);
    } catch (const std::exception&) {
        return "";
    }
}

}  // namespace tov
