#include "Foundations/LVCodec/png/LVImageCodec_LibPNG.h"

#include "Foundations/LVBuffer2DTools/SampleInterleave.h"
#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/LVImage.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/Utf8Path.h"

#include <bit>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include <png.h>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module PNG";

// Everything with a destructor lives here, outside the frame that libpng may longjmp back to.
// The input is either bytes in memory or an open file read as libpng asks (never loaded whole).
struct PngState {
    std::span<const std::uint8_t> input;
    std::size_t position = 0;
    std::FILE* file = nullptr;
    std::vector<std::uint8_t> pixels;  // one decoded row
};

void ReadInput(png_structp png, png_bytep out, png_size_t length) {
    auto* state = static_cast<PngState*>(png_get_io_ptr(png));
    if (state->file != nullptr) {
        if (std::fread(out, 1, length, state->file) != length) png_error(png, "Read beyond the end of the PNG file");
        return;
    }
    if (length > state->input.size() - state->position) png_error(png, "Read beyond the end of the PNG data");
    std::memcpy(out, state->input.data() + state->position, length);
    state->position += length;
}

void TraceError(png_structp png, png_const_charp message) {
    LV_TRACE(kModule, "libpng: %s", message);
    png_longjmp(png, 1);
}

void TraceWarning(png_structp, png_const_charp message) { LV_TRACE(kModule, "libpng warning: %s", message); }

// Returns the number of passes the rows are read in (7 for an interlaced image, else 1).
int SetTransformations(png_structp png, png_infop info) {
    const int colourType = png_get_color_type(png, info);
    if (colourType == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png);
    if (colourType == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(png, info) < 8) png_set_expand_gray_1_2_4_to_8(png);
    if (png_get_valid(png, info, PNG_INFO_tRNS)) png_set_tRNS_to_alpha(png);
    if (png_get_bit_depth(png, info) == 16 && std::endian::native == std::endian::little) png_set_swap(png);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    return passes;
}

// Gather row y of the planes into one row of pixels (samples side by side): the inverse of
// DeinterleaveRow, so that a later interlace pass adds its pixels to those decoded before.
void InterleaveRow(const LVBuffer2D& in, std::int32_t y, unsigned channels, unsigned bytesPerSample,
                   std::uint8_t* row) {
    const auto width = static_cast<std::size_t>(in.Width());
    if (channels == 3 && bytesPerSample == 1) {
        InterleaveThreePlanes(in.Row(0, y), in.Row(1, y), in.Row(2, y), row, width);
        return;
    }
    for (unsigned p = 0; p < channels; ++p) {
        const std::uint8_t* source = in.Row(p, y);
        for (std::size_t x = 0; x < width; ++x)
            std::memcpy(row + (std::size_t{channels} * x + p) * bytesPerSample, source + std::size_t{bytesPerSample} * x,
                        bytesPerSample);
    }
}

// Spread one decoded row (samples of a pixel side by side) over row y of the planes.
void DeinterleaveRow(const std::uint8_t* row, std::int32_t y, unsigned channels, unsigned bytesPerSample,
                     const LVBuffer2D& out) {
    const auto width = static_cast<std::size_t>(out.Width());
    if (channels == 3 && bytesPerSample == 1) {
        SplitIntoThreePlanes(row, out.Row(0, y), out.Row(1, y), out.Row(2, y), width);
        return;
    }
    for (unsigned p = 0; p < channels; ++p) {
        std::uint8_t* target = out.Row(p, y);
        for (std::size_t x = 0; x < width; ++x)
            std::memcpy(target + std::size_t{bytesPerSample} * x, row + (std::size_t{channels} * x + p) * bytesPerSample,
                        bytesPerSample);
    }
}

// `skipped`: signature bytes the caller has already read and checked.
bool DecodeWithLibpng(PngState& state, LVImageMemory& image, int skipped) {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, TraceError, TraceWarning);
    if (!png) return false;
    png_infop info = png_create_info_struct(png);
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_read_struct(&png, &info, nullptr);
        return false;
    }
    png_set_read_fn(png, &state, ReadInput);
    png_set_sig_bytes(png, skipped);
    png_read_info(png, info);
    const png_uint_32 width = png_get_image_width(png, info);
    const png_uint_32 height = png_get_image_height(png, info);
    if (!IsSaneGeometry(width, height)) png_error(png, "Image too large");
    const int passes = SetTransformations(png, info);
    const unsigned channels = png_get_channels(png, info);
    const unsigned bits = png_get_bit_depth(png, info);
    const std::size_t rowBytes = png_get_rowbytes(png, info);
    if (channels < 1 || channels > 4 || (bits != 8 && bits != 16)) png_error(png, "Unsupported sample layout");
    if (!AllocateImage(image, width, height, channels, bits, kModule)) png_error(png, "Cannot allocate the image");
    // Row by row into the planes: the only full-size buffer is the image itself. An interlaced
    // image comes in seven passes, each adding its own pixels to every row it touches ("sparkle"
    // mode of png_read_row), so from the second pass on each row is gathered back from the planes
    // before libpng adds to it.
    const LVBuffer2D& out = image.Buffer();
    state.pixels.resize(rowBytes);
    for (int pass = 0; pass < passes; ++pass) {
        for (png_uint_32 y = 0; y < height; ++y) {
            const auto row = static_cast<std::int32_t>(y);
            if (pass > 0) InterleaveRow(out, row, channels, bits / 8, state.pixels.data());
            png_read_row(png, state.pixels.data(), nullptr);
            DeinterleaveRow(state.pixels.data(), row, channels, bits / 8, out);
        }
    }
    png_read_end(png, nullptr);
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
    return DecodeWithLibpng(state, image, 0);
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
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(Portability::OpenUtf8File(path, "rb"), std::fclose);
    if (!file) {
        LV_TRACE(kModule, "Cannot open %s", path.c_str());
        return false;
    }
    std::uint8_t signature[8] = {};
    if (std::fread(signature, 1, sizeof signature, file.get()) != sizeof signature ||
        png_sig_cmp(signature, 0, sizeof signature) != 0) {
        LV_TRACE(kModule, "Not a PNG stream");
        return false;
    }
    PngState state;
    state.file = file.get();
    return DecodeWithLibpng(state, image, sizeof signature);
}

}  // namespace Lumivale::Imaging
