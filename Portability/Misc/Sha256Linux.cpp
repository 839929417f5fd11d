#include "Portability/Misc/Sha256.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace Portability {

namespace {
// The library without the system's openssl.cnf: nothing there concerns a digest, and reading it
// (and what it includes) was most of the cost of a small pack.
EVP_MD_CTX* NewContext() {
    static const bool initialised = OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr) == 1;
    return initialised ? EVP_MD_CTX_new() : nullptr;
}
}  // namespace

struct Sha256::State {
    EVP_MD_CTX* context = NewContext();
    bool good = context != nullptr && EVP_DigestInit_ex(context, EVP_sha256(), nullptr) == 1;

    ~State() { EVP_MD_CTX_free(context); }
};

Sha256::Sha256() : state_(std::make_unique<State>()) {}

Sha256::~Sha256() = default;

void Sha256::Update(const void* data, std::size_t size) noexcept {
    if (state_->good && size > 0) state_->good = EVP_DigestUpdate(state_->context, data, size) == 1;
}

bool Sha256::Finish(Digest& digest) noexcept {
    Digest result{};
    bool good = state_->good && EVP_DigestFinal_ex(state_->context, result.data(), nullptr) == 1;
    state_->good = EVP_DigestInit_ex(state_->context, EVP_sha256(), nullptr) == 1;
    if (good) digest = result;
    return good;
}

}  // namespace Portability
