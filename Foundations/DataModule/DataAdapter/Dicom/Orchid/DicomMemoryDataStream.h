#pragma once
// A DicomDataStream over bytes in memory: reads a copy of given bytes, or collects written bytes.

#include <cstdint>
#include <span>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataStream.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Asks a memory stream to read bytes where they are, without a copy.
struct InPlaceBytes {};
inline constexpr InPlaceBytes kInPlaceBytes{};

// Memory source or sink. Values skipped while reading (pixel and overlay data) stay absent,
// since there is no file for them to stay in.
class DicomMemoryDataStream : public DicomDataStream {
public:
    // An empty stream to write into.
    DicomMemoryDataStream() = default;
    // A stream that reads a copy of bytes.
    explicit DicomMemoryDataStream(std::span<const std::uint8_t> bytes) : bytes_(bytes.begin(), bytes.end()), view_(bytes_) {}
    // A stream that reads bytes in place: they must outlive the stream, and a read value's
    // valuePosition is its offset in them (until a deflated remainder is inflated into a copy).
    DicomMemoryDataStream(InPlaceBytes, std::span<const std::uint8_t> bytes) : view_(bytes) {}

    // The bytes written.
    const std::vector<std::uint8_t>& Bytes() const noexcept { return bytes_; }

    void Close() override;
    bool InflateRemainder() override;
    bool SetPosition(std::uint64_t position) override;
    bool Skip(std::uint64_t count) override;
    bool WriteRaw(const void* data, std::uint64_t size) override;
    bool ReadRaw(void* data, std::uint64_t size) override;
    bool AtEnd() const override { return position_ >= view_.size(); }
    std::uint64_t Position() const override { return position_; }
    std::uint64_t Size() const override { return view_.size(); }

private:
    std::vector<std::uint8_t> bytes_;       // owned bytes: written, copied or inflated
    std::span<const std::uint8_t> view_;  // the bytes read: bytes_, or bytes read in place
    std::uint64_t position_ = 0;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
