#pragma once
// Values that stay in their source file: a region of an open file (the data model's FileRegion)
// with the byte order of its units, and the helpers that load a region or copy it into another file.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "Foundations/DataModule/Values/ByteBuffer.h"
#include "Portability/Misc/AtomicFileWriter.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// A value left in its source file.
struct FileRegion : DataModule::FileRegion {
    bool bigEndian = false;  // the bytes are in big-endian unit order
    unsigned unitSize = 1;   // unit size of the VR, for byte swapping
};

// Read the whole region into out (replacing its content), in little-endian unit order. A region of
// an inflated data set is inflated again from the start of its deflate data.
bool LoadRegion(const FileRegion& region, std::vector<std::uint8_t>& out);

// Append the region's bytes to out, swapping units when swapUnits is set: copied file to file
// when no swap is needed, through a chunk buffer otherwise (and for a region of an inflated data
// set, inflated again straight into out). With a digest, the bytes as they went to out are fed to
// it. False too when the region's file changed while it was copied.
bool CopyRegionToFile(const FileRegion& region, Portability::AtomicFileWriter& out, bool swapUnits,
                      Portability::Sha256* digest = nullptr);

// Hand the region's bytes, as stored (no swapping), to consume in chunks of at most 1 MiB (a
// multiple of every unit size; consume may change a chunk in place), in order; a region of an
// inflated data set is inflated again. False when a read fails or consume refuses a chunk.
using RegionChunkConsumer = std::function<bool(std::uint8_t* data, std::size_t size)>;
bool ReadRegionInChunks(const FileRegion& region, const RegionChunkConsumer& consume);

// Reverse the bytes of each unit of unitSize bytes in data (size a multiple of the unit).
void SwapUnitsInPlace(std::uint8_t* data, std::uint64_t size, unsigned unitSize) noexcept;

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
