#include "Foundations/DataModule/DataAdapter/Dicom/Core/Tag.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Core/ValueRepresentation.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <unordered_set>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

using VR = ValueRepresentation;

TEST(Tag, NumberTextOrderAndHash) {
    const struct { const char* id; Tag tag; std::uint32_t number; const char* text; } cases[] = {
        {"patient name", {0x0010, 0x0010}, 0x00100010u, "(0010,0010)"},
        {"private creator", {0x0009, 0x0011}, 0x00090011u, "(0009,0011)"},
        {"item, upper-case hex", {0xFFFE, 0xE000}, 0xFFFEE000u, "(FFFE,E000)"},
    };
    std::unordered_set<Tag> seen;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(c.tag.Number(), c.number);
        EXPECT_EQ(Tag::FromNumber(c.number), c.tag);
        EXPECT_EQ(TagText(c.tag), c.text);
        std::ostringstream printed;
        printed << c.tag;
        EXPECT_EQ(printed.str(), c.text);
        EXPECT_TRUE(seen.insert(c.tag).second);
    }
    // Ordered by group first, as elements are written: an element number never outranks a group.
    EXPECT_LT((Tag{0x0008, 0xFFFF}), (Tag{0x0010, 0x0000}));
    EXPECT_LT((Tag{0x0010, 0x0010}), (Tag{0x0010, 0x0020}));
}

TEST(ValueRepresentation, CodesParseOnceWithUnknownForAnythingElse) {
    const struct { const char* text; VR vr; } cases[] = {
        {"LO", VR::LO}, {"SQ", VR::SQ}, {"UV", VR::UV}, {"XS", VR::XS},
        {"lo", VR::Unknown}, {"L", VR::Unknown}, {"LOX", VR::Unknown}, {"ZZ", VR::Unknown}, {"", VR::Unknown},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(VRFromCode(c.text), c.vr);
    }
    for (int i = 1; i < kValueRepresentationCount; ++i) {
        const auto vr = static_cast<VR>(i);
        EXPECT_EQ(VRFromCode(VRCode(vr)), vr) << VRCode(vr);
    }
}

// PS3.5 Table 7.1-1: the VRs whose explicit header has two reserved bytes and a 32-bit length; the
// later additions and UT are also read with a 16-bit length when that field is not zero.
TEST(ValueRepresentation, LongExplicitLengthFormSet) {
    for (int i = 1; i < kValueRepresentationCount; ++i) {
        const auto vr = static_cast<VR>(i);
        const std::string code(VRCode(vr));
        SCOPED_TRACE(code);
        const bool strict = code == "OB" || code == "OF" || code == "OW" || code == "OX" || code == "SQ" || code == "UN";
        const bool tolerant = code == "OD" || code == "OL" || code == "OV" || code == "SV" || code == "UC" ||
                              code == "UR" || code == "UT" || code == "UV";
        const ExplicitLengthForm expected =
            strict ? ExplicitLengthForm::Long : tolerant ? ExplicitLengthForm::LongOrShort : ExplicitLengthForm::Short;
        EXPECT_EQ(VRLengthForm(vr), expected);
    }
}

TEST(ValueRepresentation, TextFacts) {
    const struct { VR vr; TextCheck check; bool multiple; bool freeText; std::uint32_t maxLength; } cases[] = {
        {VR::LO, TextCheck::Text, true, false, 64},      {VR::LT, TextCheck::Text, false, true, 10240},
        {VR::UR, TextCheck::Text, false, false, kUnlimitedLength}, {VR::PN, TextCheck::PersonName, true, false, 64},
        {VR::US, TextCheck::Binary, true, false, 2},     {VR::SV, TextCheck::Binary64, true, false, 8},
        {VR::OB, TextCheck::None, true, false, kUnlimitedLength}, {VR::AT, TextCheck::None, true, false, 4},
        {VR::XS, TextCheck::None, true, false, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(VRCode(c.vr)));
        const ValueRepresentationRow& row = VRRow(c.vr);
        EXPECT_EQ(row.textCheck, c.check);
        EXPECT_EQ(row.multipleValues, c.multiple);
        EXPECT_EQ(row.freeText, c.freeText);
        EXPECT_EQ(VRMaxLength(c.vr), c.maxLength);
        EXPECT_EQ(VRTakesText(c.vr), c.check != TextCheck::None);
    }
    EXPECT_EQ(VRRow(VR::SS).minValue, -32768.0);
    EXPECT_EQ(VRRow(VR::UL).maxValue, 4294967295.0);
}

}  // namespace
}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
