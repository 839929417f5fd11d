#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"

#include <algorithm>
#include <optional>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Inflate.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/Progress.h"
#include "Portability/Misc/Sha256.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr std::uint64_t kCopyChunk = 1u << 20;

}  // namespace

void SwapUnitsInPlace(std::uint8_t* data, std::uint64_t size, unsigned unitSize) noexcept {
    if (unitSize < 2) return;
    for (std::uint64_t i = 0; i + unitSize <= size; i += unitSize) std::reverse(data + i, data + i + unitSize);
}

bool LoadRegion(const FileRegion& region, std::vector<std::uint8_t>& out) {
    if (!region.IsInsideFile()) return false;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(region.length));
    if (region.deflatedFrom) {
        InflateReader reader(region.file, *region.deflatedFrom);
        if (!reader.Discard(region.offset) || !reader.ReadExactly(bytes.data(), bytes.size())) return false;
    } else if (!region.file->ReadAt(bytes.data(), region.length, region.offset)) {
        return false;
    }
    if (region.bigEndian) SwapUnitsInPlace(bytes.data(), region.length, region.unitSize);
    out = std::move(bytes);
    return true;
}

bool ReadRegionInChunks(const FileRegion& region, const RegionChunkConsumer& consume) {
    if (!region.IsInsideFile()) return false;
    std::optional<InflateReader> inflater;
    if (region.deflatedFrom) {
        inflater.emplace(region.file, *region.deflatedFrom);
        if (!inflater->Discard(region.offset)) return false;
    }
    std::vector<std::uint8_t> chunk(static_cast<std::size_t>(std::min(region.length, kCopyChunk)));
    for (std::uint64_t done = 0; done < region.length;) {
        const std::uint64_t size = std::min<std::uint64_t>(region.length - done, chunk.size());
        const bool read = inflater ? inflater->ReadExactly(chunk.data(), static_cast<std::size_t>(size))
                                   : region.file->ReadAt(chunk.data(), size, region.offset + done);
        if (!read || !consume(chunk.data(), static_cast<std::size_t>(size))) return false;
        done += size;
    }
    return true;
}

bool CopyRegionToFile(const FileRegion& region, Portability::AtomicFileWriter& out, bool swapUnits,
                      Portability::Sha256* digest) {
    if (!region.IsInsideFile()) return false;
    if (!swapUnits && !region.deflatedFrom) {
        if (!out.CopyFrom(region.file->Descriptor(), region.offset, region.length, digest)) return false;
        // A source written to while it was copied gives a mixture of old and new bytes.
        if (region.file->Unchanged()) return true;
        LV_TRACE("Module DicomDataStream", "%s changed while it was copied", region.file->Path().c_str());
        return false;
    }
    return ReadRegionInChunks(region, [&](std::uint8_t* bytes, std::size_t size) {
        if (swapUnits) SwapUnitsInPlace(bytes, size, region.unitSize);
        if (digest) digest->Update(bytes, size);
        if (!out.Write(bytes, size)) {
            LV_TRACE("Module DicomDataStream", "Write failed while copying %llu bytes from %s",
                     static_cast<unsigned long long>(region.length), region.file->Path().c_str());
            return false;
        }
        Portability::ReportProgress(size);
        return true;
    });
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
