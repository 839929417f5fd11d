#pragma once
// A DicomDataStream that only writes, handing its bytes in order to a sink: a Part 10 file made
// for a consumer that is not a file of its own (standard output, for one). Nothing is seekable,
// so nothing is written twice; values left in their source file are passed on in chunks.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataStream.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Takes the next size bytes of the stream; false stops the writing.
using ByteSink = std::function<bool(const void* data, std::size_t size)>;

class DicomSinkDataStream : public DicomDataStream {
public:
    explicit DicomSinkDataStream(ByteSink sink) : sink_(std::move(sink)) {}

    // Hand the bytes still buffered to the sink; false when it refuses them.
    bool Flush();

    void Close() override;
    bool InflateRemainder() override { return false; }
    bool SetPosition(std::uint64_t) override { return false; }
    bool Skip(std::uint64_t) override { return false; }
    bool WriteRaw(const void* data, std::uint64_t size) override;
    bool ReadRaw(void*, std::uint64_t) override { return false; }
    bool AtEnd() const override { return true; }
    std::uint64_t Position() const override { return position_; }
    std::uint64_t Size() const override { return position_; }
    bool WriteRegion(const FileRegion& region, Portability::Sha256* digest) override;

private:
    ByteSink sink_;
    std::vector<std::uint8_t> buffer_;
    std::uint64_t position_ = 0;
};

// Write dataSet as a whole Part 10 file (preamble, meta group, data set in encoding) into sink.
bool WriteDicomStream(const DicomDataSet& dataSet, StreamEncoding encoding, const ByteSink& sink);

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
