#include "Foundations/LVCodec/jpegls/LVImageCodec_JPEGLS.h"

#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/LVImage.h"
#include "Portability/Misc/DebugTrace.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include <charls/charls.h>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module JPEGLS";

struct DecoderDeleter {
    void operator()(charls_jpegls_decoder* decoder) const { charls_jpegls_decoder_destroy(decoder); }
};

bool Failed(charls_jpegls_errc code, const char* step) {
    if (code == charls_jpegls_errc{}) return false;
    LV_TRACE(kModule, "CharLS %s: %s", step, charls_get_error_message(code));
    return true;
}

// Samples of fewer than 8 bits are stretched over 0..255 as the PNG and PNM codecs do.
void ScaleLowDepth(const LVBuffer2D& out, unsigned bits) {
    const unsigned maximum = (1u << bits) - 1;
    for (unsigned p = 0; p < out.Planes(); ++p)
        for (std::int32_t y = 0; y < out.Height(); ++y) {
            std::uint8_t* row = out.Row(p, y);
            for (std::int32_t x = 0; x < out.Width(); ++x)
                row[x] = ScaleToEightBits(std::min<unsigned>(row[x], maximum), maximum);
        }
}

// CharLS writes one component after the other only without interleaving; for line and sample
// interleaving it returns the samples of each pixel side by side. Single-component and
// non-interleaved streams decode straight into the planes (they lie one after the other with the
// buffer's line stride); interleaved ones go through one pixel-interleaved copy.
bool DecodeIntoPlanes(charls_jpegls_decoder* decoder, charls_interleave_mode mode, const charls_frame_info& frame,
                      const LVBuffer2D& out) {
    const unsigned planes = out.Planes();
    const unsigned bytes = out.Type().BytesPerSample();
    if (planes == 1 || mode == charls_interleave_mode::none) {
        const auto stride = static_cast<std::size_t>(out.LineStride());
        const std::size_t size = stride * static_cast<std::size_t>(out.Height()) * planes;
        return !Failed(charls_jpegls_decoder_decode_to_buffer(decoder, out.Plane(0), size,
                                                              static_cast<std::uint32_t>(stride)),
                       "decode");
    }
    std::size_t size = 0;
    if (Failed(charls_jpegls_decoder_get_destination_size(decoder, 0, &size), "size")) return false;
    std::vector<std::uint8_t> decoded(size);
    if (Failed(charls_jpegls_decoder_decode_to_buffer(decoder, decoded.data(), decoded.size(), 0), "decode"))
        return false;
    const std::size_t rowBytes = std::size_t{frame.width} * planes * bytes;
    for (std::int32_t y = 0; y < out.Height(); ++y) {
        const std::uint8_t* row = decoded.data() + rowBytes * static_cast<std::size_t>(y);
        for (unsigned p = 0; p < planes; ++p) {
            std::uint8_t* target = out.Row(p, y);
            for (std::int32_t x = 0; x < out.Width(); ++x)
                std::memcpy(target + std::size_t{bytes} * static_cast<std::size_t>(x),
                            row + (static_cast<std::size_t>(x) * planes + p) * bytes, bytes);
        }
    }
    return true;
}

// True when the stream ends with its end-of-image marker (FF D9), after any zero bytes that pad it
// to an even length. CharLS can spend seconds on a cut stream of a few hundred bytes, so streams
// without their end are refused before it sees them.
bool EndsWithEndOfImage(std::span<const std::uint8_t> bytes) {
    std::size_t end = bytes.size();
    while (end > 0 && bytes[end - 1] == 0x00) --end;
    return end >= 2 && bytes[end - 2] == 0xFF && bytes[end - 1] == 0xD9;
}

}  // namespace

bool DecodeJpegLs(std::span<const std::uint8_t> bytes, LVImageMemory& image) {
    if (!EndsWithEndOfImage(bytes)) {
        LV_TRACE(kModule, "JPEG-LS stream of %zu bytes without its end-of-image marker", bytes.size());
        return false;
    }
    const std::unique_ptr<charls_jpegls_decoder, DecoderDeleter> decoder(charls_jpegls_decoder_create());
    if (!decoder) return false;
    charls_frame_info frame{};
    charls_interleave_mode mode{};
    if (Failed(charls_jpegls_decoder_set_source_buffer(decoder.get(), bytes.data(), bytes.size()), "source") ||
        Failed(charls_jpegls_decoder_read_header(decoder.get()), "header") ||
        Failed(charls_jpegls_decoder_get_frame_info(decoder.get(), &frame), "frame") ||
        Failed(charls_jpegls_decoder_get_interleave_mode(decoder.get(), &mode), "interleave"))
        return false;
    if (frame.component_count < 1 || frame.component_count > 4 || frame.bits_per_sample < 2 ||
        frame.bits_per_sample > 16 || !IsSaneGeometry(frame.width, frame.height)) {
        LV_TRACE(kModule, "Unsupported JPEG-LS frame %u x %u, %d components of %d bits", frame.width, frame.height,
                 frame.component_count, frame.bits_per_sample);
        return false;
    }
    const auto bits = static_cast<unsigned>(frame.bits_per_sample);
    if (!AllocateImage(image, frame.width, frame.height, static_cast<unsigned>(frame.component_count),
                       bits > 8 ? 16 : 8, kModule))
        return false;
    if (!DecodeIntoPlanes(decoder.get(), mode, frame, image.Buffer())) return false;
    if (bits > 8) image.Buffer().SetSignificantBits(bits);
    if (bits < 8) ScaleLowDepth(image.Buffer(), bits);
    return true;
}

bool LVImageCodec_JPEGLS::Decode(LVImage& image, const std::string& path, unsigned, unsigned, unsigned) const {
    std::vector<std::uint8_t> bytes;
    return ReadImageFile(path, bytes, kModule) && DecodeJpegLs(bytes, image);
}

}  // namespace Lumivale::Imaging
