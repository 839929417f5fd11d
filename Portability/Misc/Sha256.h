#pragma once
// SHA-256 of a byte stream fed in pieces: OpenSSL's libcrypto on Linux, CNG on Windows.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Portability {

class Sha256 {
public:
    using Digest = std::array<std::uint8_t, 32>;

    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    // Adds bytes to the hashed stream.
    void Update(const void* data, std::size_t size) noexcept;
    // Writes the digest of everything added so far into `digest` and starts a new stream. False
    // when the platform's hash failed at any step (then `digest` is untouched).
    bool Finish(Digest& digest) noexcept;

private:
    struct State;
    std::unique_ptr<State> state_;
};

// The digest as 64 lower-case hexadecimal characters.
std::string ToHex(const Sha256::Digest& digest);

}  // namespace Portability
