#pragma once

// An MD5 digest computed in-process by the platform's crypto library. MD5 serves here as
// a content fingerprint of the daemon's own files, not as a security measure.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace tov {

class Md5Digest {
public:
    using Value = std::array<std::uint8_t, 16>;

    Md5Digest();
    ~Md5Digest();
    Md5Digest(const Md5Digest&) = delete;
    Md5Digest& operator=(const Md5Digest&) = delete;

    // Adds bytes to the digest; ignored once the digest has failed or been finished.
    void update(const void* bytes, std::size_t length);
    // The digest of everything added, once; nothing when the crypto library refused
    // (for instance a system that forbids MD5) or when called a second time.
    std::optional<Value> finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace tov
