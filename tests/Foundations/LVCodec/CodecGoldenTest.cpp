// Every codec and bit depth against the pixels PIL decodes from the same generated file, and how a
// codec is chosen for a file.
#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/LVImageCodecRegistry.h"
#include "GoldenImage.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace Lumivale::Imaging {
namespace {

const std::string kImages = DICAPSULE_GENERATED_IMAGES;

TEST(CodecGoldenTest, DecodedPixelsMatchPil) {
    struct Case {
        const char* file;
        unsigned frame;
        std::int64_t tolerance;  // CMYK conversion rounds differently
        unsigned bits;           // significant bits expected
    } cases[] = {
        {"png_L.png", 0, 0, 8},        {"png_LA.png", 0, 0, 8},        {"png_RGB.png", 0, 0, 8},
        {"png_RGBA.png", 0, 0, 8},     {"png_palette.png", 0, 0, 8},   {"png_1bit.png", 0, 0, 8},
        {"png_grey16.png", 0, 0, 16},  {"jpeg_L.jpg", 0, 0, 8},        {"jpeg_RGB.jpg", 0, 0, 8},
        {"jpeg_CMYK.jpg", 0, 1, 8},    {"cjpeg_grey.jpeg", 0, 0, 8},   {"tiff_L.tif", 0, 0, 8},
        {"tiff_RGB.tif", 0, 0, 8},     {"tiff_grey16.tif", 0, 0, 16},  {"tiff_palette.tif", 0, 0, 8},
        {"tiff_tiled.tif", 0, 0, 8},   {"tiff_separate.tif", 0, 0, 8}, {"tiff_pages.tif", 1, 0, 8},
        {"j2k_L.j2k", 0, 0, 8},        {"j2k_RGB.jp2", 0, 0, 8},       {"j2k_grey16.j2k", 0, 0, 16},
        {"bmp_1bit.bmp", 0, 0, 8},     {"bmp_grey8.bmp", 0, 0, 8},     {"bmp_palette8.bmp", 0, 0, 8},
        {"bmp_palette4.bmp", 0, 0, 8}, {"bmp_rle8.bmp", 0, 0, 8},      {"bmp_RGB.bmp", 0, 0, 8},
        {"bmp_RGBA.bmp", 0, 0, 8},     {"pnm_P1.pbm", 0, 0, 8},        {"pnm_P2.pgm", 0, 0, 8},
        {"pnm_P3.ppm", 0, 0, 8},       {"pnm_P4.pbm", 0, 0, 8},        {"pnm_P5.pgm", 0, 0, 8},
        {"pnm_P6.ppm", 0, 0, 8},       {"pnm_P5_16.pgm", 0, 0, 16},    {"pnm_grey.pam", 0, 0, 8},
        {"pnm_RGB.pam", 0, 0, 8},      {"dicom_icon.dcm", 0, 0, 8},    {"dicom_implicit.dcm", 0, 0, 8},
        {"dicom_jpeg.dcm", 0, 0, 8},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string path = kImages + "/" + c.file;
        Golden golden;
        ASSERT_TRUE(ReadGolden(path + ".golden", golden));
        LVImage image;
        ASSERT_TRUE(image.LoadFromFile(path, c.frame, 0, 0));
        const LVBuffer2D& b = image.Buffer();
        ASSERT_EQ(b.Planes(), golden.planes);
        ASSERT_EQ(b.Width(), golden.width);
        ASSERT_EQ(b.Height(), golden.height);
        EXPECT_EQ(b.Type().BytesPerSample(), golden.bytes);
        EXPECT_EQ(b.Bits(), c.bits);
        std::int64_t worst = 0;
        for (unsigned p = 0; p < golden.planes; ++p)
            for (std::int32_t y = 0; y < golden.height; ++y)
                for (std::int32_t x = 0; x < golden.width; ++x)
                    worst = std::max(worst, std::abs(b.Sample(p, x, y) - golden.At(p, x, y)));
        EXPECT_LE(worst, c.tolerance);
    }
}

// Truncated copies of every generated file fail or decode, but never crash or leak.
TEST(CrashOnlyCodecGoldenTest, TruncatedFilesAreRefusedCleanly) {
    const char* files[] = {"png_RGB.png",   "jpeg_RGB.jpg", "tiff_tiled.tif", "j2k_RGB.jp2",    "bmp_rle8.bmp",
                           "pnm_RGB.pam",   "pnm_P3.ppm",   "dicom_icon.dcm", "dicom_jpeg.dcm", "bmp_palette4.bmp"};
    for (const char* file : files) {
        SCOPED_TRACE(file);
        LoadCutCopies(kImages, file, [](const std::string& cut) { LVImage().LoadFromFile(cut, 0); });
    }
}

TEST(CodecRegistryTest, EveryCodecIsFoundByItsIdAndOtherIdsGetTheDefault) {
    for (const LVImageCodec* codec : ImageCodecRegistry()) {
        EXPECT_EQ(&FindCodecById(codec->FormatId()), codec) << codec->Name();
    }
    EXPECT_STREQ(FindCodecById(42).Name(), "Unknown");
    EXPECT_EQ(FindCodecById(42).Capabilities(), 0u);
}

TEST(CodecRegistryTest, ExtensionLookup) {
    struct Case {
        const char* path;
        const char* codec;  // null: none
    } cases[] = {{"a/b.PNG", "PNG"},        {"scan.sensix", "DICOM"},  {"x.Jpe", "JPEG"},   {"x.jls", "JpegLS"},
                 {"dir.v2/x.TIFF", "TIFF"}, {"x.pam", "PNM"},          {"x.jp2", "JPEG2000"}, {"noextension", nullptr},
                 {"x.gif", nullptr},        {"x.png.dat", nullptr},    {"x.", nullptr}};
    for (const Case& c : cases) {
        const LVImageCodec* codec = FindCodecByExtension(c.path);
        EXPECT_STREQ(codec ? codec->Name() : nullptr, c.codec) << c.path;
    }
}

TEST(CodecRegistryTest, SignatureLookup) {
    const std::string renamed = kImages + "/signature_probe.bin";
    struct Case { const char* id; std::string bytes; const char* codec; } cases[] = {
        {"jpeg-ls claimed by jpeg", std::string("\xFF\xD8\xFF\xF7", 4) + "rest", "JPEG"},
        {"jp2 odd record", std::string("\x00\x00\x00\x0C\x6A\x00\x78\x35", 8), "JPEG2000"},
        {"standard jp2 box", std::string("\x00\x00\x00\x0C\x6A\x50\x20\x20", 8), nullptr},
        {"pam", "P7\nWIDTH 1\n", "PNM"},
        {"tiff big endian", std::string("MM\x00\x2A", 4), "TIFF"},
        {"dicom", std::string(128, '\0') + "DICM", "DICOM"},
        {"short of the dicom signature", std::string(128, '\0') + "DIC", nullptr},
        {"png cut short", "\x89PNG", nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        std::ofstream(renamed, std::ios::binary) << c.bytes;
        const LVImageCodec* codec = FindCodecBySignature(renamed);
        EXPECT_STREQ(codec ? codec->Name() : nullptr, c.codec);
    }
    std::remove(renamed.c_str());
}

TEST(CodecRegistryTest, LoadChoosesTheCodecByExtensionOrSignature) {
    const std::string png = kImages + "/png_RGB.png";
    const std::string disguised = kImages + "/png_RGB_copy.dat";
    TestFiles::WriteBytes(disguised, TestFiles::ReadBytes(png));
    LVImage image;
    EXPECT_FALSE(image.LoadFromFile(disguised, 0));
    EXPECT_TRUE(image.LoadFromFile(disguised, kLoadBySignature));
    EXPECT_EQ(image.Buffer().Planes(), 3u);
    std::remove(disguised.c_str());
    EXPECT_FALSE(image.LoadFromFile(kImages + "/missing.png", 0));
    EXPECT_FALSE(image.LoadFromFile(kImages + "/missing.png", kLoadBySignature));
}

}  // namespace
}  // namespace Lumivale::Imaging
