#pragma once
// Places the first large value that stays in its source file (a packed payload) on a block
// boundary of the written file, so that file systems sharing blocks between files can clone it
// into and out of the file instead of copying it. The padding goes into the file meta group as
// standard elements: Private Information Creator UID (0002,0100) names who added it and Private
// Information (0002,0102) holds the zero bytes that reach the boundary. The meta group's length
// (0002,0000) is computed by the writer from the elements, so it stays exact.

#include <cstdint>
#include <optional>
#include <string_view>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomEncodingRules.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Values shorter than this are not worth a padding block.
inline constexpr std::uint64_t kAlignedValueMinimum = 64 * 1024;
// The boundary: the block size of common file systems and the page size.
inline constexpr std::uint64_t kValueBlockSize = 4096;
// From this length on the boundary is kLargeValueBlockSize (a multiple of kValueBlockSize): the
// kernel copies between files a third faster when source and destination offsets agree modulo
// the page cache's large folios (measured on ext4), for at most 64 KiB more padding.
inline constexpr std::uint64_t kLargeValueBlockMinimum = 1024 * 1024;
inline constexpr std::uint64_t kLargeValueBlockSize = 64 * 1024;

// The boundary for a value of `length` bytes.
constexpr std::uint64_t ValueBlockSize(std::uint64_t length) {
    return length >= kLargeValueBlockMinimum ? kLargeValueBlockSize : kValueBlockSize;
}

// Offset in the file WriteFileContent would write of the first byte of the first value of at
// least `minimum` bytes that stays in its source file; nullopt when there is none or the data
// set cannot be written.
std::optional<std::uint64_t> LargeValueFileOffset(const DicomDataSet& dataSet, StreamEncoding encoding,
                                                  std::uint64_t minimum = kAlignedValueMinimum);

// Give dataSet (which must hold its meta group) the padding elements that put that value's first
// byte on a multiple of ValueBlockSize(its length), replacing any earlier padding; without such a
// value the padding elements are removed. False, with the padding removed, when it cannot be done.
bool AlignLargeValue(DicomDataSet& dataSet, StreamEncoding encoding, std::string_view creatorUid,
                     std::uint64_t minimum = kAlignedValueMinimum);

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
