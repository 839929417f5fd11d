#include "Foundations/LVCodec/jpegls/LVImageCodec_JPEGLS.h"

#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/LVImage.h"
#include "Portability/Misc/DebugTrace.h"

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

// Offset of sample (x, y) of component c in CharLS's output for the stream's interleave mode.
std::size_t SampleIndex(charls_interleave_mode mode, const charls_frame_info& frame, std::size_t x, std::size_t y,
                        std::size_t c) {
    const std::size_t width = frame.width;
    const std::size_t components = static_cast<std::size_t>(frame.component_count);
    switch (mode) {
        case charls_interleave_mode::none: return (c * frame.height + y) * width + x;
        case charls_interleave_mode::line: return (y * components + c) * width + x;
        default: return (y * width + x) * components + c;
    }
}

}  // namespace

bool DecodeJpegLs(std::span<const std::uint8_t> bytes, LVImageMemory& image) {
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
    std::size_t size = 0;
    if (Failed(charls_jpegls_decoder_get_destination_size(decoder.get(), 0, &size), "size")) return false;
    const unsigned bytesPerSample = frame.bits_per_sample > 8 ? 2 : 1;
    const unsigned planes = static_cast<unsigned>(frame.component_count);
    if (!AllocateImage(image, frame.width, frame.height, planes, frame.bits_per_sample > 8 ? 16 : 8, kModule))
        return false;
    std::vector<std::uint8_t> decoded(size);
    if (Failed(charls_jpegls_decoder_decode_to_buffer(decoder.get(), decoded.data(), decoded.size(), 0), "decode"))
        return false;
    if (bytesPerSample == 2) image.Buffer().SetSignificantBits(static_cast<unsigned>(frame.bits_per_sample));
    const LVBuffer2D& out = image.Buffer();
    for (unsigned c = 0; c < planes; ++c)
        for (std::int32_t y = 0; y < out.Height(); ++y)
            for (std::int32_t x = 0; x < out.Width(); ++x) {
                const std::size_t at = SampleIndex(mode, frame, static_cast<std::size_t>(x),
                                                   static_cast<std::size_t>(y), c) * bytesPerSample;
                std::uint16_t v = decoded[at];
                if (bytesPerSample == 2) std::memcpy(&v, &decoded[at], 2);
                out.SetSample(c, x, y, v);
            }
    return true;
}

const char* const* LVImageCodec_JPEGLS::Extensions() const {
    static constexpr const char* kExtensions[] = {"jls", nullptr};
    return kExtensions;
}

const LVImageSignature* LVImageCodec_JPEGLS::Signatures() const {
    static constexpr std::uint8_t kMagic[] = {0xFF, 0xD8, 0xFF, 0xF7};
    static constexpr LVImageSignature kSignatures[] = {{0, 4, kMagic}, {}};
    return kSignatures;
}

bool LVImageCodec_JPEGLS::Decode(LVImage& image, const std::string& path, unsigned, unsigned, unsigned) const {
    std::vector<std::uint8_t> bytes;
    return ReadImageFile(path, bytes, kModule) && DecodeJpegLs(bytes, image);
}

}  // namespace Lumivale::Imaging
