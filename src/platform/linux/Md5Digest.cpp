#include "platform/Md5Digest.h"

#include <openssl/evp.h>

namespace tov {

struct Md5Digest::State {
    EVP_MD_CTX* context = nullptr;
    bool usable = false;

    State() : context(EVP_MD_CTX_new()) {
        usable = context != nullptr && EVP_DigestInit_ex(context, EVP_md5(), nullptr) == 1;
    }
    ~State() { EVP_MD_CTX_free(context); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
};

Md5Digest::Md5Digest() : state_(std::make_unique<State>()) {}

Md5Digest::~Md5Digest() = default;

void Md5Digest::update(const void* bytes, std::size_t length) {
    if (!state_->usable || length == 0) return;
    state_->usable = EVP_DigestUpdate(state_->context, bytes, length) == 1;
}

std::optional<Md5Digest::Value> Md5Digest::finish() {
    if (!state_->usable) return std::nullopt;
    state_->usable = false;
    Value digest{};
    unsigned int length = 0;
    if (EVP_DigestFinal_ex(state_->context, digest.data(), &length) != 1 || length != digest.size()) {
        return std::nullopt;
    }
    return digest;
}

}  // namespace tov
