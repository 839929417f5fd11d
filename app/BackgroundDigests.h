#pragma once
// SHA-256 digests of byte buffers taken on a thread of their own while the caller copies them, so
// that a second digest of the same bytes costs no second pass of time on a machine of two cores.

#include "Foundations/DataModule/Values/ByteBuffer.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace Dicapsule {

class BackgroundDigests {
public:
    // Start hashing each buffer, in order.
    explicit BackgroundDigests(std::vector<Lumivale::DataModule::ByteBuffer> buffers);
    // Stops hashing (when Wait was not called) and waits for the thread.
    ~BackgroundDigests();
    BackgroundDigests(const BackgroundDigests&) = delete;
    BackgroundDigests& operator=(const BackgroundDigests&) = delete;

    // Wait for the end; false when a buffer could not be read.
    bool Wait();
    // After Wait: each buffer's digest as lower-case hex.
    const std::vector<std::string>& Digests() const { return digests_; }

private:
    void Run();

    std::vector<Lumivale::DataModule::ByteBuffer> buffers_;
    std::vector<std::string> digests_;
    std::atomic<bool> stop_{false};
    bool read_ = true;
    std::thread thread_;
};

}  // namespace Dicapsule
