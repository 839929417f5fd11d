#pragma once
// The icon image of an instance: the attributes of the Icon Image Sequence item and its pixels.

#include "Foundations/DataModule/Enumerations/PhotometricInterpretation.h"
#include "Foundations/DataModule/Values/ByteBuffer.h"

#include <cstdint>
#include <map>
#include <optional>

namespace Lumivale::DataModule {

// How the icon's pixels are laid out in its plane buffers.
struct ImagePixelDescription {
    std::uint32_t rows = 0;
    std::uint32_t columns = 0;
    std::uint32_t bytes_per_line = 0;
    std::uint32_t bits_allocated = 0;
    std::uint32_t bits_stored = 0;
    std::uint32_t planes = 0;
    std::uint32_t pixel_representation = 0;  // 0 unsigned, 1 signed
};

// The icon image record of an instance row. Each attribute is optional (absent until set).
struct IconImageRecord {
    std::optional<std::uint16_t> samples_per_pixel;                             // (0028,0002)
    std::optional<PhotometricInterpretation::Enum> photometric_interpretation;  // (0028,0004)
    std::optional<std::uint16_t> rows;                                          // (0028,0010)
    std::optional<std::uint16_t> columns;                                       // (0028,0011)
    std::optional<std::uint16_t> bits_allocated;                                // (0028,0100)
    std::optional<std::uint16_t> bits_stored;                                   // (0028,0101)
    std::optional<std::uint16_t> high_bit;                                      // (0028,0102)
    std::optional<std::uint16_t> pixel_representation;                          // (0028,0103), 0 unsigned
    std::optional<std::uint16_t> planar_configuration;                          // (0028,0006)
    // Whether the icon builder shrinks and re-quantises the image before storing it.
    bool reduce = true;
    // Layout of the pixel data below.
    ImagePixelDescription pixel_description;
    // Pixel data (7FE0,0010): one buffer per plane, from plane 0.
    std::map<unsigned int, ByteBuffer> pixel_data;
    // True once the icon builder has filled the record; only then is it written.
    bool is_set = false;

    // Back to the state of a new record (reduce switch on, nothing set).
    void Clear() { *this = IconImageRecord{}; }
};

}  // namespace Lumivale::DataModule
