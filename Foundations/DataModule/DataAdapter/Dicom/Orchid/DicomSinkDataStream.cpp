#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomSinkDataStream.h"

#include <algorithm>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileLayout.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/Progress.h"
#include "Portability/Misc/Sha256.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr std::size_t kBufferSize = 64 * 1024;
// A multiple of every unit size, so that swapping never splits a unit.
constexpr std::uint64_t kRegionChunk = 1u << 20;

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
    std::vector<std::uint8_t> chunk(static_cast<std::size_t>(std::min(region.length, kRegionChunk)));
    for (std::uint64_t done = 0; done < region.length;) {
        const std::uint64_t size = std::min<std::uint64_t>(region.length - done, chunk.size());
        if (!region.file->ReadAt(chunk.data(), size, region.offset + done)) {
            LV_TRACE("Module DicomDataStream", "Read failed at %llu in %s", static_cast<unsigned long long>(done),
                     region.file->Path().c_str());
            return false;
        }
        if (swap) SwapUnitsInPlace(chunk.data(), size, region.unitSize);
        if (digest) digest->Update(chunk.data(), static_cast<std::size_t>(size));
        if (!sink_(chunk.data(), static_cast<std::size_t>(size))) return false;
        done += size;
        position_ += size;
        Portability::ReportProgress(size);
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
