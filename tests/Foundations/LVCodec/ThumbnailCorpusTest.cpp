// The icon that pack stores for each file of the thumbnail corpus (make_thumbnail_corpus.py) holds
// exactly the pixels an independent decoder gives, upright and shifted into the unsigned range.
#include "Foundations/LVCodec/icon/IconImageBuilder.h"
#include "Foundations/LVCodec/jpeg/JpegExtendedDecoder.h"
#include "GoldenImage.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace Lumivale::Imaging {
namespace {

const std::string kCorpus = DICAPSULE_THUMBNAIL_CORPUS;

struct Case {
    std::string file;
    unsigned bitsStored;  // DICOM files: their Bits Stored; plain files: the stream's precision
    bool extendedJpeg = false;  // needs the 12-bit and lossless JPEG decoder
};

std::vector<Case> Cases() {
    std::vector<Case> cases = {
        {"jls_rgb8_line.dcm", 8},          {"jls_rgb8_line.jls", 8},        {"jls_rgb8_sample.dcm", 8},
        {"jls_rgb8_sample.jls", 8},        {"jls_rgb8_none.dcm", 8},        {"jls_rgb8_none.jls", 8},
        {"jls_rgb12_line.dcm", 12},        {"jls_rgb12_line.jls", 16},      {"jls_grey8_grey.jls", 8},
        {"jls_grey12_grey.dcm", 12},       {"jls_grey12_grey.jls", 16},     {"jls_grey16_grey.jls", 16},
        {"src_ct.dcm", 12},                {"src_ct16.dcm", 16},            {"rle_ct.dcm", 12},
        {"jls_ct.dcm", 12},                {"j2k_ct.dcm", 12},              {"j2k_ct.j2k", 16},                {"rle_grey8.dcm", 8},            {"rle_grey12.dcm", 12},
        {"rle_rgb8.dcm", 8},               {"tiff_palette_o6_strips.tif", 8}, {"tiff_cmyk_o7_strips.tif", 8},
        {"tiff_cmyk_o5_tiles.tif", 8},     {"tiff_rgb_o8_tiles.tif", 8},               {"jpeg_rgb_notransform.dcm", 8},
        {"jpeg_grey12_extended.dcm", 12, true}, {"jpeg_grey12_extended.jpg", 12, true},
        {"jpeg_grey12_lossless.dcm", 12, true}, {"jpeg_grey12_lossless.jpg", 16, true},
        {"jpeg_grey12_sv1.dcm", 12, true},      {"jpeg_grey12_sv1.jpg", 16, true},
        {"jpeg_grey16_sv1.dcm", 16, true},      {"jpeg_grey16_sv1.jpg", 16, true},
        {"jpeg_rgb8_sv1.dcm", 8, true},         {"jpeg_rgb8_sv1.jpg", 8, true},
        {"jpeg_grey8_lossless.dcm", 8, true},   {"jpeg_grey8_lossless.jpg", 8, true},
    };
    for (int o = 1; o <= 8; ++o) {
        for (const char* kind : {"grey", "rgb", "cmyk", "palette"})
            cases.push_back({"tiff_" + std::string(kind) + "_o" + std::to_string(o) + ".tif", 8});
        cases.push_back({"tiff_grey16_o" + std::to_string(o) + ".tif", 16});
        for (const char* kind : {"grey", "rgb"})
            cases.push_back({"jpeg_exif_" + std::string(kind) + "_o" + std::to_string(o) + ".jpg", 8});
    }
    return cases;
}

// The golden planes as DICOM stores them: the samples of a pixel side by side, little-endian.
std::vector<std::uint8_t> Interleaved(const Golden& golden) {
    std::vector<std::uint8_t> bytes;
    for (std::int32_t y = 0; y < golden.height; ++y)
        for (std::int32_t x = 0; x < golden.width; ++x)
            for (unsigned p = 0; p < golden.planes; ++p) {
                const std::int64_t v = golden.At(p, x, y);
                bytes.push_back(static_cast<std::uint8_t>(v));
                if (golden.bytes == 2) bytes.push_back(static_cast<std::uint8_t>(v >> 8));
            }
    if (bytes.size() % 2) bytes.push_back(0);
    return bytes;
}

TEST(ThumbnailCorpusTest, IconEqualsAnIndependentDecoder) {
    for (const Case& c : Cases()) {
        SCOPED_TRACE(c.file);
        if (c.extendedJpeg && !HasExtendedJpeg()) continue;
#ifdef DICAPSULE_WITHOUT_JPEGLS
        if (std::string_view(c.file).starts_with("jls_")) continue;  // a build without CharLS refuses these
#endif
        const std::string path = kCorpus + "/" + c.file;
        Golden golden;
        ASSERT_TRUE(ReadGolden(path + ".golden", golden));
        LVImage image;
        ASSERT_TRUE(LoadThumbnail(path, image));
        DataModule::IconImageRecord record;
        record.reduce = false;
        ASSERT_TRUE(SetIconImage(record, image, true));
        EXPECT_EQ(record.columns, golden.width);
        EXPECT_EQ(record.rows, golden.height);
        EXPECT_EQ(record.samples_per_pixel, golden.planes);
        EXPECT_EQ(record.bits_allocated, golden.bytes * 8);
        EXPECT_EQ(record.bits_stored, c.bitsStored);
        EXPECT_EQ(record.pixel_representation, 0);
        const auto icon = record.pixel_data.at(0).MemoryBytes();
        const std::vector<std::uint8_t> expected = Interleaved(golden);
        ASSERT_EQ(icon.size(), expected.size());
        std::size_t wrong = 0;
        for (std::size_t i = 0; i < icon.size(); ++i) wrong += icon[i] != expected[i];
        EXPECT_EQ(wrong, 0u) << "of " << icon.size() << " bytes";
    }
}

// Cut copies of the new kinds of source fail or decode, but never crash or read out of bounds.
TEST(ThumbnailCorpusTest, TruncatedSourcesAreRefusedCleanly) {
    const char* files[] = {"rle_rgb8.dcm",          "rle_grey12.dcm",     "jls_rgb8_line.jls", "jls_rgb8_none.dcm",
                           "jpeg_grey12_sv1.jpg",   "jpeg_rgb8_sv1.dcm",  "jpeg_exif_rgb_o6.jpg",
                           "jpeg_grey12_extended.dcm", "j2k_ct.j2k",      "tiff_cmyk_o5.tif",  "tiff_grey16_o7.tif"};
    for (const char* file : files) {
        SCOPED_TRACE(file);
        LoadCutCopies(kCorpus, file, [](const std::string& cut) {
            LVImage image;
            LoadThumbnail(cut, image);
        });
    }
}

}  // namespace
}  // namespace Lumivale::Imaging
