#include "platform/Md5Digest.h"

#include <CommonCrypto/CommonDigest.h>

#include <algorithm>
#include <limits>

// The SDK marks MD5 as deprecated for security uses; here it only fingerprints file
// contents, so the warning does not apply.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

namespace tov {

struct Md5Digest::State {
    CC_MD5_CTX context{};
    bool usable = false;

    State() { usable = CC_MD5_Init(&context) == 1; }
};

Md5Digest::Md5Digest() : state_(std::make_unique<State>()) {}

Md5Digest::~Md5Digest() = default;

void Md5Digest::update(const void* bytes, std::size_t length) {
    // CommonCrypto takes 32-bit lengths: feed larger blocks in pieces.
    const auto* next = static_cast<const unsigned char*>(bytes);
    while (state_->usable && length > 0) {
        const std::size_t piece = std::min<std::size_t>(length, std::numeric_limits<CC_LONG>::max());
        state_->usable = CC_MD5_Update(&state_->context, next, static_cast<CC_LONG>(piece)) == 1;
        next += piece;
        length -= piece;
    }
}

std::optional<Md5Digest::Value> Md5Digest::finish() {
    if (!state_->usable) return std::nullopt;
    state_->usable = false;
    static_assert(CC_MD5_DIGEST_LENGTH == std::tuple_size_v<Value>);
    Value digest{};
    if (CC_MD5_Final(digest.data(), &state_->context) != 1) return std::nullopt;
    return digest;
}

}  // namespace tov

#pragma clang diagnostic pop
