#pragma once
// Thumbnail icon insertion: loading the thumbnail file and turning the image into the instance
// row's icon image record (the attributes and pixel data of the Icon Image Sequence item).

#include "Foundations/DataModule/Rows/IconImageRecord.h"
#include "Foundations/LVBuffer2DTools/LVBuffer2D.h"
#include "Foundations/LVCodec/LVImage.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Lumivale::Imaging {

// Load the thumbnail at path (UTF-8) into image, the codec chosen by extension only (frame 0, no flags).
bool LoadThumbnail(const std::string& path, LVImage& image);

// Divisor of the reducing builder for a width x height image: about 10000 pixels up to q = 10000,
// exactly 10 up to q = 50000, about 50000 pixels above (q = (height / 10) * (width / 10)); at least 1.
unsigned IconReductionDivisor(std::uint64_t width, std::uint64_t height);

// Serialise the planes of image as a Pixel Data value: rows without padding, samples of all planes
// interleaved pixel by pixel (planar configuration 0), little-endian, padded to an even length.
// With `consumed`, the owning buffer image looks into, rows already serialised are given back to
// the system as the value grows, so the two never both hold the whole picture.
bool SerializePixelData(const LVBuffer2D& image, std::vector<std::uint8_t>& out, LVBuffer2D* consumed = nullptr);

// Fill record from source (alpha dropped). With record.reduce the image is first shrunk by
// IconReductionDivisor and mapped onto 8 bits. With copyPixels, pixel_data holds one entry, key 0:
// the serialised Pixel Data value (pixel_description.bytes_per_line then describes a serialised row);
// without it, one entry per plane borrows the image's plane memory, which must outlive the record.
bool SetIconImage(DataModule::IconImageRecord& record, const LVImageMemory& source, bool copyPixels);
// As SetIconImage with copyPixels, for a source that is not needed afterwards: its memory is given
// back row by row while the pixels are copied, which keeps the peak near one copy of the picture.
// The source's samples are lost either way.
bool SetIconImage(DataModule::IconImageRecord& record, LVImageMemory&& source);

}  // namespace Lumivale::Imaging
