#include "Foundations/LVCodec/icon/IconImageBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

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

}  // namespace
}  // namespace Lumivale::Imaging
