#include "app/BackgroundDigests.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"
#include "Portability/Misc/Sha256.h"

namespace Dicapsule {

namespace dcm = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

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
        Portability::Sha256 digest;
        if (const Lumivale::DataModule::FileRegion* region = buffer.Region()) {
            const auto hash = [this, &digest](std::uint8_t* bytes, std::size_t size) {
                digest.Update(bytes, size);
                return !stop_;
            };
            if (!dcm::ReadRegionInChunks(dcm::FileRegion{*region}, hash)) {
                read_ = false;
                return;
            }
        } else {
            const auto bytes = buffer.MemoryBytes();
            digest.Update(bytes.data(), bytes.size());
        }
        Portability::Sha256::Digest result{};
        if (!digest.Finish(result)) {
            read_ = false;
            return;
        }
        digests_.push_back(Portability::ToHex(result));
    }
}

}  // namespace Dicapsule
