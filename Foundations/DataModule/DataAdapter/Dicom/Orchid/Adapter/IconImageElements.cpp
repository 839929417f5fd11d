#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/IconImageElements.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Portability/Misc/DebugTrace.h"

#include <cstring>

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

constexpr const char* kModule = "Module DicomFileDataAdapter";

using dcm::Tag;
namespace Tags = dcm::Tags;
using VR = dcm::ValueRepresentation;

// The attributes every icon must have before it can be written.
bool IsComplete(const IconImageRecord& icon) {
    return icon.samples_per_pixel && icon.photometric_interpretation && icon.rows && icon.columns &&
           icon.bits_allocated && icon.bits_stored && icon.high_bit && icon.pixel_representation &&
           *icon.bits_allocated % 8 == 0 && *icon.samples_per_pixel > 0;
}

// The Pixel Data value: a single buffer already serialised with packed rows is shared as it is (it may
// hold the pad byte of an odd length); other layouts have their rows, or their planes, interleaved
// into a new buffer.
bool SerialisePixels(const IconImageRecord& icon, dcm::DicomValue& out) {
    const std::uint64_t rows = *icon.rows;
    const std::uint64_t columns = *icon.columns;
    const std::uint64_t samples = *icon.samples_per_pixel;
    const std::uint64_t sampleBytes = *icon.bits_allocated / 8;
    const std::uint64_t rowBytes = columns * sampleBytes * samples;
    const std::uint64_t total = rows * rowBytes;
    const std::uint64_t stride = icon.pixel_description.bytes_per_line;
    if (icon.pixel_data.size() == 1 && icon.pixel_data.begin()->first == 0) {
        // One buffer: already interleaved, rows of `stride` bytes (or packed rows when unknown).
        const ByteBuffer& buffer = icon.pixel_data.begin()->second;
        const auto bytes = buffer.MemoryBytes();
        const std::uint64_t lineBytes = stride >= rowBytes ? stride : rowBytes;
        if (lineBytes == rowBytes && (bytes.size() == total || bytes.size() == total + total % 2)) {
            out = dcm::DicomValue(buffer);
            return true;
        }
        if (rows > 0 && bytes.size() < (rows - 1) * lineBytes + rowBytes) return false;
        std::vector<std::uint8_t> packed;
        packed.reserve(static_cast<std::size_t>(total));
        for (std::uint64_t r = 0; r < rows; ++r)
            packed.insert(packed.end(), bytes.begin() + r * lineBytes, bytes.begin() + r * lineBytes + rowBytes);
        out = dcm::DicomValue(std::move(packed));
        return true;
    }
    if (icon.pixel_data.size() != samples || stride < columns * sampleBytes) return false;
    std::vector<std::span<const std::uint8_t>> planes;
    for (std::uint64_t p = 0; p < samples; ++p) {
        const auto found = icon.pixel_data.find(static_cast<unsigned>(p));
        if (found == icon.pixel_data.end()) return false;
        planes.push_back(found->second.MemoryBytes());
        if (rows > 0 && planes.back().size() < (rows - 1) * stride + columns * sampleBytes) return false;
    }
    std::vector<std::uint8_t> interleaved(static_cast<std::size_t>(total));
    std::uint8_t* to = interleaved.data();
    for (std::uint64_t r = 0; r < rows; ++r) {
        for (std::uint64_t c = 0; c < columns; ++c) {
            for (const auto& plane : planes) {
                std::memcpy(to, plane.data() + r * stride + c * sampleBytes, static_cast<std::size_t>(sampleBytes));
                to += sampleBytes;
            }
        }
    }
    out = dcm::DicomValue(std::move(interleaved));
    return true;
}

void InsertShort(dcm::DicomDataSet& dataSet, Tag tag, std::uint16_t value) {
    dataSet.Insert(MakeUnsignedShortElement(tag, value));
}

bool InsertPixelAttributes(dcm::DicomDataSet& dataSet, const IconImageRecord& icon, dcm::DicomValue pixels) {
    InsertShort(dataSet, Tags::SamplesPerPixel, *icon.samples_per_pixel);
    const std::string photometric(
        CodedStringTraits<PhotometricInterpretation::Enum>::Term(*icon.photometric_interpretation).value_or("MONOCHROME2"));
    dataSet.Insert(MakeTextElement(Tags::PhotometricInterpretation, VR::CS, photometric, MultiCharSetDataType{}));
    InsertShort(dataSet, Tags::Rows, *icon.rows);
    InsertShort(dataSet, Tags::Columns, *icon.columns);
    InsertShort(dataSet, Tags::BitsAllocated, *icon.bits_allocated);
    InsertShort(dataSet, Tags::BitsStored, *icon.bits_stored);
    InsertShort(dataSet, Tags::HighBit, *icon.high_bit);
    InsertShort(dataSet, Tags::PixelRepresentation, *icon.pixel_representation);
    if (*icon.samples_per_pixel > 1) InsertShort(dataSet, Tags::PlanarConfiguration, icon.planar_configuration.value_or(0));
    // 8-bit samples are bytes (OB); wider samples are 16-bit words (OW), little endian.
    auto pixelData = std::make_unique<dcm::DicomDataSetFrameContainerElement>(*icon.bits_allocated > 8 ? VR::OW : VR::OB, false);
    pixelData->valueLength = static_cast<std::uint32_t>(pixels.Size());
    pixelData->AppendFrame(std::move(pixels));
    return dataSet.Insert(std::move(pixelData));
}

bool FetchShort(const dcm::DicomDataSet& item, Tag tag, std::optional<std::uint16_t>& out) {
    const auto* element = item.Find(tag);
    std::uint16_t value = 0;
    if (!element || !FetchUnsignedShort(*element, value)) return false;
    out = value;
    return true;
}

}  // namespace

bool InsertIconImage(dcm::DicomDataSet& dataSet, const IconImageRecord& icon, bool alsoAsImage) {
    if (!icon.is_set) return true;
    dcm::DicomValue pixels;
    if (!IsComplete(icon) || !SerialisePixels(icon, pixels)) {
        LV_TRACE(kModule, "%s", "The icon image record is incomplete or its pixel buffers are short");
        return false;
    }
    auto sequence = std::make_unique<dcm::DicomDataSetSequenceElement>(dcm::Tags::IconImageSequence);
    if (alsoAsImage && !InsertPixelAttributes(dataSet, icon, pixels)) return false;
    if (!InsertPixelAttributes(sequence->AppendItem(), icon, std::move(pixels))) return false;
    return dataSet.Insert(std::move(sequence));
}

bool ReadIconImage(const dcm::DicomDataSet& dataSet, IconImageRecord& icon) {
    const auto* sequence = dynamic_cast<const dcm::DicomDataSetSequenceElement*>(dataSet.Find(Tags::IconImageSequence));
    if (!sequence || sequence->ItemCount() == 0 || !sequence->Items().front()) return false;
    const dcm::DicomDataSet& item = *sequence->Items().front();
    IconImageRecord read;
    const bool complete = FetchShort(item, Tags::SamplesPerPixel, read.samples_per_pixel) &&
                          FetchShort(item, Tags::Rows, read.rows) && FetchShort(item, Tags::Columns, read.columns) &&
                          FetchShort(item, Tags::BitsAllocated, read.bits_allocated) &&
                          FetchShort(item, Tags::BitsStored, read.bits_stored) &&
                          FetchShort(item, Tags::HighBit, read.high_bit) &&
                          FetchShort(item, Tags::PixelRepresentation, read.pixel_representation);
    FetchShort(item, Tags::PlanarConfiguration, read.planar_configuration);
    std::string photometric;
    const auto* photometricElement = item.Find(Tags::PhotometricInterpretation);
    const auto* pixelData = item.Find(dcm::Tags::PixelData);
    // Pixel data inside an item is read as a plain element; one built in memory is a frame container.
    const auto* frames = dynamic_cast<const dcm::DicomDataSetFrameContainerElement*>(pixelData);
    std::vector<std::uint8_t> pixels;
    if (!complete || !photometricElement || !FetchElementText(*photometricElement, MultiCharSetDataType{}, photometric) ||
        !pixelData || !(frames ? frames->NativeValue() : pixelData->value).Load(pixels)) {
        return false;
    }
    read.photometric_interpretation = CodedStringTraits<PhotometricInterpretation::Enum>::FromTerm(photometric);
    auto& description = read.pixel_description;
    description.rows = *read.rows;
    description.columns = *read.columns;
    description.bits_allocated = *read.bits_allocated;
    description.bits_stored = *read.bits_stored;
    description.planes = *read.samples_per_pixel;
    description.pixel_representation = *read.pixel_representation;
    description.bytes_per_line = static_cast<std::uint32_t>(std::uint64_t{*read.columns} * (*read.bits_allocated / 8u) *
                                                            *read.samples_per_pixel);
    read.pixel_data[0] = ByteBuffer::Adopt(std::move(pixels));
    read.is_set = true;
    icon = std::move(read);
    return true;
}

}  // namespace Lumivale::DataModule::DataAdapterModule
