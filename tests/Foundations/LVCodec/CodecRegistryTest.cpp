#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/LVImageCodecRegistry.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>

namespace Lumivale::Imaging {
namespace {

const std::string kImages = DICAPSULE_GENERATED_IMAGES;

TEST(CodecRegistryTest, FixedSlotsAndDefaultAfterTheTerminator) {
    const LVImageCodec* const* registry = ImageCodecRegistry();
    EXPECT_STREQ(registry[1]->Name(), "JPEG");
    EXPECT_STREQ(registry[3]->Name(), "PNG");
    EXPECT_STREQ(registry[4]->Name(), "BMP");
    EXPECT_EQ(registry[8], nullptr);
    EXPECT_STREQ(registry[9]->Name(), "Unknown");
    EXPECT_EQ(registry[9]->Capabilities(), 0u);
    for (unsigned id = 0; id <= 8; ++id) EXPECT_EQ(FindCodecById(id).FormatId(), id);
    EXPECT_STREQ(FindCodecById(42).Name(), "Unknown");
    EXPECT_STREQ(FindCodecById(7).Name(), "JpegLS");
    EXPECT_STREQ(FindCodecById(1).Name(), "JPEG2000");
}

TEST(CodecRegistryTest, ExtensionLookup) {
    struct Case {
        const char* path;
        const char* codec;  // null: none
    } cases[] = {{"a/b.PNG", "PNG"},        {"scan.sensix", "DICOM"},  {"x.Jpe", "JPEG"},   {"x.jls", "JpegLS"},
                 {"dir.v2/x.TIFF", "TIFF"}, {"x.pam", "PNM"},          {"x.jp2", "JPEG2000"}, {"noextension", nullptr},
                 {"x.gif", nullptr},        {"x.png.dat", nullptr},    {"x.", nullptr}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        const LVImageCodec* codec = FindCodecByExtension(c.path);
        if (c.codec == nullptr) {
            EXPECT_EQ(codec, nullptr);
        } else {
            ASSERT_NE(codec, nullptr);
            EXPECT_STREQ(codec->Name(), c.codec);
        }
    }
}

TEST(CodecRegistryTest, SignatureLookup) {
    const std::string renamed = kImages + "/signature_probe.bin";
    struct Case {
        const char* id;
        std::string bytes;
        const char* codec;
    } cases[] = {
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
        if (c.codec == nullptr) {
            EXPECT_EQ(codec, nullptr);
        } else {
            ASSERT_NE(codec, nullptr);
            EXPECT_STREQ(codec->Name(), c.codec);
        }
    }
    std::remove(renamed.c_str());
}

TEST(CodecRegistryTest, LoadChoosesTheCodecByExtensionOrSignature) {
    const std::string png = kImages + "/png_RGB.png";
    const std::string disguised = kImages + "/png_RGB_copy.dat";
    {
        std::ifstream in(png, std::ios::binary);
        std::ofstream(disguised, std::ios::binary) << in.rdbuf();
    }
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
