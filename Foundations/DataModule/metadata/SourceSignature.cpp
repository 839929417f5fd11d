#include "Foundations/DataModule/metadata/SourceSignature.h"

#include <algorithm>

namespace Lumivale::DataModule {

namespace {

using namespace std::string_view_literals;

// "DICM", then the start of the file meta group of a media directory in explicit VR little endian:
// (0002,0000) UL length 4 with any group length, (0002,0001) OB length 2 holding 00 01, and
// (0002,0002) UI length 20 holding the Media Storage Directory Storage class UID.
constexpr std::string_view kMediaDirectoryStart =
    "DICM"
    "\x02\x00\x00\x00" "UL" "\x04\x00" "\x00\x00\x00\x00"
    "\x02\x00\x01\x00" "OB" "\x00\x00" "\x02\x00\x00\x00" "\x00\x01"
    "\x02\x00\x02\x00" "UI" "\x14\x00" "1.2.840.10008.1.3.10"sv;
// The group length value (bytes 12 to 15) differs from file to file.
constexpr std::string_view kMediaDirectoryMask =
    "xxxx" "xxxxxxxx" "????" "xxxxxxxxxxxxxx" "xxxxxxxx" "xxxxxxxxxxxxxxxxxxxx";
static_assert(kMediaDirectoryStart.size() == 58 && kMediaDirectoryMask.size() == 58);

constexpr SourceSignature kSignatures[] = {
    {128, 58, kMediaDirectoryStart, kMediaDirectoryMask, SourceKind::MediaDirectory},
    {128, 4, "DICM"sv, {}, SourceKind::Dicom},
    {0, 4, "\xFF\xD8\xFF\xF7"sv, {}, SourceKind::JpegFamily},
    {0, 2, "\xFF\xD8"sv, {}, SourceKind::JpegFamily},
    {0, 4, "\xFF\x4F\xFF\x51"sv, {}, SourceKind::JpegFamily},
    {0, 8, "\x00\x00\x00\x0C\x6A\x50\x20\x20"sv, {}, SourceKind::JpegFamily},
    {0, 4, "II*\x00"sv, {}, SourceKind::Tiff},
    {0, 4, "MM\x00*"sv, {}, SourceKind::Tiff},
    // Bare data sets: the first tag of group 0008 or 0002, in either byte order.
    {0, 4, "\x00\x08\x00\x00"sv, {}, SourceKind::Dicom},
    {0, 4, "\x08\x00\x00\x00"sv, {}, SourceKind::Dicom},
    {0, 4, "\x00\x08\x00\x01"sv, {}, SourceKind::Dicom},
    {0, 4, "\x08\x00\x01\x00"sv, {}, SourceKind::Dicom},
    {0, 4, "\x00\x02\x00\x00"sv, {}, SourceKind::Dicom},
    {0, 4, "\x02\x00\x00\x00"sv, {}, SourceKind::Dicom},
    {0, 4, "\x08\x00\x08\x00"sv, {}, SourceKind::Dicom},
    {0, 4, "\x08\x00\x05\x00"sv, {}, SourceKind::Dicom},
    // The row covers the first 256 bytes but only its start is fixed.
    {0, 256, "<orchid type=\""sv, {}, SourceKind::OwnXml},
};

constexpr std::size_t ComputeReadLength() {
    std::size_t longest = 0;
    for (const SourceSignature& row : kSignatures) longest = std::max(longest, row.offset + row.length);
    return longest;
}

bool Matches(const SourceSignature& row, std::span<const std::uint8_t> head) {
    if (head.size() < row.offset || head.size() - row.offset < row.pattern.size()) return false;
    for (std::size_t i = 0; i < row.pattern.size(); ++i) {
        if (!row.mask.empty() && row.mask[i] == '?') continue;
        if (head[row.offset + i] != static_cast<std::uint8_t>(row.pattern[i])) return false;
    }
    return true;
}

}  // namespace


std::size_t SourceSignatureReadLength() noexcept { return ComputeReadLength(); }

SourceKind::Enum DetectSourceKind(std::span<const std::uint8_t> head) noexcept {
    for (const SourceSignature& row : kSignatures) {
        if (Matches(row, head)) return row.kind;
    }
    return SourceKind::Unrecognised;
}

bool ReadSourceHead(const Portability::OpenFile& file, std::vector<std::uint8_t>& head) {
    head.assign(std::min<std::uint64_t>(SourceSignatureReadLength(), file.Size()), 0);
    return file.ReadAt(head.data(), head.size(), 0);
}

}  // namespace Lumivale::DataModule
