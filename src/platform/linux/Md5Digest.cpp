#include "platform/Md5Digest.h"

#include <nettle/md5.h>

namespace tov {

// Nettle is already in the process (CUPS's TLS library uses it), so the digest costs no
// library of its own.
struct Md5Digest::State {
    md5_ctx context{};
    bool usable = true;

    State() { md5_init(&context); }
};

Md5Digest::Md5Digest() : state_(std::make_unique<State>()) {}

Md5Digest::~Md5Digest() = default;

void Md5Digest::update(const void* bytes, std::size_t length) {
    if (!state_->usable || length == 0) return;
    md5_update(&state_->context, length, static_cast<const std::uint8_t*>(bytes));
}

std::optional<Md5Digest::Value> Md5Digest::finish() {
    if (!state_->usable) return std::nullopt;
    state_->usable = false;
    Value digest{};
    static_assert(sizeof digest == MD5_DIGEST_SIZE);
    md5_digest(&state_->context, digest.size(), digest.data());
    return digest;
}

}  // namespace tov
