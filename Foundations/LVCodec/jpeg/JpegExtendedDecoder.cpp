#include "Foundations/LVCodec/jpeg/JpegExtendedDecoder.h"

#include "Foundations/LVBuffer2DTools/LVOrientation.h"
#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/jpeg/JpegExtendedModule.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/ExternalLibrary.h"

#if defined(DICAPSULE_JPEG_MODULE)
#include "dicapsule_jpegextIdentity.h"
#endif

#include <cstring>
#include <vector>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module JPEG";

// The module's entry point, loaded on first use from where the tool's modules are installed, when
// its file is the one this build made. Null when this build has no module or it cannot be loaded.
DicapsuleDecodeJpegFunction LoadModule() {
#if defined(DICAPSULE_JPEG_MODULE)
    static Portability::ExternalLibrary library;
    static const DicapsuleDecodeJpegFunction entry = [] {
        if (!library.OpenModule(kJpegModule)) return DicapsuleDecodeJpegFunction{};
        return reinterpret_cast<DicapsuleDecodeJpegFunction>(library.Symbol(kJpegModuleEntry));
    }();
    return entry;
#else
    return nullptr;
#endif
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

bool HasExtendedJpeg() { return LoadModule() != nullptr; }

bool DecodeJpegExtended(std::span<const std::uint8_t> bytes, const JpegFrameHeader& frame, JpegColour colour,
                        unsigned orientationValue, LVImageMemory& image) {
    const DicapsuleDecodeJpegFunction decode = LoadModule();
    if (decode == nullptr) return false;
    if ((frame.components != 1 && frame.components != 3) || frame.precision < 2 || frame.precision > 16 ||
        frame.Arithmetic() || !IsSaneGeometry(frame.width, frame.height)) {
        LV_TRACE(kModule, "Unsupported JPEG frame: marker %02X, %u components of %u bits, %u x %u", frame.marker,
                 frame.components, frame.precision, frame.width, frame.height);
        return false;
    }
    const unsigned sampleBytes = frame.precision > 8 ? 2 : 1;
    const LVOrientation orientation(orientationValue);
    const auto width = static_cast<std::int32_t>(frame.width);
    const auto height = static_cast<std::int32_t>(frame.height);
    if (!AllocateImage(image, static_cast<std::uint64_t>(orientation.UprightWidth(width, height)),
                       static_cast<std::uint64_t>(orientation.UprightHeight(width, height)), frame.components,
                       sampleBytes * 8, kModule))
        return false;
    std::vector<std::uint8_t> decoded(std::size_t{frame.width} * frame.height * frame.components * sampleBytes);
    const int colourCode = colour == JpegColour::Rgb ? 1 : colour == JpegColour::Ybr ? 2 : 0;
    const DicapsuleJpegRequest request{bytes.data(), bytes.size(), frame.precision, frame.components, frame.width,
                                       frame.height, colourCode, decoded.data(), decoded.size()};
    char message[256] = {};
    if (!decode(&request, message, sizeof message)) {
        LV_TRACE(kModule, "Cannot decode JPEG (marker %02X, %u bits): %s", frame.marker, frame.precision, message);
        return false;
    }
    StorePlanes(decoded.data(), frame, sampleBytes, orientation, image.Buffer());
    if (sampleBytes == 2) image.Buffer().SetSignificantBits(frame.precision);
    return true;
}

}  // namespace Lumivale::Imaging
