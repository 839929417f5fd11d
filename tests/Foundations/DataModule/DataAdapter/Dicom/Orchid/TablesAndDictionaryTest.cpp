// VR codes and the dictionary's lookups by tag, value and keyword.

#include <gtest/gtest.h>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

TEST(ValueRepresentationTable, CodesReadBackAndOutOfRangeIsUnknown) {
    for (int i = 1; i < kValueRepresentationCount; ++i) {
        const auto vr = static_cast<VR>(i);
        EXPECT_EQ(VRFromCode(VRCode(vr)), vr) << VRCode(vr);
    }
    EXPECT_EQ(VRFromCode("ZZ"), VR::Unknown);
    EXPECT_EQ(VRFromCode("U"), VR::Unknown);
    EXPECT_EQ(VRCode(static_cast<VR>(200)), "");
    EXPECT_EQ(VRUnitSize(static_cast<VR>(200)), 1u);
    EXPECT_EQ(VMMaximum(static_cast<VM>(kValueMultiplicityCount)), 1);
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
    EXPECT_EQ(EntryByTag(0x00091234).value, 0u);
    EXPECT_EQ(EntryByKeyword("NoSuchKeyword").value, 0u);
    EXPECT_EQ(EntryByKeyword("").value, 0u);
}

TEST(DataDictionary, OverlayGroupsFoldOntoTheFirst) {
    EXPECT_EQ(EntryByTag(0x60023000).value, static_cast<std::uint32_t>(Tag::OverlayData));
    EXPECT_EQ(EntryByTag(0x601E0010).vr, VR::US);
    EXPECT_EQ(EntryByTag(0x60013000).value, 0u);  // odd groups are private, not overlays
    EXPECT_EQ(EntryByTag(0x61003000).value, 0u);  // past the last overlay group
}

}  // namespace
}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
