#include "Foundations/LVCodec/jpeg/JpegDecoder.h"

#include "Foundations/LVBuffer2DTools/LVOrientation.h"
#include "Foundations/LVBuffer2DTools/SampleInterleave.h"
#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/jpeg/JpegExtendedDecoder.h"
#include "Foundations/LVCodec/jpeg/JpegFrameHeader.h"
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

// Spread one decoded scanline over the planes of stored row y (CMYK becomes RGB). Upright
// pictures are written in place; others go through `scratch`, one row per plane, and are turned
// by the writer. The plane rows are looked up once per scanline, not per pixel.
void StoreRow(const JSAMPLE* row, const jpeg_decompress_struct& info, const LVOrientedWriter& out,
              const LVBuffer2D& image, bool upright, std::uint8_t* scratch, std::int32_t y) {
    const auto width = static_cast<std::size_t>(info.output_width);
    const unsigned planes = image.Planes();
    std::uint8_t* targets[3] = {};
    for (unsigned p = 0; p < planes; ++p) targets[p] = upright ? image.Row(p, y) : scratch + p * width;
    if (planes == 1) {
        std::memcpy(targets[0], row, width);
    } else if (info.out_color_space == JCS_CMYK) {
        for (std::size_t x = 0; x < width; ++x)
            CmykToRgb(row + 4 * x, info.saw_Adobe_marker, targets[0][x], targets[1][x], targets[2][x]);
    } else {
        SplitIntoThreePlanes(row, targets[0], targets[1], targets[2], width);
    }
    if (!upright)
        for (unsigned p = 0; p < planes; ++p) out.WriteRow(p, y, targets[p]);
}

void ChooseColourSpaces(jpeg_decompress_struct& info, JpegColour colour) {
    switch (info.jpeg_color_space) {
        case JCS_GRAYSCALE: info.out_color_space = JCS_GRAYSCALE; return;
        case JCS_CMYK:
        case JCS_YCCK:
            LV_TRACE(kModule, "Converting CMYK JPEG to RGB");
            info.out_color_space = JCS_CMYK;
            return;
        default: break;
    }
    // libjpeg guesses the colour space of three components from the markers; DICOM states it.
    if (info.num_components == 3 && colour == JpegColour::Rgb) info.jpeg_color_space = JCS_RGB;
    if (info.num_components == 3 && colour == JpegColour::Ybr) info.jpeg_color_space = JCS_YCbCr;
    info.out_color_space = JCS_RGB;
}

// Runs between setjmp and the end of decoding: holds no object with a destructor.
bool DecodeWithLibjpeg(jpeg_decompress_struct& info, std::span<const std::uint8_t> bytes, LVImageMemory& image,
                       JpegColour colour, LVOrientation orientation) {
    jpeg_mem_src(&info, bytes.data(), static_cast<unsigned long>(bytes.size()));
    if (jpeg_read_header(&info, TRUE) != JPEG_HEADER_OK) return false;
    if (info.data_precision != BITS_IN_JSAMPLE) {
        LV_TRACE(kModule, "JPEG data precision %d is not supported by this libjpeg build", info.data_precision);
        return false;
    }
    ChooseColourSpaces(info, colour);
    if (!IsSaneGeometry(info.image_width, info.image_height)) {
        LV_TRACE(kModule, "Refusing JPEG of %u x %u pixels", info.image_width, info.image_height);
        return false;
    }
    jpeg_start_decompress(&info);
    const unsigned planes = info.out_color_space == JCS_GRAYSCALE ? 1 : 3;
    const auto width = static_cast<std::int32_t>(info.output_width);
    const auto height = static_cast<std::int32_t>(info.output_height);
    if (!AllocateImage(image, static_cast<std::uint64_t>(orientation.UprightWidth(width, height)),
                       static_cast<std::uint64_t>(orientation.UprightHeight(width, height)), planes, 8, kModule))
        return false;
    const bool upright = orientation.Value() == 1;
    const auto j = reinterpret_cast<j_common_ptr>(&info);
    JSAMPARRAY row =
        (*info.mem->alloc_sarray)(j, JPOOL_IMAGE, info.output_width * static_cast<unsigned>(info.output_components), 1);
    JSAMPARRAY scratch = (*info.mem->alloc_sarray)(j, JPOOL_IMAGE, info.output_width * planes, 1);
    const LVOrientedWriter writer(image.Buffer(), orientation);
    while (info.output_scanline < info.output_height) {
        const auto y = static_cast<std::int32_t>(info.output_scanline);
        if (jpeg_read_scanlines(&info, row, 1) != 1) return false;
        StoreRow(row[0], info, writer, image.Buffer(), upright, scratch[0], y);
    }
    jpeg_finish_decompress(&info);
    return true;
}

}  // namespace

bool DecodeJpeg(std::span<const std::uint8_t> bytes, LVImageMemory& image, const JpegDecodeOptions& options) {
    JpegFrameHeader frame;
    if (!ReadJpegFrameHeader(bytes, frame)) {
        LV_TRACE(kModule, "No JPEG frame header");
        return false;
    }
    const LVOrientation orientation(options.honourExifOrientation ? frame.orientation : 1);
    if (frame.precision != 8 || frame.Lossless()) {
        if (!HasExtendedJpeg()) {
            LV_TRACE(kModule, "JPEG data precision %u%s is not supported by this build", frame.precision,
                     frame.Lossless() ? " (lossless)" : "");
            return false;
        }
        return DecodeJpegExtended(bytes, frame, options.colour, orientation.Value(), image);
    }
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
    const bool ok = DecodeWithLibjpeg(info, bytes, image, options.colour, orientation);
    jpeg_destroy_decompress(&info);
    return ok;
}

}  // namespace Lumivale::Imaging
