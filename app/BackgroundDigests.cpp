#include "app/BackgroundDigests.h"

#include "app/Payload.h"

#include <utility>

namespace Dicapsule {

BackgroundDigests::BackgroundDigests(std::vector<Lumivale::DataModule::ByteBuffer> buffers)
    : buffers_(std::move(buffers)), thread_([this] { Run(); }) {}

BackgroundDigests::~BackgroundDigests() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
}

bool BackgroundDigests::Wait() {
    if (thread_.joinable()) thread_.join();
    return read_;
}

void BackgroundDigests::Run() {
    for (const Lumivale::DataModule::ByteBuffer& buffer : buffers_) {
        std::string hex;
        if (!ContentSha256(buffer, hex, &stop_)) {
            read_ = false;
            return;
        }
        digests_.push_back(std::move(hex));
    }
}

}  // namespace Dicapsule
