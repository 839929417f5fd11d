#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomSinkDataStream.h"

#include <algorithm>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileLayout.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/Progress.h"
#include "Portability/Misc/Sha256.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr std::size_t kBufferSize = 64 * 1024;

}  // namespace

bool DicomSinkDataStream::Flush() {
    if (buffer_.empty()) return true;
    const bool taken = sink_(buffer_.data(), buffer_.size());
    buffer_.clear();
    return taken;
}

void DicomSinkDataStream::Close() { buffer_.clear(); }

bool DicomSinkDataStream::WriteRaw(const void* data, std::uint64_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    if (buffer_.size() + size > kBufferSize && !Flush()) return false;
    if (size >= kBufferSize) {
        if (!sink_(bytes, static_cast<std::size_t>(size))) return false;
    } else {
        buffer_.insert(buffer_.end(), bytes, bytes + size);
    }
    position_ += size;
    return true;
}

bool DicomSinkDataStream::WriteRegion(const FileRegion& region, Portability::Sha256* digest) {
    if (!region.IsInsideFile() || !Flush()) return false;
    const bool swap = region.bigEndian != (Encoding() == StreamEncoding::ExplicitBigEndian) && region.unitSize > 1;
    const bool copied = ReadRegionInChunks(region, [&](std::uint8_t* bytes, std::size_t size) {
        if (swap) SwapUnitsInPlace(bytes, size, region.unitSize);
        if (digest) digest->Update(bytes, size);
        if (!sink_(bytes, size)) return false;
        position_ += size;
        Portability::ReportProgress(size);
        return true;
    });
    if (!copied) {
        LV_TRACE("Module DicomDataStream", "Could not pass on %llu bytes of %s", static_cast<unsigned long long>(region.length),
                 region.file->Path().c_str());
        return false;
    }
    // A source written to while it was copied gives a mixture of old and new bytes.
    if (region.file->Unchanged()) return true;
    LV_TRACE("Module DicomDataStream", "%s changed while it was copied", region.file->Path().c_str());
    return false;
}

bool WriteDicomStream(const DicomDataSet& dataSet, StreamEncoding encoding, const ByteSink& sink) {
    DicomSinkDataStream stream(sink);
    stream.SetEncoding(encoding);
    return WriteFileContent(stream, dataSet) && stream.Flush();
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
