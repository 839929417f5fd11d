// VR and VM rows, and dictionary lookups by tag, value and keyword.

#include <gtest/gtest.h>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

TEST(ValueRepresentationTable, RowsKeepTheirOddities) {
    struct Case {
        const char* id;
        VR vr;
        std::string_view code;
        std::string_view name;
        bool fixed, pad;
        std::uint8_t padByte;
        bool charset;
        unsigned unit;
    };
    const Case cases[] = {
        {"unknown", VR::Unknown, "", "Unknown", true, false, 0x00, false, 1},
        {"AS fixed, unpadded, #", VR::AS, "AS", "Age String", true, false, 0x23, false, 1},
        {"UI pads NUL", VR::UI, "UI", "Unique Identifier", false, true, 0x00, false, 1},
        {"PN charset", VR::PN, "PN", "Person Name", false, true, 0x20, true, 1},
        {"OW unpadded words", VR::OW, "OW", "Other Word", false, false, 0x23, false, 2},
        {"OX display name", VR::OX, "OX", "OB o OW", false, true, 0x00, false, 1},
        {"SW last row", VR::SW, "SW", "US or SS or OW", true, false, 0x23, false, 2},
        {"out of range", static_cast<VR>(200), "", "Unknown", true, false, 0x00, false, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(VRCode(c.vr), c.code);
        EXPECT_EQ(VRDisplayName(c.vr), c.name);
        EXPECT_EQ(VRIsFixedLength(c.vr), c.fixed);
        EXPECT_EQ(VRPadsToEven(c.vr), c.pad);
        EXPECT_EQ(VRPadByte(c.vr), c.padByte);
        EXPECT_EQ(VRCharacterSetApplies(c.vr), c.charset);
        EXPECT_EQ(VRUnitSize(c.vr), c.unit);
        if (!c.code.empty()) {
            EXPECT_EQ(VRFromCode(c.code), c.vr);
        }
    }
    EXPECT_EQ(VRMaxLength(VR::LT), 10240u);
    EXPECT_EQ(VRMaxLength(VR::UT), kUnlimitedLength);
    EXPECT_EQ(VRFromCode("ZZ"), VR::Unknown);
    EXPECT_EQ(VRValueDelimiter(VR::DS), '\\');
}

TEST(ValueMultiplicityTable, BoundsAndTexts) {
    struct Case {
        const char* id;
        VM vm;
        int min, max;
        std::string_view text;
        bool multi;
    };
    const Case cases[] = {
        {"single", VM::_1, 1, 1, "1", false},
        {"open", VM::_1_n, 1, kVMUnbounded, "1-n", true},
        {"even", VM::_2_2n, 2, kVMUnboundedEven, "2-2n", true},
        {"triple", VM::_3_3n, 3, kVMUnboundedTriple, "3-3n", true},
        {"fixed two", VM::_2, 2, 2, "2", true},
        {"last", VM::_16, 16, 16, "16", true},
        {"out of range", static_cast<VM>(19), 1, 1, "1", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(VMMinimum(c.vm), c.min);
        EXPECT_EQ(VMMaximum(c.vm), c.max);
        EXPECT_EQ(VMText(c.vm), c.text);
        EXPECT_EQ(VMIsMultiValued(c.vm), c.multi);
    }
}

TEST(DataDictionary, FixedRowsAndLookups) {
    struct Case {
        const char* id;
        std::uint32_t tag;
        std::uint32_t value;
        std::string_view keyword;
        std::string_view name;
        VR vr;
        VM vm;
    };
    const Case cases[] = {
        {"group length 0000", 0x00000000, 1, "GroupLength_0000", "Command Group Length", VR::UL, VM::_1},
        {"item", 0xFFFEE000, 4346, "Item", "Item", VR::Unknown, VM::_1},
        {"item end", 0xFFFEE00D, 4347, "ItemDelimitationItem", "Item Delimitation Item", VR::Unknown, VM::_1},
        {"sequence end", 0xFFFEE0DD, 4348, "SequenceDelimitationItem", "Sequence Delimitation Item", VR::Unknown, VM::_1},
        {"private group length", 0x00090000, 4349, "GroupLength_0009", "Private Group Length", VR::UL, VM::_1},
        {"creator", 0x00090011, 4350, "Orchid_PrivateCreatorID", "Private Creator Identifier", VR::LO, VM::_1},
        {"mirror", 0x00091101, 4351, "Orchid_Velor6MirrorEffect", "Velor6 Mirror Effect", VR::CS, VM::_1},
        {"zones", 0x00091124, 4368, "Orchid_ImageZones", "Image Zone Coordinates", VR::SS, VM::_1_n},
        {"out of tag order", 0x0009111E, 4399, "Orchid_PositionOfIsocenterProjection",
         "Isocenter Projection Position in Decimal", VR::DS, VM::_2},
        {"payload", 0x000911A3, 4404, "Orchid_CustomDataValue", "Orchid Custom Data Value", VR::UN, VM::_1},
        {"no keyword", 0x0009117C, 4412, "", "Holder Position", VR::US, VM::_1},
        {"standard", 0x00100010, static_cast<std::uint32_t>(Tag::PatientName), "PatientName", "Patient's Name",
         VR::PN, VM::_1},
        {"ambiguous", 0x7FE00010, static_cast<std::uint32_t>(Tag::PixelData), "PixelData", "Pixel Data", VR::OX, VM::_1},
        {"unknown", 0x00091234, 0, "", "Unknown", VR::Unknown, VM::_1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        const DictionaryEntry& byTag = EntryByTag(c.tag);
        EXPECT_EQ(byTag.value, c.value);
        EXPECT_EQ(byTag.name, c.name);
        EXPECT_EQ(byTag.vr, c.vr);
        EXPECT_EQ(byTag.vm, c.vm);
        EXPECT_EQ(TagKeyword(static_cast<Tag>(c.value)), c.keyword);
        if (c.value != 0) {
            EXPECT_EQ(TagNumber(static_cast<Tag>(c.value)), c.tag);
        }
        if (!c.keyword.empty()) {
            EXPECT_EQ(EntryByKeyword(c.keyword).value, c.value);
        }
        EXPECT_FALSE(c.value >= 4349 && c.value <= 4412 && byTag.standard);
    }
}

TEST(DataDictionary, EveryRowIsFoundByTagAndKeyword) {
    for (std::uint32_t value = 1; value < DictionaryEntryCount(); ++value) {
        const DictionaryEntry& entry = EntryByValue(static_cast<Tag>(value));
        ASSERT_EQ(EntryByTag(entry.tag).value, value) << entry.name;
        if (!entry.keyword.empty()) {
            ASSERT_EQ(EntryByKeyword(entry.keyword).value, value) << entry.keyword;
        }
    }
    EXPECT_EQ(EntryByValue(static_cast<Tag>(DictionaryEntryCount())).value, 0u);
}

TEST(DataDictionary, OverlayGroupsFoldOntoTheFirst) {
    EXPECT_EQ(EntryByTag(0x60023000).value, static_cast<std::uint32_t>(Tag::OverlayData));
    EXPECT_EQ(EntryByTag(0x601E0010).vr, VR::US);
    EXPECT_EQ(EntryByTag(0x60013000).value, 0u);  // odd groups are private, not overlays
}

}  // namespace
}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
