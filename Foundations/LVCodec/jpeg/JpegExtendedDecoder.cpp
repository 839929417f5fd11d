#include "Foundations/LVCodec/jpeg/JpegExtendedDecoder.h"

#include "Foundations/LVBuffer2DTools/LVOrientation.h"
#include "Foundations/LVCodec/ImageFile.h"
#include "Portability/Misc/DebugTrace.h"

#include <cstring>
#include <limits>
#include <memory>
#include <vector>

// The decoders of DCMTK's JPEG module wrap libjpeg builds of 8, 12 and 16 bits that carry the
// lossless extension; only their public interface is used here.
#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmjpeg/djcparam.h"
#include "dcmtk/dcmjpeg/djdijg12.h"
#include "dcmtk/dcmjpeg/djdijg16.h"
#include "dcmtk/dcmjpeg/djdijg8.h"

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module JPEG";

E_DecompressionColorSpaceConversion ColourConversion(JpegColour colour) {
    switch (colour) {
        case JpegColour::Rgb:
        case JpegColour::Ybr: return EDC_photometricInterpretation;
        // Plain files: the markers decide for lossy streams; lossless colour is kept as stored.
        default: return EDC_guessLossyOnly;
    }
}

std::unique_ptr<DJDecoder> MakeDecoder(const DJCodecParameter& parameters, unsigned precision, bool ybr) {
    if (precision > 12) return std::make_unique<DJDecompressIJG16Bit>(parameters, ybr);
    if (precision > 8) return std::make_unique<DJDecompressIJG12Bit>(parameters, ybr);
    return std::make_unique<DJDecompressIJG8Bit>(parameters, ybr);
}

// Spread the pixel-interleaved decoded samples over the planes, turned upright.
void StorePlanes(const std::uint8_t* decoded, const JpegFrameHeader& frame, unsigned bytes, LVOrientation orientation,
                 const LVBuffer2D& out) {
    const LVOrientedWriter writer(out, orientation);
    const unsigned planes = out.Planes();
    const std::size_t rowSamples = std::size_t{frame.width} * planes;
    std::vector<std::uint8_t> row(std::size_t{frame.width} * bytes);
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        const std::uint8_t* pixels = decoded + rowSamples * bytes * y;
        for (unsigned p = 0; p < planes; ++p) {
            for (std::uint32_t x = 0; x < frame.width; ++x)
                std::memcpy(row.data() + std::size_t{x} * bytes, pixels + (std::size_t{x} * planes + p) * bytes, bytes);
            writer.WriteRow(p, static_cast<std::int32_t>(y), row.data());
        }
    }
}

}  // namespace

bool HasExtendedJpeg() { return true; }

bool DecodeJpegExtended(std::span<const std::uint8_t> bytes, const JpegFrameHeader& frame, JpegColour colour,
                        unsigned orientationValue, LVImageMemory& image) {
    if ((frame.components != 1 && frame.components != 3) || frame.precision < 2 || frame.precision > 16 ||
        frame.Arithmetic() || !IsSaneGeometry(frame.width, frame.height) ||
        bytes.size() > std::numeric_limits<Uint32>::max()) {
        LV_TRACE(kModule, "Unsupported JPEG frame: marker %02X, %u components of %u bits, %u x %u", frame.marker,
                 frame.components, frame.precision, frame.width, frame.height);
        return false;
    }
    const DJCodecParameter parameters(ECC_lossyYCbCr, ColourConversion(colour), EUC_never, EPC_colorByPixel);
    const std::unique_ptr<DJDecoder> decoder = MakeDecoder(parameters, frame.precision, colour == JpegColour::Ybr);
    const unsigned bytes16 = decoder->bytesPerSample();
    const std::uint64_t size = std::uint64_t{frame.width} * frame.height * frame.components * bytes16;
    if (size > std::numeric_limits<Uint32>::max()) return false;
    const LVOrientation orientation(orientationValue);
    const auto width = static_cast<std::int32_t>(frame.width);
    const auto height = static_cast<std::int32_t>(frame.height);
    if (!AllocateImage(image, static_cast<std::uint64_t>(orientation.UprightWidth(width, height)),
                       static_cast<std::uint64_t>(orientation.UprightHeight(width, height)), frame.components,
                       bytes16 == 2 ? 16 : 8, kModule))
        return false;
    std::vector<std::uint8_t> decoded(static_cast<std::size_t>(size));
    // The decoder reads its input through a non-const pointer but does not write to it.
    auto* input = const_cast<Uint8*>(bytes.data());
    OFCondition status = decoder->init();
    if (status.good())
        status = decoder->decode(input, static_cast<Uint32>(bytes.size()), decoded.data(), static_cast<Uint32>(size),
                                 OFFalse);
    if (status.bad()) {
        LV_TRACE(kModule, "Cannot decode JPEG (marker %02X, %u bits): %s", frame.marker, frame.precision, status.text());
        return false;
    }
    StorePlanes(decoded.data(), frame, bytes16, orientation, image.Buffer());
    if (bytes16 == 2) image.Buffer().SetSignificantBits(frame.precision);
    return true;
}

}  // namespace Lumivale::Imaging
