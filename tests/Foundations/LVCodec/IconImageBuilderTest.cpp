#include "Foundations/LVCodec/icon/IconImageBuilder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace Lumivale::Imaging {
namespace {

using DataModule::IconImageRecord;
using DataModule::PhotometricInterpretation;

const std::string kImages = DICAPSULE_GENERATED_IMAGES;

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

TEST(IconImageBuilderTest, UnreducedImagesKeepTheirFormat) {
    struct Case {
        const char* id;
        unsigned planes, bits;
        std::uint16_t spp, allocated, stored, highBit;
        PhotometricInterpretation::Enum photometric;
        std::size_t pixelBytes;  // serialised, padded to even
    } cases[] = {
        {"grey 8", 1, 8, 1, 8, 8, 7, PhotometricInterpretation::MONOCHROME2, 3 * 5 + 1},
        {"grey 12", 1, 12, 1, 16, 12, 11, PhotometricInterpretation::MONOCHROME2, 3 * 5 * 2},
        {"rgb 8", 3, 8, 3, 8, 8, 7, PhotometricInterpretation::RGB, 3 * 5 * 3 + 1},
        {"rgba drops alpha", 4, 8, 3, 8, 8, 7, PhotometricInterpretation::RGB, 3 * 5 * 3 + 1},
        {"grey + alpha drops alpha", 2, 16, 1, 16, 16, 15, PhotometricInterpretation::MONOCHROME2, 3 * 5 * 2},
    };
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
        EXPECT_TRUE(record.is_set);
        EXPECT_EQ(record.samples_per_pixel, c.spp);
        EXPECT_EQ(record.rows, 5);
        EXPECT_EQ(record.columns, 3);
        EXPECT_EQ(record.bits_allocated, c.allocated);
        EXPECT_EQ(record.bits_stored, c.stored);
        EXPECT_EQ(record.high_bit, c.highBit);
        EXPECT_EQ(record.pixel_representation, 0);
        EXPECT_EQ(record.photometric_interpretation, c.photometric);
        EXPECT_EQ(record.planar_configuration.has_value(), c.spp == 3);
        ASSERT_EQ(record.pixel_data.size(), 1u);
        const auto bytes = record.pixel_data.at(0).MemoryBytes();
        ASSERT_EQ(bytes.size(), c.pixelBytes);
        // Second pixel of the second row, last colour sample: interleaved, little-endian.
        const std::size_t sampleBytes = c.allocated / 8;
        const std::size_t at = ((1 * 3 + 1) * c.spp + (c.spp - 1)) * sampleBytes;
        const std::int64_t expected = (0x100 * (c.spp - 1) + 10 + 1) & ((1 << c.bits) - 1);
        std::int64_t value = bytes[at];
        if (sampleBytes == 2) value |= bytes[at + 1] << 8;
        EXPECT_EQ(value, expected);
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

TEST(IconImageBuilderTest, ThumbnailLoadsByExtensionOnly) {
    const std::string jpeg = kImages + "/jpeg_RGB.jpg";
    struct Case {
        const char* suffix;
        bool ok;
    } cases[] = {{".JPG", true}, {".dat", false}, {"", false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.suffix);
        const std::string copy = kImages + "/thumbnail_copy" + c.suffix;
        {
            std::ifstream in(jpeg, std::ios::binary);
            std::ofstream(copy, std::ios::binary) << in.rdbuf();
        }
        LVImage image;
        EXPECT_EQ(LoadThumbnail(copy, image), c.ok);
        std::remove(copy.c_str());
    }
}

}  // namespace
}  // namespace Lumivale::Imaging
