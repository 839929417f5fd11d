#include "Foundations/LVCodec/png/LVImageCodec_LibPNG.h"

#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/LVImage.h"
#include "Portability/Misc/DebugTrace.h"

#include <bit>
#include <cstring>
#include <vector>

#include <png.h>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module PNG";

// Everything with a destructor lives here, outside the frame that libpng may longjmp back to.
struct PngState {
    std::span<const std::uint8_t> input;
    std::size_t position = 0;
    std::vector<std::uint8_t> pixels;
    std::vector<png_bytep> rows;
};

void ReadFromMemory(png_structp png, png_bytep out, png_size_t length) {
    auto* state = static_cast<PngState*>(png_get_io_ptr(png));
    if (length > state->input.size() - state->position) png_error(png, "Read beyond the end of the PNG data");
    std::memcpy(out, state->input.data() + state->position, length);
    state->position += length;
}

void TraceError(png_structp png, png_const_charp message) {
    LV_TRACE(kModule, "libpng: %s", message);
    png_longjmp(png, 1);
}

void TraceWarning(png_structp, png_const_charp message) { LV_TRACE(kModule, "libpng warning: %s", message); }

void SetTransformations(png_structp png, png_infop info) {
    const int colourType = png_get_color_type(png, info);
    if (colourType == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png);
    if (colourType == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(png, info) < 8) png_set_expand_gray_1_2_4_to_8(png);
    if (png_get_valid(png, info, PNG_INFO_tRNS)) png_set_tRNS_to_alpha(png);
    if (png_get_bit_depth(png, info) == 16 && std::endian::native == std::endian::little) png_set_swap(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
}

void Deinterleave(const PngState& state, unsigned channels, unsigned bytesPerSample, const LVBuffer2D& out) {
    for (std::int32_t y = 0; y < out.Height(); ++y) {
        const std::uint8_t* row = state.rows[static_cast<std::size_t>(y)];
        for (unsigned p = 0; p < channels; ++p) {
            std::uint8_t* target = out.Row(p, y);
            for (std::int32_t x = 0; x < out.Width(); ++x)
                std::memcpy(target + std::size_t{bytesPerSample} * x,
                            row + (std::size_t{channels} * x + p) * bytesPerSample, bytesPerSample);
        }
    }
}

bool DecodeWithLibpng(PngState& state, LVImageMemory& image) {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, TraceError, TraceWarning);
    if (!png) return false;
    png_infop info = png_create_info_struct(png);
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_read_struct(&png, &info, nullptr);
        return false;
    }
    png_set_read_fn(png, &state, ReadFromMemory);
    png_read_info(png, info);
    const png_uint_32 width = png_get_image_width(png, info);
    const png_uint_32 height = png_get_image_height(png, info);
    if (!IsSaneGeometry(width, height)) png_error(png, "Image too large");
    SetTransformations(png, info);
    const unsigned channels = png_get_channels(png, info);
    const unsigned bits = png_get_bit_depth(png, info);
    const std::size_t rowBytes = png_get_rowbytes(png, info);
    if (channels < 1 || channels > 4 || (bits != 8 && bits != 16)) png_error(png, "Unsupported sample layout");
    if (!AllocateImage(image, width, height, channels, bits, kModule)) png_error(png, "Cannot allocate the image");
    state.pixels.resize(rowBytes * height);
    state.rows.resize(height);
    for (png_uint_32 y = 0; y < height; ++y) state.rows[y] = state.pixels.data() + rowBytes * y;
    png_read_image(png, state.rows.data());
    png_read_end(png, nullptr);
    Deinterleave(state, channels, bits / 8, image.Buffer());
    png_destroy_read_struct(&png, &info, nullptr);
    return true;
}

}  // namespace

bool DecodePng(std::span<const std::uint8_t> bytes, LVImageMemory& image) {
    if (bytes.size() < 8 || png_sig_cmp(bytes.data(), 0, 8) != 0) {
        LV_TRACE(kModule, "Not a PNG stream");
        return false;
    }
    PngState state;
    state.input = bytes;
    return DecodeWithLibpng(state, image);
}

const char* const* LVImageCodec_LibPNG::Extensions() const {
    static constexpr const char* kExtensions[] = {"png", nullptr};
    return kExtensions;
}

const LVImageSignature* LVImageCodec_LibPNG::Signatures() const {
    static constexpr std::uint8_t kMagic[] = {0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A};
    static constexpr LVImageSignature kSignatures[] = {{0, 8, kMagic}, {}};
    return kSignatures;
}

bool LVImageCodec_LibPNG::Decode(LVImage& image, const std::string& path, unsigned, unsigned, unsigned) const {
    std::vector<std::uint8_t> bytes;
    return ReadImageFile(path, bytes, kModule) && DecodePng(bytes, image);
}

}  // namespace Lumivale::Imaging
