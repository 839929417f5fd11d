// The icon pack stores: its size and depth, and for each file of the thumbnail corpus
// (make_thumbnail_corpus.py) exactly the pixels an independent decoder gives, upright and shifted
// into the unsigned range.
#include "Foundations/LVCodec/icon/IconImageBuilder.h"
#include "GoldenImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Lumivale::Imaging {
namespace {

using DataModule::IconImageRecord;
using DataModule::PhotometricInterpretation;

TEST(IconImageBuilderTest, ReductionDivisor) {
    struct Case {
        std::uint64_t width, height;
        unsigned divisor;
    } cases[] = {{500, 500, 5}, {1000, 1000, 10}, {3000, 3000, 13}, {50, 50, 1}, {1, 1, 1}, {2236, 2236, 10},
                 {2237, 2237, 10}, {2250, 2250, 10}, {2240, 2250, 10}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
        EXPECT_EQ(IconReductionDivisor(c.width, c.height), c.divisor);
    }
}

// The CLI suite packs 8- and 16-bit thumbnails of every kind; here the depths it does not make.
TEST(IconImageBuilderTest, UnreducedGreyImagesKeepTheirDepth) {
    struct Case {
        const char* id;
        unsigned planes, bits;
    } cases[] = {{"grey 12", 1, 12}, {"grey + alpha 16 drops alpha", 2, 16}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        LVImageMemory image;
        ASSERT_TRUE(image.Allocate(3, 5, c.planes, c.bits));
        for (unsigned p = 0; p < c.planes; ++p)
            for (std::int32_t y = 0; y < 5; ++y)
                for (std::int32_t x = 0; x < 3; ++x) image.Buffer().SetSample(p, x, y, 0x100 * p + 10 * y + x);
        IconImageRecord record;
        record.reduce = false;
        ASSERT_TRUE(SetIconImage(record, image, true));
        EXPECT_EQ(record.samples_per_pixel, 1);
        EXPECT_EQ(record.photometric_interpretation, PhotometricInterpretation::MONOCHROME2);
        EXPECT_EQ(record.rows, 5);
        EXPECT_EQ(record.columns, 3);
        EXPECT_EQ(record.bits_allocated, 16);
        EXPECT_EQ(record.bits_stored, c.bits);
        EXPECT_EQ(record.high_bit, c.bits - 1);
        const auto bytes = record.pixel_data.at(0).MemoryBytes();
        ASSERT_EQ(bytes.size(), 3u * 5u * 2u);
        EXPECT_EQ(bytes[8] | bytes[9] << 8, 10 + 1);  // second pixel of the second row, little-endian
    }
}

TEST(IconImageBuilderTest, ReducingPathShrinksAndMapsToEightBits) {
    LVImageMemory image;
    ASSERT_TRUE(image.Allocate(500, 500, 1, 12));
    for (std::int32_t y = 0; y < 500; ++y)
        for (std::int32_t x = 0; x < 500; ++x) image.Buffer().SetSample(0, x, y, 100 + x * 8);
    IconImageRecord record;
    ASSERT_TRUE(SetIconImage(record, image, true));
    EXPECT_EQ(record.rows, 100);
    EXPECT_EQ(record.columns, 100);
    EXPECT_EQ(record.bits_allocated, 8);
    EXPECT_EQ(record.bits_stored, 8);
    const auto bytes = record.pixel_data.at(0).MemoryBytes();
    ASSERT_EQ(bytes.size(), 100u * 100u);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(bytes[99], 255);
    EXPECT_LT(bytes[40], bytes[60]);
}

// The consuming builder gives the source's rows back while it copies them: the icon must still hold
// every row, across several release runs (about 512 KiB per plane each) and the last partial one.
TEST(IconImageBuilderTest, ConsumingTheSourceGivesTheSameIcon) {
    struct Case {
        const char* id;
        std::int32_t width, height;
        unsigned planes, bits;
    } cases[] = {{"grey 8, several release runs", 200, 30000, 1, 8},
                 {"rgb + alpha 8", 96, 50000, 4, 8},
                 {"grey 16", 33, 60001, 1, 16}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        LVImageMemory image;
        ASSERT_TRUE(image.Allocate(c.width, c.height, c.planes, c.bits));
        for (unsigned p = 0; p < c.planes; ++p)
            for (std::int32_t y = 0; y < c.height; ++y)
                for (std::int32_t x = 0; x < c.width; ++x) image.Buffer().SetSample(p, x, y, x * 3 + y * 7 + p * 101);
        IconImageRecord copied, consumed;
        copied.reduce = consumed.reduce = false;
        ASSERT_TRUE(SetIconImage(copied, image, true));
        ASSERT_TRUE(SetIconImage(consumed, std::move(image)));
        EXPECT_FALSE(image.Buffer().IsValid());
        const auto expected = copied.pixel_data.at(0).MemoryBytes();
        const auto actual = consumed.pixel_data.at(0).MemoryBytes();
        ASSERT_EQ(actual.size(), expected.size());
        EXPECT_TRUE(std::equal(actual.begin(), actual.end(), expected.begin()));
        EXPECT_EQ(consumed.samples_per_pixel, copied.samples_per_pixel);
        EXPECT_EQ(consumed.pixel_description.bytes_per_line, copied.pixel_description.bytes_per_line);
    }
}

const std::string kCorpus = DICAPSULE_THUMBNAIL_CORPUS;
#ifdef DICAPSULE_WITHOUT_EXTENDED_JPEG
constexpr bool kExtendedJpeg = false;
#else
constexpr bool kExtendedJpeg = true;
#endif
#ifdef DICAPSULE_WITHOUT_JPEGLS
constexpr bool kJpegLs = false;
#else
constexpr bool kJpegLs = true;
#endif

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
        const std::string path = kCorpus + "/" + c.file;
        if ((c.extendedJpeg && !kExtendedJpeg) || (std::string_view(c.file).starts_with("jls_") && !kJpegLs)) {
            LVImage refused;
            EXPECT_FALSE(LoadThumbnail(path, refused)) << "a build without the decoder refuses the file";
            continue;
        }
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
TEST(CrashOnlyThumbnailCorpusTest, TruncatedSourcesAreRefusedCleanly) {
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
