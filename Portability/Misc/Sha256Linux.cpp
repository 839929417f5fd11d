#include "Portability/Misc/Sha256.h"

// The one-algorithm interface: the same assembly as the provider's SHA-256 (the CPU's SHA
// extensions where it has them), without setting up the provider machinery, which cost a small
// pack more CPU than hashing its megabyte. OpenSSL 3 keeps it, marked deprecated.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/sha.h>

namespace Portability {

struct Sha256::State {
    SHA256_CTX context{};
    bool good = SHA256_Init(&context) == 1;
};

Sha256::Sha256() : state_(std::make_unique<State>()) {}

Sha256::~Sha256() = default;

void Sha256::Update(const void* data, std::size_t size) noexcept {
    if (state_->good && size > 0) state_->good = SHA256_Update(&state_->context, data, size) == 1;
}

bool Sha256::Finish(Digest& digest) noexcept {
    Digest result{};
    const bool good = state_->good && SHA256_Final(result.data(), &state_->context) == 1;
    state_->good = SHA256_Init(&state_->context) == 1;
    if (good) digest = result;
    return good;
}

}  // namespace Portability
