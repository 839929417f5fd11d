#include "Foundations/DataModule/Enumerations/Modality.h"
#include "Foundations/DataModule/Enumerations/PhotometricInterpretation.h"
#include "Foundations/DataModule/Enumerations/SOPClass.h"
#include "Foundations/DataModule/Enumerations/TransferSyntax.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using namespace Lumivale::DataModule;

// Every known member's term reads back as that member, and no two members share a term.
template <typename E>
void ExpectTermsRoundTrip(std::uint32_t count) {
    std::set<std::string> seen;
    for (std::uint32_t i = 1; i < count; ++i) {
        const auto member = static_cast<E>(i);
        const auto term = CodedStringTraits<E>::Term(member);
        ASSERT_TRUE(term.has_value()) << i;
        EXPECT_EQ(CodedStringTraits<E>::FromTerm(*term), member) << *term;
        EXPECT_TRUE(seen.insert(std::string(*term)).second) << "duplicate " << *term;
    }
    EXPECT_FALSE(CodedStringTraits<E>::Term(static_cast<E>(0)).has_value());
    EXPECT_FALSE(CodedStringTraits<E>::Term(static_cast<E>(count)).has_value());
}

TEST(EnumerationTables, TermsRoundTrip) {
    ExpectTermsRoundTrip<Modality::Enum>(Modality::count);
    ExpectTermsRoundTrip<TransferSyntax::Enum>(TransferSyntax::count);
    ExpectTermsRoundTrip<SOPClass::Enum>(SOPClass::count);
    ExpectTermsRoundTrip<PhotometricInterpretation::Enum>(PhotometricInterpretation::count);
}

TEST(ModalityTable, MembersAndDescriptionsAsShipped) {
    EXPECT_EQ(Modality::count, 85u);
    struct Case {
        Modality::Enum member;
        const char* term;
        const char* description;
    } const cases[] = {
        {Modality::AR, "AR", "'AR' (Autorefraction)"},
        {Modality::ASMT, "ASMT", "'ASMT' (Content Assesment Results)"},
        {Modality::M3D, "M3D", "'M3D' (Model for 3D Manufacturing)"},
        {Modality::OT, "OT", "'OT' (Other)"},
        {Modality::PX, "PX", "'PX' (Panoramic X-Ray)"},
        {Modality::XC, "XC", "'XC' (External-camera Photography)"},
        {Modality::AS, "AS", "'AS' (Angioscopy (retired))"},
        {Modality::DS, "DS", "'DS' (Digital Substraction Angiography (retired))"},
        {Modality::VF, "VF", "'VF' (Videofluorography (retired))"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.term);
        const ModalityDataType value(c.member);
        EXPECT_EQ(value.Term(), c.term);
        EXPECT_EQ(value.Description(), c.description);
    }
    EXPECT_EQ(Modality::OT, 41u);
    EXPECT_EQ(Modality::AS, 67u);
    EXPECT_EQ(Modality::VF, 84u);
}

TEST(TransferSyntaxTable, NumberingSkipsFourFiftySix) {
    struct Case {
        std::uint32_t value;
        const char* uid;
    } const cases[] = {
        {1, "1.2.840.10008.1.2"},         {2, "1.2.840.10008.1.2.1"},       {3, "1.2.840.10008.1.2.1.99"},
        {4, "1.2.840.10008.1.2.2"},       {5, "1.2.840.10008.1.2.4.50"},    {10, "1.2.840.10008.1.2.4.55"},
        {11, "1.2.840.10008.1.2.4.57"},   {20, "1.2.840.10008.1.2.4.66"},   {21, "1.2.840.10008.1.2.4.70"},
        {22, "1.2.840.10008.1.2.4.80"},   {23, "1.2.840.10008.1.2.4.81"},   {24, "1.2.840.10008.1.2.4.90"},
        {29, "1.2.840.10008.1.2.4.95"},   {30, "1.2.840.10008.1.2.4.100"},  {36, "1.2.840.10008.1.2.4.106"},
        {37, "1.2.840.10008.1.2.5"},      {38, "1.2.840.10008.1.2.6.1"},    {39, "1.2.840.10008.1.2.6.2"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.uid);
        EXPECT_EQ(TransferSyntaxDataType(static_cast<TransferSyntax::Enum>(c.value)).Term(), c.uid);
    }
    EXPECT_EQ(TransferSyntax::count, 40u);
    EXPECT_EQ(CodedStringTraits<TransferSyntax::Enum>::FromTerm("1.2.840.10008.1.2.4.56"), TransferSyntax::unknown);
    EXPECT_EQ(TransferSyntax::ExplicitVRLittleEndian, 2u);
}

TEST(SOPClassTable, FixedMembersAndCategories) {
    EXPECT_EQ(SOPClassDataType(SOPClass::RawData).Term(), "1.2.840.10008.5.1.4.1.1.66");
    EXPECT_EQ(SOPClass::RawData, 28u);
    EXPECT_EQ(SOPClassDataType(SOPClass::EncapsulatedPDF).Term(), "1.2.840.10008.5.1.4.1.1.104.1");
    EXPECT_EQ(SOPClass::EncapsulatedPDF, 30u);
    EXPECT_EQ(SOPClassDataType(SOPClass::DigitalXRayImageForPresentation).Term(), "1.2.840.10008.5.1.4.1.1.1.1");
    EXPECT_EQ(SOPClassDataType(SOPClass::CTImage).Term(), "1.2.840.10008.5.1.4.1.1.2");
    EXPECT_EQ(SOPClassDataType(SOPClass::ComputedRadiographyImage).Term(), "1.2.840.10008.5.1.4.1.1.1");
    EXPECT_EQ(CategoryOf(SOPClass::RawData), SOPClassCategory::RawData);
    EXPECT_EQ(CategoryOf(SOPClass::VLPhotographicImage), SOPClassCategory::Image);
    EXPECT_EQ(CategoryOf(SOPClass::SecondaryCaptureImage), SOPClassCategory::SecondaryCaptureImage);
    EXPECT_EQ(CategoryOf(static_cast<SOPClass::Enum>(1000)), SOPClassCategory::Other);
}

TEST(PhotometricInterpretationTable, IconValues) {
    EXPECT_EQ(PhotometricInterpretation::count, 14u);
    EXPECT_EQ(CodedStringTraits<PhotometricInterpretation::Enum>::FromTerm("??"), PhotometricInterpretation::unknown);
    EXPECT_EQ(PhotometricInterpretationDataType(PhotometricInterpretation::PALETTE_COLOR).Term(), "PALETTE COLOR");
    EXPECT_EQ(PhotometricInterpretationDataType(PhotometricInterpretation::YBR_RCT).Term(), "YBR_RCT");
}

}  // namespace
