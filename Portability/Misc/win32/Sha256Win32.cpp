#include "Portability/Misc/Sha256.h"

#include <windows.h>
#include <bcrypt.h>

namespace Portability {

namespace {
bool Succeeded(NTSTATUS status) { return status >= 0; }
}  // namespace

// CNG's reusable hash object: BCryptFinishHash leaves it ready for a new stream.
struct Sha256::State {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;
    bool good = false;

    State() {
        good = Succeeded(BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr,
                                                     BCRYPT_HASH_REUSABLE_FLAG)) &&
               Succeeded(BCryptCreateHash(algorithm, &hash, nullptr, 0, nullptr, 0, BCRYPT_HASH_REUSABLE_FLAG));
    }
    ~State() {
        if (hash != nullptr) BCryptDestroyHash(hash);
        if (algorithm != nullptr) BCryptCloseAlgorithmProvider(algorithm, 0);
    }
};

Sha256::Sha256() : state_(std::make_unique<State>()) {}

Sha256::~Sha256() = default;

void Sha256::Update(const void* data, std::size_t size) noexcept {
    // BCryptHashData takes a 32-bit length: large pieces go in slices.
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (state_->good && size > 0) {
        const ULONG slice = size > 0x40000000u ? 0x40000000u : static_cast<ULONG>(size);
        state_->good = Succeeded(BCryptHashData(state_->hash, const_cast<PUCHAR>(bytes), slice, 0));
        bytes += slice;
        size -= slice;
    }
}

bool Sha256::Finish(Digest& digest) noexcept {
    if (state_->hash == nullptr) return false;
    Digest result{};
    const bool finished = Succeeded(BCryptFinishHash(state_->hash, result.data(), static_cast<ULONG>(result.size()), 0));
    const bool good = state_->good && finished;
    state_->good = finished;
    if (good) digest = result;
    return good;
}

}  // namespace Portability
