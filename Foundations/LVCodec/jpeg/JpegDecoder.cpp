#include "Foundations/LVCodec/jpeg/JpegDecoder.h"

#include "Foundations/LVBuffer2DTools/SampleInterleave.h"
#include "Foundations/LVCodec/ImageFile.h"
#include "Portability/Misc/DebugTrace.h"

#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module JPEG";

// libjpeg reports fatal errors through error_exit, which must not return: jump back to the decoder.
struct JpegErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf jump;
};

void ExitOnError(j_common_ptr info) {
    char message[JMSG_LENGTH_MAX];
    info->err->format_message(info, message);
    LV_TRACE(kModule, "libjpeg: %s", message);
    std::longjmp(reinterpret_cast<JpegErrorManager*>(info->err)->jump, 1);
}

void TraceWarning(j_common_ptr info, int level) {
    if (level >= 0) return;  // only corrupt-data warnings, not trace messages
    char message[JMSG_LENGTH_MAX];
    info->err->format_message(info, message);
    LV_TRACE(kModule, "libjpeg warning: %s", message);
}

// CMYK as stored by Adobe applications is inverted (0 = full ink); plain CMYK is not.
void CmykToRgb(const JSAMPLE* cmyk, bool inverted, std::uint8_t& r, std::uint8_t& g, std::uint8_t& b) {
    const unsigned k = inverted ? cmyk[3] : 255u - cmyk[3];
    auto channel = [&](unsigned ink) {
        const unsigned v = inverted ? ink : 255u - ink;
        return static_cast<std::uint8_t>((v * k + 127) / 255);
    };
    r = channel(cmyk[0]);
    g = channel(cmyk[1]);
    b = channel(cmyk[2]);
}

// Spread one decoded scanline over the planes of row y (CMYK becomes RGB). The plane rows are
// looked up once per scanline, not per pixel.
void StoreRow(const JSAMPLE* row, const jpeg_decompress_struct& info, const LVBuffer2D& out, std::int32_t y) {
    const auto width = static_cast<std::size_t>(out.Width());
    if (out.Planes() == 1) {
        std::memcpy(out.Row(0, y), row, width);
    } else if (info.out_color_space == JCS_CMYK) {
        std::uint8_t* const r = out.Row(0, y);
        std::uint8_t* const g = out.Row(1, y);
        std::uint8_t* const b = out.Row(2, y);
        for (std::size_t x = 0; x < width; ++x) CmykToRgb(row + 4 * x, info.saw_Adobe_marker, r[x], g[x], b[x]);
    } else {
        SplitIntoThreePlanes(row, out.Row(0, y), out.Row(1, y), out.Row(2, y), width);
    }
}

// Runs between setjmp and the end of decoding: holds no object with a destructor.
bool DecodeWithLibjpeg(jpeg_decompress_struct& info, std::span<const std::uint8_t> bytes, LVImageMemory& image) {
    jpeg_mem_src(&info, bytes.data(), static_cast<unsigned long>(bytes.size()));
    if (jpeg_read_header(&info, TRUE) != JPEG_HEADER_OK) return false;
    if (info.data_precision != BITS_IN_JSAMPLE) {
        LV_TRACE(kModule, "JPEG data precision %d is not supported by this libjpeg build", info.data_precision);
        return false;
    }
    switch (info.jpeg_color_space) {
        case JCS_GRAYSCALE: info.out_color_space = JCS_GRAYSCALE; break;
        case JCS_CMYK:
        case JCS_YCCK:
            LV_TRACE(kModule, "Converting CMYK JPEG to RGB");
            info.out_color_space = JCS_CMYK;
            break;
        default: info.out_color_space = JCS_RGB; break;
    }
    if (!IsSaneGeometry(info.image_width, info.image_height)) {
        LV_TRACE(kModule, "Refusing JPEG of %u x %u pixels", info.image_width, info.image_height);
        return false;
    }
    jpeg_start_decompress(&info);
    const unsigned planes = info.out_color_space == JCS_GRAYSCALE ? 1 : 3;
    if (!AllocateImage(image, info.output_width, info.output_height, planes, 8, kModule)) return false;
    JSAMPARRAY row = (*info.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&info), JPOOL_IMAGE,
                                               info.output_width * static_cast<unsigned>(info.output_components), 1);
    while (info.output_scanline < info.output_height) {
        const auto y = static_cast<std::int32_t>(info.output_scanline);
        if (jpeg_read_scanlines(&info, row, 1) != 1) return false;
        StoreRow(row[0], info, image.Buffer(), y);
    }
    jpeg_finish_decompress(&info);
    return true;
}

}  // namespace

bool DecodeJpeg(std::span<const std::uint8_t> bytes, LVImageMemory& image) {
    if (bytes.empty()) return false;
    jpeg_decompress_struct info{};
    JpegErrorManager errors{};
    info.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = ExitOnError;
    errors.base.emit_message = TraceWarning;
    if (setjmp(errors.jump)) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    jpeg_create_decompress(&info);
    const bool ok = DecodeWithLibjpeg(info, bytes, image);
    jpeg_destroy_decompress(&info);
    return ok;
}

}  // namespace Lumivale::Imaging
