#include "Foundations/LVBuffer2DTools/LVBuffer2D.h"
#include "Foundations/LVBuffer2DTools/LVLut.h"
#include "Foundations/LVBuffer2DTools/SampleInterleave.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace Lumivale::Imaging {
namespace {

TEST(LVPixelTypeTest, BytesLimitsAndAlpha) {
    struct Case { const char* id; LVPixelType type; unsigned bitsAllocated; std::int64_t min, max; } cases[] = {
        {"u8", {1, 8, true}, 8, 0, 255},
        {"u12", {3, 12, true}, 16, 0, 4095},
        {"s16", {1, 16, false}, 16, -32768, 32767},
        {"u24", {1, 24, true}, 32, 0, 16777215},
        {"s32", {1, 32, false}, 32, INT32_MIN, INT32_MAX},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(c.type.BitsAllocated(), c.bitsAllocated);
        EXPECT_EQ(c.type.MinValue(), c.min);
        EXPECT_EQ(c.type.MaxValue(), c.max);
    }
    EXPECT_TRUE((LVPixelType{2, 8, true}.HasAlpha()));
    EXPECT_FALSE((LVPixelType{3, 8, true}.HasAlpha()));
}

TEST(LVBuffer2DTest, AllocationStrideAndAlignment) {
    struct Case { const char* id; std::int32_t width, height; unsigned planes, bits; std::size_t alignment; bool ok;
        std::int64_t stride; } cases[] = {
        {"12-bit default 32", 101, 5, 3, 12, 0, true, 224},
        {"8-bit align 1", 7, 3, 1, 8, 1, true, 7},
        {"8-bit align 64", 7, 3, 2, 8, 64, true, 64},
        {"align 24 refused", 7, 3, 1, 8, 24, false, 0},
        {"zero planes", 7, 3, 0, 8, 0, false, 0},
        {"five planes", 7, 3, 5, 8, 0, false, 0},
        {"zero width", 0, 3, 1, 8, 0, false, 0},
        {"negative height", 7, -1, 1, 8, 0, false, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        LVBuffer2D buffer;
        ASSERT_EQ(buffer.Allocate(c.width, c.height, c.planes, c.bits, c.alignment), c.ok);
        if (!c.ok) continue;
        EXPECT_EQ(buffer.LineStride(), c.stride);
        const std::size_t a = c.alignment ? c.alignment : 32;
        for (unsigned p = 0; p < c.planes; ++p) {
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.Plane(p)) % a, 0u);
            EXPECT_EQ(buffer.Plane(p) - buffer.Plane(0), static_cast<std::ptrdiff_t>(c.stride * c.height * p));
        }
    }
    SetBufferAlignmentEnabled(false);  // off means byte alignment
    LVBuffer2D buffer;
    EXPECT_TRUE(buffer.Allocate(101, 2, 1, 8));
    EXPECT_EQ(buffer.LineStride(), 101);
    SetBufferAlignmentEnabled(true);
}

TEST(LVBuffer2DTest, PlaneViews) {
    LVBuffer2D rgba;
    ASSERT_TRUE(rgba.Allocate(4, 3, 4, 8));
    LVBuffer2D threePlanes;
    ASSERT_TRUE(threePlanes.Allocate(4, 3, 3, 8));

    LVBuffer2D view;
    EXPECT_TRUE(threePlanes.MakeView(view, 0, 4, 4, 4));
    EXPECT_EQ(view.Planes(), 1u);
    EXPECT_FALSE(view.OwnsMemory());
    EXPECT_FALSE(threePlanes.MakeView(view, 5, 4, 4, 4));
    EXPECT_EQ(view.Planes(), 0u);
    EXPECT_FALSE(view.IsValid());
    EXPECT_TRUE(threePlanes.MakeView(view, 2, 0));
    EXPECT_EQ(view.Plane(0), threePlanes.Plane(2));
    EXPECT_EQ(view.Plane(1), threePlanes.Plane(0));

    ASSERT_TRUE(rgba.MakeColourPlanesView(view, false));
    EXPECT_EQ(view.Planes(), 3u);
    EXPECT_EQ(view.Plane(2), rgba.Plane(2));
    ASSERT_TRUE(rgba.MakeAlphaView(view));
    EXPECT_EQ(view.Planes(), 1u);
    EXPECT_EQ(view.Plane(0), rgba.Plane(3));
    EXPECT_FALSE(threePlanes.MakeAlphaView(view));

    LVBuffer2D grey;
    ASSERT_TRUE(grey.Allocate(4, 3, 1, 8));
    ASSERT_TRUE(grey.MakeColourPlanesView(view, true));
    EXPECT_EQ(view.Planes(), 3u);
    EXPECT_EQ(view.Plane(2), grey.Plane(0));
    LVBuffer2D empty;
    EXPECT_FALSE(empty.MakeView(view, 0));
}

TEST(LVBuffer2DTest, RectViewFillAndCompare) {
    LVBuffer2D a, b;
    ASSERT_TRUE(a.Allocate(10, 6, 2, 16));
    ASSERT_TRUE(b.Allocate(10, 6, 2, 16));
    ASSERT_TRUE(a.Fill(1000));
    ASSERT_TRUE(b.Fill(1000));
    EXPECT_TRUE(a.Equals(b));

    LVBuffer2D rect;
    ASSERT_TRUE(b.MakeRectView(rect, 3, 2, 4, 3));
    ASSERT_TRUE(rect.Fill(7));
    EXPECT_FALSE(a.Equals(b));
    EXPECT_EQ(b.Sample(1, 3, 2), 7);
    EXPECT_EQ(b.Sample(1, 6, 4), 7);
    EXPECT_EQ(b.Sample(1, 7, 4), 1000);
    EXPECT_EQ(b.Sample(0, 3, 5), 1000);
    EXPECT_FALSE(b.MakeRectView(rect, 8, 0, 3, 1));
    EXPECT_FALSE(b.MakeRectView(rect, -1, 0, 1, 1));
}

TEST(LVLutTest, LinearRampClampsOutsideItsRange) {
    LVLut lut;
    ASSERT_TRUE(lut.BuildLinear(100, 4195, 8));
    EXPECT_EQ(lut.Map(100), 0u);
    EXPECT_EQ(lut.Map(4195), 255u);
    EXPECT_EQ(lut.Map(-5), 0u);
    EXPECT_EQ(lut.Map(99999), 255u);
    EXPECT_FALSE(lut.BuildLinear(5, 4, 8));
    EXPECT_FALSE(lut.BuildLinear(0, LVLut::kMaxEntries, 8));
}

// The shuffles run vectorised over blocks of pixels and scalar over the tail: every width from one
// pixel to several blocks must give the plain result, and the two directions must undo each other.
TEST(SampleInterleaveTest, RoundTripsEveryWidthAcrossVectorBlocks) {
    for (std::size_t width = 1; width <= 130; ++width) {
        SCOPED_TRACE(width);
        std::vector<std::uint8_t> planes(3 * width);
        for (std::size_t i = 0; i < planes.size(); ++i) planes[i] = static_cast<std::uint8_t>(i * 7 + 3);
        std::vector<std::uint8_t> pixels(3 * width + 1, 0xEE);  // one guard byte
        InterleaveThreePlanes(planes.data(), planes.data() + width, planes.data() + 2 * width, pixels.data(), width);
        for (std::size_t x = 0; x < width; ++x)
            for (std::size_t p = 0; p < 3; ++p) ASSERT_EQ(pixels[3 * x + p], planes[p * width + x]);
        EXPECT_EQ(pixels.back(), 0xEE);
        std::vector<std::uint8_t> back(3 * width);
        SplitIntoThreePlanes(pixels.data(), back.data(), back.data() + width, back.data() + 2 * width, width);
        EXPECT_EQ(back, planes);
    }
}

}  // namespace
}  // namespace Lumivale::Imaging
