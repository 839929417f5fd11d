#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"

#include <cstring>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

void DicomMemoryDataStream::Close() {
    bytes_.clear();
    position_ = 0;
}

bool DicomMemoryDataStream::SetPosition(std::uint64_t position) {
    if (position > bytes_.size()) return false;
    position_ = position;
    return true;
}

bool DicomMemoryDataStream::Skip(std::uint64_t count) {
    if (count > bytes_.size() - position_) return false;
    position_ += count;
    return true;
}

bool DicomMemoryDataStream::WriteRaw(const void* data, std::uint64_t size) {
    const auto* first = static_cast<const std::uint8_t*>(data);
    bytes_.insert(bytes_.end(), first, first + size);
    position_ = bytes_.size();
    return true;
}

bool DicomMemoryDataStream::ReadRaw(void* data, std::uint64_t size) {
    if (size > bytes_.size() - position_) return false;
    if (size > 0) std::memcpy(data, bytes_.data() + position_, size);
    position_ += size;
    return true;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
