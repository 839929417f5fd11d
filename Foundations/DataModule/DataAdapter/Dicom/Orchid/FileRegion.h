#pragma once
// Values that stay in their source file: a region of an open file (the data model's FileRegion)
// with the byte order of its units, and the helpers that load a region or copy it into another file.

#include <cstdint>
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
// set, inflated again straight into out).
bool CopyRegionToFile(const FileRegion& region, Portability::AtomicFileWriter& out, bool swapUnits);

// Reverse the bytes of each unit of unitSize bytes in data (size a multiple of the unit).
void SwapUnitsInPlace(std::uint8_t* data, std::uint64_t size, unsigned unitSize) noexcept;

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
