#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomValue.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

std::uint64_t DicomValue::Size() const noexcept {
    if (const auto* bytes = std::get_if<std::vector<std::uint8_t>>(&holder_)) return bytes->size();
    if (const auto* region = std::get_if<FileRegion>(&holder_)) return region->length;
    if (const auto* shared = std::get_if<ByteBuffer>(&holder_)) return shared->MemoryBytes().size();
    if (IsDigestOfMarked()) return DigestOfMarkedValue::kSize;
    return 0;
}

std::span<const std::uint8_t> DicomValue::Bytes() const noexcept {
    if (const auto* bytes = std::get_if<std::vector<std::uint8_t>>(&holder_)) return *bytes;
    if (const auto* shared = std::get_if<ByteBuffer>(&holder_)) return shared->MemoryBytes();
    return {};
}

bool DicomValue::Load(std::vector<std::uint8_t>& out) const {
    if (const auto* region = std::get_if<FileRegion>(&holder_)) return LoadRegion(*region, out);
    if (IsDigestOfMarked()) return false;  // not known before it is written
    const auto bytes = Bytes();
    out.assign(bytes.begin(), bytes.end());
    return true;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
