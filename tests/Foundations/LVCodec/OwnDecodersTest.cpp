// The program's own readers (PNM, BMP, DICOM) and the library codecs' refusal paths.
#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/bmp/LVImageCodec_BMP.h"
#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/jpeg/JpegDecoder.h"
#include "Foundations/LVCodec/jpeg/ExifOrientation.h"
#include "Foundations/LVCodec/jpeg/JpegExtendedDecoder.h"
#include "Foundations/LVCodec/jpegls/LVImageCodec_JPEGLS.h"
#include "Foundations/LVCodec/pnm/PnmWrapper.h"
#include "TestFiles.h"
#include "TraceCapture.h"

#ifndef DICAPSULE_WITHOUT_JPEGLS  // a Windows build may go without CharLS
#include <charls/charls.h>
#endif
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace Lumivale::Imaging {
namespace {

const std::string kImages = DICAPSULE_GENERATED_IMAGES;

std::vector<std::uint8_t> Bytes(const std::string& text) { return {text.begin(), text.end()}; }

// The generated pattern: sample c of pixel (x, y) for a given maximum.
std::int64_t Pattern(std::int32_t x, std::int32_t y, unsigned c, std::int64_t maximum = 255) {
    const std::int64_t scale = maximum > 255 ? maximum / 255 : 1;
    return ((x * 7 + y * 13 + c * 50) * scale + c) % (maximum + 1);
}

// Appends v as `width` bytes, the least significant first unless bigEndian.
void Put(std::vector<std::uint8_t>& out, std::uint32_t v, unsigned width, bool bigEndian = false) {
    for (unsigned i = 0; i < width; ++i)
        out.push_back(static_cast<std::uint8_t>(v >> 8 * (bigEndian ? width - 1 - i : i)));
}

// A BMP file: 14-byte file header, 40-byte info header, grey palette of 2^bpp entries (bpp <= 8), pixels.
std::vector<std::uint8_t> Bmp(std::int32_t width, std::int32_t height, std::uint16_t bpp, std::uint32_t compression,
                              const std::vector<std::uint8_t>& pixels) {
    const std::uint32_t palette = bpp <= 8 ? 4u << bpp : 0, size = static_cast<std::uint32_t>(pixels.size());
    std::vector<std::uint8_t> out = {'B', 'M'};
    // File size, reserved, pixel offset, info header size, width, height (negative: top-down); planes, bits;
    // compression, image size, resolution (2), colours used, important.
    for (const std::uint32_t v : {54 + palette + size, 0u, 54 + palette, 40u, std::uint32_t(width), std::uint32_t(height)})
        Put(out, v, 4);
    Put(out, 1, 2);
    Put(out, bpp, 2);
    for (const std::uint32_t v : {compression, size, 0u, 0u, 0u, 0u}) Put(out, v, 4);
    for (std::uint32_t i = 0; i < palette / 4; ++i) Put(out, ((i * 17) & 0xFF) * 0x010101u, 4);
    out.insert(out.end(), pixels.begin(), pixels.end());
    return out;
}

TEST(PnmDecoderTest, HeaderErrorsAreTracedWordForWord) {
    struct Case { const char* id; std::string input; std::string message; } cases[] = {
        {"empty", "", "Error reading magic number from Netpbm image stream.  Most often, this means your input file "
                      "is empty."},
        {"magic", "Q5\n1 1\n255\n", "bad magic number - not a ppm, pgm, or pbm file"},
        {"eof", "P5\n3", "EOF / read error reading a byte"},
        {"columns", "P4\n99999999999 1\n", "Number of columns in header is too large."},
        {"width", "P5\n2000000 1\n255\n", "image width (2000000) too large to be processed"},
        {"height", "P5\n1 2000000\n255\n", "image height (2000000) too large to be processed"},
        {"pam eof", "P7\nWIDTH 1\n", "EOF or error reading file while trying to read the PAM header"},
        {"pam missing", "P7\nWIDTH\nENDHDR\n", "Missing value for WIDTH in PAM file header."},
        {"pam too large", "P7\nWIDTH 99999999999\n", "Too-large value for WIDTH in PAM file header: '99999999999'"},
        {"pam non-numeric", "P7\nHEIGHT x1\n", "Non-numeric value for HEIGHT in PAM file header: 'x1'"},
        {"pam negative", "P7\nDEPTH -1\n", "Negative value for DEPTH in PAM file header: '-1'"},
        {"pam no depth", "P7\nWIDTH 1\nHEIGHT 1\nMAXVAL 255\nENDHDR\n", "No DEPTH header line in PAM header"},
        {"pam no maxval", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nENDHDR\n", "No MAXVAL header line in PAM header"},
        {"pam zero depth", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 0\nMAXVAL 1\nENDHDR\n", "DEPTH value is zero in PAM header"},
        {"pam maxval", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 70000\nENDHDR\n",
         "MAXVAL value (70000) in PAM header is greater than 65535"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        TraceCapture trace;
        LVImageMemory image;
        EXPECT_FALSE(DecodePnm(Bytes(c.input), image));
        EXPECT_TRUE(trace.Has(c.message)) << (trace.lines.empty() ? "" : trace.lines.back());
    }
}

TEST(PnmDecoderTest, MaxvalDecidesTheSampleWidth) {
    struct Case { const char* id; std::string input; unsigned bits; std::int64_t first, last; } cases[] = {
        {"maxval 15 scales to 8 bits", "P2\n2 1\n15\n0 # comment\n 15\n", 8, 0, 255},
        {"maxval 4095 keeps 12 bits", std::string("P5\n2 1\n4095\n\x00\x01\x0F\xFF", 16), 12, 1, 4095},
        {"maxval 1000 scales to 16 bits", std::string("P5\n2 1\n1000\n\x00\x00\x03\xE8", 16), 16, 0, 65535},
        {"plain bitmap black is 0", "P1\n2 1\n10", 8, 0, 255},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        LVImageMemory image;
        ASSERT_TRUE(DecodePnm(Bytes(c.input), image));
        EXPECT_EQ(image.Buffer().Bits(), c.bits);
        EXPECT_EQ(image.Buffer().Sample(0, 0, 0), c.first);
        EXPECT_EQ(image.Buffer().Sample(0, 1, 0), c.last);
    }
    LVImageMemory image;
    EXPECT_FALSE(DecodePnm(Bytes("P5\n4 4\n255\nabc"), image)) << "raster shorter than the header promises";
}

TEST(BmpDecoderTest, TopDownRleAndRefusals) {
    struct Case {
        const char* id;
        std::vector<std::uint8_t> file;
        bool ok;
        std::vector<std::int64_t> greys;  // plane 0, row by row from the top
    } cases[] = {
        {"top-down 24-bit", Bmp(2, -2, 24, 0, {1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0}), true, {3, 6, 9, 12}},
        {"bottom-up 8-bit grey", Bmp(2, 2, 8, 0, {1, 2, 0, 0, 3, 4, 0, 0}), true, {51, 68, 17, 34}},
        {"rle4 with absolute run", Bmp(4, 2, 4, 2, {4, 0x12, 0, 0, 0, 4, 0x34, 0x56, 0, 1}), true,
         {51, 68, 85, 102, 17, 34, 17, 34}},
        {"rle8 with delta", Bmp(3, 2, 8, 1, {1, 5, 0, 2, 1, 1, 1, 7, 0, 1}), true, {0, 0, 119, 85, 0, 0}},
        {"truncated pixels", Bmp(4, 4, 24, 0, {1, 2, 3}), false, {}},
        {"rle4 on 8 bits", Bmp(2, 2, 8, 2, {0, 1}), false, {}},
        {"huge header", Bmp(100000, 100000, 24, 0, {}), false, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        LVImageMemory image;
        ASSERT_EQ(DecodeBmp(c.file, image), c.ok);
        if (!c.ok) continue;
        std::vector<std::int64_t> greys;
        for (std::int32_t y = 0; y < image.Buffer().Height(); ++y)
            for (std::int32_t x = 0; x < image.Buffer().Width(); ++x) greys.push_back(image.Buffer().Sample(0, x, y));
        EXPECT_EQ(greys, c.greys);
    }
}

// The decoders read a file a window of 256 KiB at a time: rows of these pictures straddle its edges.
// A copy one byte short is refused.
TEST(OwnDecodersTest, RowsAcrossTheReadWindow) {
    constexpr std::int32_t kWidth = 1001, kHeight = 150;  // 3003 bytes of RGB a row, 450 KB in all
    std::vector<std::uint8_t> bgr, rgb, grey16;
    for (std::int32_t y = 0; y < kHeight; ++y) {
        for (std::int32_t x = 0; x < kWidth; ++x) {
            for (const unsigned c : {2u, 1u, 0u}) bgr.push_back(static_cast<std::uint8_t>(Pattern(x, y, c)));
            for (const unsigned c : {0u, 1u, 2u}) rgb.push_back(static_cast<std::uint8_t>(Pattern(x, y, c)));
            Put(grey16, static_cast<std::uint32_t>(Pattern(x, y, 0, 65535)), 2, true);
        }
        bgr.push_back(0);  // rows padded to 4 bytes
    }
    auto pnm = [&](const std::string& header, const std::vector<std::uint8_t>& raster) {
        std::vector<std::uint8_t> out = Bytes(header);
        out.insert(out.end(), raster.begin(), raster.end());
        return out;
    };
    struct Case { const char* id; std::vector<std::uint8_t> file; bool bmp; unsigned planes; std::int64_t maximum; } cases[] = {
        {"bmp 24-bit top-down", Bmp(kWidth, -kHeight, 24, 0, bgr), true, 3, 255},
        {"ppm", pnm("P6\n1001 150\n255\n", rgb), false, 3, 255},
        {"pgm 16-bit", pnm("P5\n1001 150\n65535\n", grey16), false, 1, 65535},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.id);
        LVImageMemory image;
        ASSERT_TRUE(c.bmp ? DecodeBmp(c.file, image) : DecodePnm(c.file, image));
        ASSERT_EQ(image.Buffer().Planes(), c.planes);
        for (unsigned p = 0; p < c.planes; ++p)
            for (std::int32_t y = 0; y < kHeight; ++y)
                for (std::int32_t x = 0; x < kWidth; ++x)
                    ASSERT_EQ(image.Buffer().Sample(p, x, y), Pattern(x, y, p, c.maximum)) << p << "," << x << "," << y;
        c.file.pop_back();
        EXPECT_FALSE(c.bmp ? DecodeBmp(c.file, image) : DecodePnm(c.file, image));
    }
}

TEST(DicomDecoderTest, MainImageIconAndMessages) {
    const std::string icon = kImages + "/dicom_icon.dcm";
    LVImage image;
    ASSERT_TRUE(image.LoadFromFile(icon, kLoadThumbnail));
    ASSERT_EQ(image.Buffer().Planes(), 3u);
    EXPECT_EQ(image.Buffer().Sample(2, 36, 22), Pattern(36, 22, 2));
    EXPECT_EQ(image.Buffer().Sample(1, 5, 3), Pattern(5, 3, 1));

    const std::string twelve = kImages + "/dicom_12bit.dcm";
    ASSERT_TRUE(image.LoadFromFile(twelve, 0));
    EXPECT_EQ(image.Buffer().Bits(), 12u);
    EXPECT_EQ(image.Buffer().Sample(0, 30, 20), Pattern(30, 20, 0, 4095));

    struct Case { const char* id; std::string path; unsigned flags; bool ok; std::string message; } cases[] = {
        {"no icon", twelve, kLoadThumbnail, false, twelve + " does not embed a thumbnail"},
        {"palette", kImages + "/dicom_palette.dcm", 0, false, "Cannot decode : photometric_interpretation PALETTE COLOR"},
        {"compressed", kImages + "/dicom_jpeg.dcm", 0, true, "has compression : 1.2.840.10008.1.2.4.50"},
        {"tiff page", kImages + "/tiff_pages.tif", 0, true, "TiffGetPages : 2"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        TraceCapture trace;
        EXPECT_EQ(image.LoadFromFile(c.path, c.flags), c.ok);
        EXPECT_TRUE(trace.Has(c.message));
    }
}

TEST(DicomDecoderTest, BrokenJpegPixelsAndMissingPages) {
    std::vector<std::uint8_t> bytes = TestFiles::ReadBytes(kImages + "/dicom_jpeg.dcm");
    const std::uint8_t soi[] = {0xFF, 0xD8, 0xFF};
    const auto at = std::search(bytes.begin(), bytes.end(), std::begin(soi), std::end(soi));
    ASSERT_NE(at, bytes.end());
    at[0] = at[1] = 0;
    const std::string broken = kImages + "/broken_jpeg.dcm";
    TestFiles::WriteBytes(broken, bytes);
    TraceCapture trace;
    LVImage image;
    EXPECT_FALSE(image.LoadFromFile(broken, 0));
    EXPECT_TRUE(trace.Has("Cannot decode : jpg pixels " + broken));
    std::remove(broken.c_str());

    const std::string pages = kImages + "/tiff_pages.tif";
    EXPECT_FALSE(image.LoadFromFile(pages, 5, 0, 0));
    EXPECT_TRUE(trace.Has("Can't set frame 5 of input file " + pages));
}

// An EXIF block: "Exif\0\0", a TIFF header in either byte order, one directory of one entry.
std::vector<std::uint8_t> Exif(bool bigEndian, std::uint16_t tag, std::uint16_t type, std::uint16_t value,
                               std::size_t keep = 0) {
    const std::uint8_t order = bigEndian ? 'M' : 'I';
    std::vector<std::uint8_t> out = {'E', 'x', 'i', 'f', 0, 0, order, order};
    // 42, the first directory right after the header, one entry: tag, type, count 1 and a SHORT in
    // the first two bytes of the value field.
    for (const auto& [v, width] : std::initializer_list<std::pair<std::uint32_t, unsigned>>{
             {42, 2}, {8, 4}, {1, 2}, {tag, 2}, {type, 2}, {1, 4}, {value, 2}, {0, 2}})
        Put(out, v, width, bigEndian);
    if (keep) out.resize(keep);
    return out;
}

TEST(JpegDecoderTest, ExifOrientation) {
    struct Case { const char* id; std::vector<std::uint8_t> block; unsigned orientation; } cases[] = {
        {"little-endian 6", Exif(false, 0x0112, 3, 6), 6},
        {"big-endian 8", Exif(true, 0x0112, 3, 8), 8},
        {"another tag", Exif(false, 0x0110, 3, 6), 1},
        {"not a SHORT", Exif(false, 0x0112, 4, 6), 1},
        {"out of range", Exif(false, 0x0112, 3, 9), 1},
        {"entry cut short", Exif(false, 0x0112, 3, 6, 22), 1},
        {"not EXIF", Bytes("XMP\0\0\0II*\0"), 1},
    };
    for (const Case& c : cases) EXPECT_EQ(ExifOrientation(c.block), c.orientation) << c.id;
}

// libjpeg decodes a stream with stray bytes between two segments (with a warning); the frame
// header is found past them too.
TEST(JpegDecoderTest, StrayBytesBetweenSegmentsAreSkipped) {
    std::vector<std::uint8_t> bytes = TestFiles::ReadBytes(kImages + "/jpeg_RGB.jpg");
    ASSERT_GT(bytes.size(), 6u);
    const std::size_t afterFirstSegment = 4 + (std::size_t{bytes[4]} << 8 | bytes[5]);
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(afterFirstSegment), {0x12, 0x00, 0xFF, 0x00});
    LVImageMemory image;
    ASSERT_TRUE(DecodeJpeg(bytes, image));
    EXPECT_EQ(image.Buffer().Width(), 37);
    EXPECT_EQ(image.Buffer().Planes(), 3u);
}

#ifdef DICAPSULE_WITHOUT_EXTENDED_JPEG
// Without the extended decoder a 12-bit stream is refused (the thumbnail corpus decodes them in
// the builds that have it).
TEST(JpegDecoderTest, TwelveBitPrecisionNeedsTheExtendedDecoder) {
    EXPECT_FALSE(HasExtendedJpeg());
    std::vector<std::uint8_t> bytes = TestFiles::ReadBytes(kImages + "/jpeg_L.jpg");
    const std::uint8_t sof0[] = {0xFF, 0xC0};
    const auto at = std::search(bytes.begin(), bytes.end(), std::begin(sof0), std::end(sof0));
    ASSERT_NE(at, bytes.end());
    at[1] = 0xC1;  // extended sequential, which allows 12 bits
    at[4] = 12;
    TraceCapture trace;
    LVImageMemory image;
    EXPECT_FALSE(DecodeJpeg(bytes, image));
    EXPECT_TRUE(trace.Has("JPEG data precision 12 is not supported by this build"));
}
#else
// A build configured with the extended decoder finds its module.
TEST(JpegDecoderTest, ExtendedDecoderIsFound) { EXPECT_TRUE(HasExtendedJpeg()); }
#endif

// The thumbnail corpus decodes DCMTK's 8-bit streams of every interleave mode and its 12-bit line
// and grey streams; here the depths and modes it does not write.
#ifndef DICAPSULE_WITHOUT_JPEGLS
TEST(JpegLsDecoderTest, CharlsStreamsDecode) {
    struct Case { const char* id; int components; int bits; charls_interleave_mode mode; } cases[] = {
        {"rgb 12 sample-interleaved", 3, 12, charls_interleave_mode::sample},
        {"rgb 16 line-interleaved", 3, 16, charls_interleave_mode::line},
        {"grey 2 scaled to 8", 1, 2, charls_interleave_mode::none},
        {"grey 4 scaled to 8", 1, 4, charls_interleave_mode::none},
        {"rgb 5 line-interleaved scaled to 8", 3, 5, charls_interleave_mode::line}};
    constexpr std::uint32_t kWidth = 37, kHeight = 23;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        const std::int64_t maximum = (1 << c.bits) - 1;
        const std::size_t bytesPerSample = c.bits > 8 ? 2 : 1;
        std::vector<std::uint8_t> raw;
        // CharLS takes planes one after the other for "none", pixels interleaved otherwise.
        const bool planar = c.mode == charls_interleave_mode::none;
        for (unsigned outer = 0; outer < (planar ? unsigned(c.components) : 1u); ++outer)
            for (std::uint32_t y = 0; y < kHeight; ++y)
                for (std::uint32_t x = 0; x < kWidth; ++x)
                    for (unsigned inner = 0; inner < (planar ? 1u : unsigned(c.components)); ++inner) {
                        const auto v = Pattern(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y),
                                               planar ? outer : inner, maximum);
                        raw.push_back(static_cast<std::uint8_t>(v));
                        if (bytesPerSample == 2) raw.push_back(static_cast<std::uint8_t>(v >> 8));
                    }
        const auto encoded = charls::jpegls_encoder::encode(raw, {kWidth, kHeight, c.bits, c.components}, c.mode);
        LVImageMemory image;
        ASSERT_TRUE(DecodeJpegLs(encoded, image));
        ASSERT_EQ(image.Buffer().Planes(), static_cast<unsigned>(c.components));
        EXPECT_EQ(image.Buffer().Bits(), static_cast<unsigned>(std::max(c.bits, 8)));
        auto expected = [&](std::int32_t x, std::int32_t y, unsigned p) -> std::int64_t {
            const std::int64_t v = Pattern(x, y, p, maximum);
            // Low depths are stretched over 0..255, to the nearest value.
            return c.bits < 8 ? std::lround(static_cast<double>(v) * 255.0 / static_cast<double>(maximum)) : v;
        };
        for (unsigned p = 0; p < static_cast<unsigned>(c.components); ++p)
            for (std::int32_t y = 0; y < static_cast<std::int32_t>(kHeight); ++y)
                for (std::int32_t x = 0; x < static_cast<std::int32_t>(kWidth); ++x)
                    ASSERT_EQ(image.Buffer().Sample(p, x, y), expected(x, y, p)) << p << "," << x << "," << y;
    }
}
#endif

}  // namespace
}  // namespace Lumivale::Imaging
