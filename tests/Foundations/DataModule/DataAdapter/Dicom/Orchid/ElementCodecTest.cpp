// VR codes, the dictionary's lookups by tag, value and keyword, and the value bytes the element codec
// makes for each kind of value and VR.

#include <gtest/gtest.h>

#include <functional>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/OrchidDataElementCodec.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

using Bytes = std::vector<std::uint8_t>;

// An element of the attribute's tag (and so its dictionary VM) but with the given VR.
DicomDataSetElement ElementOf(Tag tag, VR vr) {
    return DicomDataSetElement(tag, vr, Bytes{0x55});
}

Bytes Text(std::string_view text) { return Bytes(text.begin(), text.end()); }

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
        const DictionaryEntry& entry = EntryByValue(value);
        ASSERT_EQ(EntryByTag(entry.tag).value, value) << entry.name;
        if (!entry.keyword.empty()) {
            ASSERT_EQ(EntryByKeyword(entry.keyword).value, value) << entry.keyword;
        }
    }
    EXPECT_EQ(EntryByValue(DictionaryEntryCount()).value, 0u);
    EXPECT_EQ(EntryByTag(Tag{0x0009, 0x1234}).value, 0u);
    EXPECT_EQ(EntryByKeyword("NoSuchKeyword").value, 0u);
    EXPECT_EQ(EntryByKeyword("").value, 0u);
}

TEST(DataDictionary, OverlayGroupsFoldOntoTheFirst) {
    EXPECT_EQ(EntryByTag(Tag{0x6002, 0x3000}).value, EntryByTag(Tags::OverlayData).value);
    EXPECT_EQ(EntryByTag(Tag{0x601E, 0x0010}).vr, VR::US);
    EXPECT_EQ(EntryByTag(Tag{0x6001, 0x3000}).value, 0u);  // odd groups are private, not overlays
    EXPECT_EQ(EntryByTag(Tag{0x6100, 0x3000}).value, 0u);  // past the last overlay group
}

TEST(ElementCodec, StoredBytesByVR) {
    const std::int64_t ints[] = {1, 2, 3};
    const double doubles[] = {0.5, 2};
    struct Case { const char* id; Tag tag; VR vr; std::function<void(OrchidDataElementCodec&)> store; Bytes expected;
        std::string trace; };
    const Case cases[] = {
        {"CS odd padded with space", Tags::Modality, VR::CS, [](auto& c) { c.StoreCharacters("ABC"); }, Text("ABC "), ""},
        {"CS even unpadded", Tags::Modality, VR::CS, [](auto& c) { c.StoreCharacters("AB"); }, Text("AB"), ""},
        {"UI padded with NUL", Tags::SOPInstanceUID, VR::UI, [](auto& c) { c.StoreUID("1.2.3"); },
         Bytes{'1', '.', '2', '.', '3', 0}, ""},
        {"texts joined once padded", Tags::ImageType, VR::CS, [](auto& c) { c.StoreTexts({"A", "B"}); }, Text("A\\B "), ""},
        {"IS integers", Tags::ReferencedFrameNumber, VR::IS, [&](auto& c) { c.StoreIntegers(ints); }, Text("1\\2\\3 "), ""},
        {"US integers", Tags::Orchid_ImageZones, VR::US, [&](auto& c) { c.StoreIntegers(ints); }, Bytes{1, 0, 2, 0, 3, 0}, ""},
        {"SL integers", Tags::Orchid_Velor6CornerSize, VR::SL, [&](auto& c) { c.StoreIntegers(ints); },
         Bytes{1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0}, ""},
        {"FL integers untouched", Tags::Orchid_DoseWidthProduct, VR::FL, [&](auto& c) { c.StoreIntegers(ints); }, Bytes{0x55},
         "Missing implementation for VR Floating Point Single"},
        {"single-valued VM untouched", Tags::Rows, VR::US, [&](auto& c) { c.StoreIntegers(ints); }, Bytes{0x55}, ""},
        {"doubles into SL untouched", Tags::Orchid_Velor6CornerSize, VR::SL, [&](auto& c) { c.StoreDoubles(doubles); },
         Bytes{0x55}, ""},
        {"DS doubles", Tags::Orchid_PixelSpacing, VR::DS, [&](auto& c) { c.StoreDoubles(doubles); }, Text("0.5\\2 "), ""},
        {"FL doubles", Tags::Orchid_DoseWidthProduct, VR::FL, [&](auto& c) { c.StoreDoubles(doubles); },
         Bytes{0, 0, 0, 0x3F, 0, 0, 0, 0x40}, ""},
        {"OB odd padded with NUL", Tags::Orchid_Velor6DrawDataBuffer, VR::OB,
         [](auto& c) { c.StoreBinary(Bytes{7, 8, 9}); }, Bytes{7, 8, 9, 0}, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        std::string trace;
        const auto previous = Portability::SetTraceSink([&](const Portability::TraceLine& l) { trace = l.text; });
        DicomDataSetElement element = ElementOf(c.tag, c.vr);
        OrchidDataElementCodec codec(&element);
        c.store(codec);
        Portability::SetTraceSink(previous);
        EXPECT_EQ(Bytes(element.value.Bytes().begin(), element.value.Bytes().end()), c.expected);
        EXPECT_EQ(element.valueLength, c.expected.size());
        EXPECT_EQ(trace, c.trace);
    }
}

TEST(ElementCodec, FetchReadsWhatWasStored) {
    DicomDataSetElement zones = ElementOf(Tags::Orchid_ImageZones, VR::SS);
    OrchidDataElementCodec zoneCodec(&zones);
    const std::int64_t values[] = {-2, 300};
    ASSERT_TRUE(zoneCodec.StoreIntegers(values));
    std::vector<std::int64_t> integers;
    ASSERT_TRUE(zoneCodec.FetchIntegers(integers));
    EXPECT_EQ(integers, (std::vector<std::int64_t>{-2, 300}));

    DicomDataSetElement spacing = ElementOf(Tags::Orchid_PixelSpacing, VR::DS);
    OrchidDataElementCodec spacingCodec(&spacing);
    const double pair[] = {0.125, -4};
    ASSERT_TRUE(spacingCodec.StoreDoubles(pair));
    std::vector<double> doubles;
    ASSERT_TRUE(spacingCodec.FetchDoubles(doubles));
    EXPECT_EQ(doubles, (std::vector<double>{0.125, -4}));

    OrchidDataElementCodec absent(static_cast<DicomDataSetElement*>(nullptr));
    std::string text;
    EXPECT_FALSE(absent.StoreCharacters("X"));
    EXPECT_FALSE(absent.FetchCharacters(text));

    // Over a const element the codec fetches and never stores.
    const DicomDataSetElement& readOnly = zones;
    OrchidDataElementCodec reader(&readOnly);
    EXPECT_FALSE(reader.StoreIntegers(values));
    EXPECT_FALSE(reader.StoreCharacters("X"));
    ASSERT_TRUE(reader.FetchIntegers(integers));
    EXPECT_EQ(integers, (std::vector<std::int64_t>{-2, 300}));
}

}  // namespace
}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
