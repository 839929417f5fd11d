#pragma once
// Recognising a source file by its first bytes: a table of byte signatures tried in order, the
// first match giving the kind of file.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "Portability/Misc/OpenFile.h"

namespace Lumivale::DataModule {

// The kinds of file the signature table tells apart (the numbers are the table's kind codes).
struct SourceKind {
    enum Enum : int {
        Unrecognised = -1,    // no signature matched
        Dicom = 0,            // a DICOM Part 10 file or a bare DICOM data set
        MediaDirectory = 3,   // a DICOM media directory (DICOMDIR)
        JpegFamily = 13,      // JPEG, JPEG-LS and JPEG 2000 streams and files
        Tiff = 14,            // TIFF, either byte order
        OwnXml = 15,          // the tool's own XML documents ("<orchid type=")
    };
};

// One row of the signature table.
struct SourceSignature {
    std::size_t offset;         // where the bytes start in the file
    std::size_t length;         // bytes the row covers (a prefix pattern may be shorter)
    std::string_view pattern;   // the bytes to compare, from offset
    std::string_view mask;      // per pattern byte: 'x' compare, '?' any byte; empty compares all
    SourceKind::Enum kind;      // the kind a match gives
};

// Bytes a caller must read to test every row (the largest offset + length): 256.
std::size_t SourceSignatureReadLength() noexcept;

// The kind of the first row that matches the head of a file (a shorter head matches only rows that
// fit in it); Unrecognised when none does.
SourceKind::Enum DetectSourceKind(std::span<const std::uint8_t> head) noexcept;

// Read up to SourceSignatureReadLength() bytes from the start of a file; false when they cannot be read.
bool ReadSourceHead(const Portability::OpenFile& file, std::vector<std::uint8_t>& head);

}  // namespace Lumivale::DataModule
