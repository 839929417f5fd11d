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

TEST(EnumerationTables, UnknownTermsAndCategories) {
    EXPECT_EQ(CodedStringTraits<Modality::Enum>::FromTerm("ct"), Modality::unknown);
    EXPECT_EQ(CategoryOf(SOPClass::RawData), SOPClassCategory::RawData);
    EXPECT_EQ(CategoryOf(SOPClass::VLPhotographicImage), SOPClassCategory::Image);
    EXPECT_EQ(CategoryOf(SOPClass::SecondaryCaptureImage), SOPClassCategory::SecondaryCaptureImage);
    EXPECT_EQ(CategoryOf(static_cast<SOPClass::Enum>(1000)), SOPClassCategory::Other);
}

}  // namespace
