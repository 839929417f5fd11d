#include "Foundations/DataModule/Enumerations/Modality.h"
#include "Foundations/DataModule/Enumerations/PhotometricInterpretation.h"
#include "Foundations/DataModule/Enumerations/SOPClass.h"
#include "Foundations/DataModule/Enumerations/TransferSyntax.h"
#include "Foundations/DataModule/Values/ByteBuffer.h"
#include "Foundations/DataModule/Values/DateTime.h"
#include "Foundations/DataModule/Values/NumberDataType.h"
#include "Foundations/DataModule/Values/PersonNameDataType.h"
#include "Foundations/DataModule/Values/UIDDataType.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <set>

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

TEST(CodedStringValue, UnknownTermIsSetMemberZeroAndWritesTheFallback) {
    ModalityDataType modality;
    EXPECT_TRUE(modality.IsEmpty());
    EXPECT_EQ(modality.Term("none"), "none");

    modality.SetFromTerm("XYZ");
    EXPECT_TRUE(modality.IsSet());
    EXPECT_EQ(modality.Value(), Modality::unknown);
    EXPECT_EQ(modality.Term(), "");
    EXPECT_EQ(modality.Term("OT"), "OT");
    EXPECT_EQ(modality.Description(), "'' (Unknown Modality)");

    modality.SetFromTerm(" CT ");
    EXPECT_EQ(modality.Term(), "CT");

    modality.Set(static_cast<Modality::Enum>(500));
    EXPECT_EQ(modality.Term("fallback"), "fallback");
    EXPECT_EQ(modality.Description(), "Unknown Modality");

    modality.Clear();
    EXPECT_TRUE(modality.IsEmpty());
}

TEST(MultiCodedStringValue, EmptyFieldsStayEmptyAndWriteNothing) {
    MultiCodedStringDataType<ModalityDataType> modalities;
    modalities.SetFromText("\\CT\\\\BOGUS");
    ASSERT_EQ(modalities.Count(), 4u);
    EXPECT_TRUE(modalities.Get(0).IsEmpty());
    EXPECT_EQ(modalities.Get(1).Value(), Modality::CT);
    EXPECT_TRUE(modalities.Get(2).IsEmpty());
    EXPECT_EQ(modalities.Get(3).Value(), Modality::unknown);
    EXPECT_TRUE(modalities.Get(9).IsEmpty());
    EXPECT_EQ(modalities.Text("??"), "\\CT\\\\??");
}

TEST(PersonName, TextRoundTrips) {
    struct Case {
        const char* id;
        std::u16string text;
        std::u16string written;  // the text written back after parsing
    } const cases[] = {
        {"family only", u"Doe", u"Doe"},
        {"all five", u"Doe^John^Q^Dr^Jr", u"Doe^John^Q^Dr^Jr"},
        {"trailing components", u"Doe^John^^^", u"Doe^John"},
        {"middle gap kept", u"Doe^^Q", u"Doe^^Q"},
        {"three groups", u"Yamada^Tarou=\u5c71\u7530^\u592a\u90ce=\u3084\u307e\u3060^\u305f\u308d\u3046",
         u"Yamada^Tarou=\u5c71\u7530^\u592a\u90ce=\u3084\u307e\u3060^\u305f\u308d\u3046"},
        {"empty alphabetic group", u"=\u5c71\u7530", u"=\u5c71\u7530"},
        {"trailing groups", u"Doe^John==", u"Doe^John"},
        {"extra components kept in the suffix", u"a^b^c^d^e^f", u"a^b^c^d^e^f"},
        {"extra groups kept in the phonetic group", u"a=b=c=d", u"a=b=c=d"},
        {"empty", u"", u""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        PersonNameDataType name;
        name.SetFromText(c.text);
        EXPECT_EQ(name.Text(), c.written);
        EXPECT_EQ(name.IsEmpty(), c.written.empty());
    }
    PersonNameDataType name;
    name.SetFromText(u"Doe^John^^Dr");
    EXPECT_EQ(name.Component(PersonNameComponent::Given).Value(), u"John");
    EXPECT_TRUE(name.Component(PersonNameComponent::Middle).IsEmpty());
    EXPECT_EQ(name.Component(PersonNameComponent::Prefix).Value(), u"Dr");
}

TEST(DateTimeText, FormatsBySelector) {
    const date_time stamp{2015, 5, 21, 16, 20, 55, 0};
    const date_time fine{1999, 12, 31, 23, 59, 59, 1500};
    EXPECT_EQ(FormatDateTime(stamp, 0), "20150521");
    EXPECT_EQ(FormatDateTime(stamp, 1), "20150521162055");
    EXPECT_EQ(FormatDateTime(stamp, 2), "20150521162055");
    EXPECT_EQ(FormatDateTime(fine, 1), "19991231235959.001500");
    EXPECT_EQ(FormatDateTime(stamp, 7), "");
    EXPECT_EQ(DicomTimeValue(fine), "235959.001500");
    // The zero date_time means "no date" and is written as an empty value.
    EXPECT_EQ(FormatDateTime(ZeroDateTime(), 0), "00000000");
    EXPECT_EQ(DicomDateValue(ZeroDateTime()), "");
    EXPECT_EQ(DicomTimeValue(ZeroDateTime()), "");
    EXPECT_EQ(DicomDateTimeValue(ZeroDateTime()), "");
    EXPECT_EQ(DicomDateValue(date_time{0, 0, 0, 10, 30, 0, 0}), "") << "a time alone has no date part";
    EXPECT_EQ(CurrentLocalDateTime().fraction, 0u);
}

TEST(DateTimeText, ParsesAndValidatesDicomValues) {
    enum Kind { DA, TM, DT };
    struct Case { const char* id; Kind kind; const char* text; bool ok; date_time expected; } const cases[] = {
        {"DA plain", DA, "20150521", true, {2015, 5, 21, 0, 0, 0, 0}},
        {"DA padded", DA, "20240229 ", true, {2024, 2, 29, 0, 0, 0, 0}},
        {"DA not a leap year", DA, "20230229", false, {}},
        {"DA leap century", DA, "20000229", true, {2000, 2, 29, 0, 0, 0, 0}},
        {"DA month 13", DA, "20151301", false, {}},
        {"DA day 0", DA, "20150500", false, {}},
        {"DA short", DA, "2015052", false, {}},
        {"DA old dotted form", DA, "2015.05.21", false, {}},
        {"TM full", TM, "162055.123", true, {0, 0, 0, 16, 20, 55, 123000}},
        {"TM hours only", TM, "16", true, {0, 0, 0, 16, 0, 0, 0}},
        {"TM leap second", TM, "235960", true, {0, 0, 0, 23, 59, 60, 0}},
        {"TM hour 24", TM, "240000", false, {}},
        {"TM seven fraction digits", TM, "101010.1234567", false, {}},
        {"TM odd digits", TM, "101", false, {}},
        {"TM colons", TM, "10:10:10", false, {}},
        {"TM dot without digits", TM, "101010.", false, {}},
        {"DT year only", DT, "2015", true, {2015, 1, 1, 0, 0, 0, 0}},
        {"DT with offset", DT, "20150521162055.5+0100", true, {2015, 5, 21, 16, 20, 55, 500000}},
        {"DT bad offset", DT, "20150521162055+01", false, {}},
        {"DT bad day", DT, "20150431", false, {}},
        {"empty", DT, "", false, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        date_time parsed{};
        const bool ok = c.kind == DA   ? ParseDicomDate(c.text, parsed)
                        : c.kind == TM ? ParseDicomTime(c.text, parsed)
                                       : ParseDicomDateTime(c.text, parsed);
        EXPECT_EQ(ok, c.ok);
        EXPECT_EQ(parsed, c.ok ? c.expected : date_time{});
    }
}

TEST(NumberValue, ReadsWholeNumbersOnly) {
    IntegerDataType number;
    EXPECT_TRUE(number.SetFromText(" +12 "));
    EXPECT_EQ(number.Text(), "12");
    EXPECT_FALSE(number.SetFromText("12a"));
    EXPECT_FALSE(number.SetFromText("+-3"));
    EXPECT_FALSE(number.SetFromText("99999999999"));
    EXPECT_EQ(number.Value(), 12);
    DecimalDataType decimal;
    EXPECT_TRUE(decimal.SetFromText("-1.5e2"));
    EXPECT_EQ(decimal.Text(), "-150");
}

TEST(UidValue, AcceptsOnlyDottedNumericText) {
    const std::pair<std::string, bool> cases[] = {
        {"1.2.840.10008.1.2.1", true}, {"1.2.0.3", true}, {"1.2.03", false}, {"1..2", false}, {"1.2.", false},
        {"1.2.a", false},              {"", false},       {"1." + std::string(62, '1'), true},  // 64 characters
        {"1." + std::string(63, '1'), false},
    };
    for (const auto& [text, valid] : cases) EXPECT_EQ(IsValidUid(text), valid) << '"' << text << '"';
    UIDDataType uid;
    EXPECT_TRUE(uid.Set(std::string("1.2.3\0", 6)));
    EXPECT_EQ(uid.Value(), "1.2.3");
    EXPECT_FALSE(uid.Set("1.2.x"));
    EXPECT_EQ(uid.Value(), "1.2.3");
}

TEST(ByteBufferValue, MemoryAndFileRegionsAreExplicit) {
    const std::vector<std::uint8_t> bytes = {1, 2, 3, 4, 5};
    const ByteBuffer borrowed = ByteBuffer::Borrow(bytes.data(), bytes.size());
    EXPECT_TRUE(borrowed.IsInMemory());
    EXPECT_FALSE(borrowed.OwnsBytes());
    EXPECT_EQ(borrowed.MemoryBytes().data(), bytes.data());

    ByteBuffer owned = ByteBuffer::CopyOf(bytes);
    const ByteBuffer shared = owned;
    EXPECT_TRUE(owned.OwnsBytes());
    owned.MutableBytes()[0] = 9;
    EXPECT_EQ(shared.MemoryBytes()[0], 9) << "copies share one record";

    EXPECT_TRUE(ByteBuffer().IsEmpty());
    EXPECT_FALSE(ByteBuffer().HasBuffer());
    EXPECT_TRUE(ByteBuffer::CopyOf({}).IsEmpty());
    EXPECT_FALSE(ByteBuffer::Allocate(~std::uint64_t{0}).HasBuffer());

    const std::shared_ptr<Portability::OpenFile> file = Portability::OpenFile::OpenTemporary();
    ASSERT_TRUE(file && file->Append("abcdefgh", 8));
    const ByteBuffer region = ByteBuffer::OfFileRegion({file, 2, 4});
    EXPECT_TRUE(region.IsFileRegion());
    EXPECT_TRUE(region.MemoryBytes().empty());
    std::vector<std::uint8_t> read;
    ASSERT_TRUE(region.ReadAll(read));
    EXPECT_EQ(std::string(read.begin(), read.end()), "cdef");
    std::string text;
    EXPECT_FALSE(region.ReadText(text));
    EXPECT_FALSE(ByteBuffer::OfFileRegion({file, 6, 3}).ReadAll(read)) << "region past the end";
    EXPECT_FALSE(ByteBuffer::OfFileRegion({file, ~std::uint64_t{0}, 2}).ReadAll(read));
    EXPECT_FALSE(ByteBuffer::OfFileRegion({nullptr, 0, 0}).ReadAll(read));
}

}  // namespace
