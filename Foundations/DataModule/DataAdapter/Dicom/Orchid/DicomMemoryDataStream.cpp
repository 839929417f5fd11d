#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"

#include <algorithm>
#include <cstring>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Inflate.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

// A data set in memory is inflated in memory, up to the bytes a read may hold by default.
constexpr std::size_t kMaxInflatedInMemory = std::size_t{64} << 20;

}  // namespace

bool DicomMemoryDataStream::InflateRemainder() {
    std::vector<std::uint8_t> inflated;
    std::uint64_t at = position_;
    const auto input = [&](std::uint8_t* data, std::size_t size) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, view_.size() - at));
        std::memcpy(data, view_.data() + at, count);
        at += count;
        return count;
    };
    const auto output = [&](const std::uint8_t* data, std::size_t size) {
        if (size > kMaxInflatedInMemory - inflated.size()) {
            LV_TRACE("Module DicomDataStream", "Deflated data set inflates beyond %llu bytes in memory",
                     static_cast<unsigned long long>(kMaxInflatedInMemory));
            return false;
        }
        inflated.insert(inflated.end(), data, data + size);
        return true;
    };
    if (!InflateRawDeflate(input, output)) return false;
    bytes_ = std::move(inflated);
    view_ = bytes_;
    position_ = 0;
    return true;
}

void DicomMemoryDataStream::Close() {
    bytes_.clear();
    view_ = {};
    position_ = 0;
}

bool DicomMemoryDataStream::SetPosition(std::uint64_t position) {
    if (position > view_.size()) return false;
    position_ = position;
    return true;
}

bool DicomMemoryDataStream::Skip(std::uint64_t count) {
    if (count > view_.size() - position_) return false;
    position_ += count;
    return true;
}

bool DicomMemoryDataStream::WriteRaw(const void* data, std::uint64_t size) {
    const auto* first = static_cast<const std::uint8_t*>(data);
    bytes_.insert(bytes_.end(), first, first + size);
    view_ = bytes_;
    position_ = bytes_.size();
    return true;
}

bool DicomMemoryDataStream::ReadRaw(void* data, std::uint64_t size) {
    if (size > view_.size() - position_) return false;
    if (size > 0) std::memcpy(data, view_.data() + position_, size);
    position_ += size;
    return true;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
