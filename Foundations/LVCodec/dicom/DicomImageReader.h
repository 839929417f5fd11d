#pragma once
// DICOM Part 10 images: the image pixel attributes of the main data set and of the first Icon Image
// Sequence item, read through the DICOM codec's stream, and the decoding of their pixels.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Lumivale::Imaging {

// Image pixel attributes of one data set level (0 when absent).
struct DicomPixelAttributes {
    std::uint64_t rows = 0;
    std::uint64_t columns = 0;
    std::uint64_t bits_allocated = 0;
    std::uint64_t bits_stored = 0;
    std::uint64_t samples_per_pixel = 0;
    std::uint64_t pixel_representation = 0;
    std::uint64_t planar_configuration = 0;
    std::uint64_t number_of_frames = 1;
    std::string photometric_interpretation;
    bool has_pixel_data = false;
    bool encapsulated = false;                            // pixel data held as fragments
    std::span<const std::uint8_t> pixel_data;              // native pixel data
    std::vector<std::span<const std::uint8_t>> fragments; // encapsulated items, offset table first
};

// What the reader found in a file.
struct DicomImageFile {
    std::string transfer_syntax;  // (0002,0010), without padding
    DicomPixelAttributes main;   // top-level attributes
    DicomPixelAttributes icon;   // first item of (0088,0200)
    bool has_icon = false;        // the sequence and an item were present
};

// Read a Part 10 file (128-byte preamble, "DICM", explicit little-endian meta group, then implicit or
// explicit little-endian data set) with the codec's stream, in place. The spans in file point into bytes.
bool ReadDicomImageFile(std::span<const std::uint8_t> bytes, DicomImageFile& file);
// Decode frame `frame` of attributes (native, or encapsulated JPEG, JPEG-LS or JPEG 2000) into image;
// `source` names the file in trace lines.
bool DecodeDicomPixels(const DicomPixelAttributes& attributes, const std::string& transferSyntax, unsigned frame,
                       const std::string& source, LVImageMemory& image);
// Read and decode: the icon when thumbnail is true, else frame `frame` of the main image.
bool DecodeDicom(std::span<const std::uint8_t> bytes, bool thumbnail, unsigned frame, const std::string& source,
                 LVImageMemory& image);

}  // namespace Lumivale::Imaging
