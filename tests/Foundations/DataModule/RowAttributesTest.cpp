#include "Foundations/DataModule/Rows/RowAttributes.h"

#include "Foundations/DataModule/Rows/EquipmentDataRow.h"
#include "Foundations/DataModule/Rows/ImageInstanceDataRow.h"
#include "Foundations/DataModule/Rows/PatientDataRow.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/Rows/SeriesDataRow.h"
#include "Foundations/DataModule/Rows/StudyDataRow.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

namespace {

using namespace Lumivale::DataModule;

std::unique_ptr<DataRow> NewRow(RowKind kind) {
    switch (kind) {
        case RowKind::Patient: return std::make_unique<PatientDataRow>();
        case RowKind::Study: return std::make_unique<StudyDataRow>();
        case RowKind::Series: return std::make_unique<SeriesDataRow>();
        case RowKind::Equipment: return std::make_unique<EquipmentDataRow>();
        case RowKind::Instance: return std::make_unique<RawDataDataRow>();
    }
    return nullptr;
}

const RowAttribute& EntryOf(RowKind kind, std::string_view keyword) {
    for (const RowAttribute& entry : RowAttributesOf(kind)) {
        if (entry.keyword == keyword) return entry;
    }
    ADD_FAILURE() << "no entry " << keyword;
    return RowAttributesOf(kind).front();
}

struct RoundTrip {
    const char* id;
    RowKind kind;
    const char* keyword;
    const char* text;      // what is set
    const char* expected;  // what reads back (the DICOM form)
};

// At least one case per entry (checked below); extra cases probe normalisation.
constexpr RoundTrip kRoundTrips[] = {
    {"PN-groups", RowKind::Patient, "PatientName", "Yamada^Tarou=山田^太郎=やまだ^たろう", "Yamada^Tarou=山田^太郎=やまだ^たろう"},
    {"PN-trailing", RowKind::Patient, "PatientName", "Doe^John^^^  ", "Doe^John"},
    {"LO", RowKind::Patient, "PatientID", " ID-0042 ", "ID-0042"},
    {"LO-64", RowKind::Patient, "IssuerOfPatientID", "ÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüß1",
     "ÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüß1"},
    {"DA-leap", RowKind::Patient, "PatientBirthDate", "20000229", "20000229"},
    {"CS-sex", RowKind::Patient, "PatientSex", "F ", "F"},
    {"LO-multi", RowKind::Patient, "OtherPatientIDs", "A1\\\\B2", "A1\\\\B2"},
    {"LT", RowKind::Patient, "PatientComments", "  line one\r\nline\\two  ", "  line one\r\nline\\two"},
    {"DA-study", RowKind::Study, "StudyDate", "20240305", "20240305"},
    {"TM-study", RowKind::Study, "StudyTime", "101502.25", "101502.250000"},
    {"TM-hours", RowKind::Study, "StudyTime", "07", "070000"},
    {"SH", RowKind::Study, "AccessionNumber", "ACC-16-chars-xyz", "ACC-16-chars-xyz"},
    {"PN-ref", RowKind::Study, "ReferringPhysicianName", "Who^Doctor", "Who^Doctor"},
    {"LO-desc", RowKind::Study, "StudyDescription", "Panoramic", "Panoramic"},
    {"AS", RowKind::Study, "PatientAge", "042Y", "042Y"},
    {"DS-size", RowKind::Study, "PatientSize", "+1.75", "1.75"},
    {"DS-exp", RowKind::Study, "PatientWeight", "7.25E1", "72.5"},
    {"UI-study", RowKind::Study, "StudyInstanceUID", "1.2.3.4 ", "1.2.3.4"},
    {"SH-id", RowKind::Study, "StudyID", "S1", "S1"},
    {"DA-series", RowKind::Series, "SeriesDate", "19991231", "19991231"},
    {"TM-series", RowKind::Series, "SeriesTime", "235960", "235960"},
    {"CS-modality", RowKind::Series, "Modality", "PX", "PX"},
    {"LO-series", RowKind::Series, "SeriesDescription", "Bite wings", "Bite wings"},
    {"PN-perf", RowKind::Series, "PerformingPhysicianName", "A^B^C^D^E", "A^B^C^D^E"},
    {"PN-op", RowKind::Series, "OperatorsName", "=ideo", "=ideo"},
    {"CS-body", RowKind::Series, "BodyPartExamined", "JAW", "JAW"},
    {"LO-proto", RowKind::Series, "ProtocolName", "Standard", "Standard"},
    {"UI-series", RowKind::Series, "SeriesInstanceUID", "2.25.0.10", "2.25.0.10"},
    {"IS", RowKind::Series, "SeriesNumber", "-2147483648", "-2147483648"},
    {"CS-lat", RowKind::Series, "Laterality", "R", "R"},
    {"LO-man", RowKind::Equipment, "Manufacturer", "Maker", "Maker"},
    {"LO-inst", RowKind::Equipment, "InstitutionName", "Clinic", "Clinic"},
    {"ST", RowKind::Equipment, "InstitutionAddress", "1 Main St\\Town", "1 Main St\\Town"},
    {"SH-station", RowKind::Equipment, "StationName", "ROOM1", "ROOM1"},
    {"LO-dept", RowKind::Equipment, "InstitutionalDepartmentName", "Radiology", "Radiology"},
    {"LO-model", RowKind::Equipment, "ManufacturerModelName", "Model 7", "Model 7"},
    {"LO-serial", RowKind::Equipment, "DeviceSerialNumber", "SN-1", "SN-1"},
    {"LO-versions", RowKind::Equipment, "SoftwareVersions", "1.0\\2.0", "1.0\\2.0"},
    {"DA-creation", RowKind::Instance, "InstanceCreationDate", "20240101", "20240101"},
    {"TM-creation", RowKind::Instance, "InstanceCreationTime", "1200", "120000"},
    {"UI-creator", RowKind::Instance, "InstanceCreatorUID", "1.2", "1.2"},
    {"UI-sop", RowKind::Instance, "SOPInstanceUID", "1.2.840.10008.999", "1.2.840.10008.999"},
    {"DA-content", RowKind::Instance, "ContentDate", "20231130", "20231130"},
    {"DT", RowKind::Instance, "AcquisitionDateTime", "20231130081500.5+0100", "20231130081500.500000"},
    {"TM-content", RowKind::Instance, "ContentTime", "081500", "081500"},
    {"UI-version", RowKind::Instance, "CreatorVersionUID", "1.2.999.4242.1", "1.2.999.4242.1"},
    {"IS-number", RowKind::Instance, "InstanceNumber", "+7", "7"},
};

TEST(RowAttributes, EveryEntryRoundTripsThroughItsText) {
    std::set<std::string> covered;
    for (const RoundTrip& c : kRoundTrips) {
        SCOPED_TRACE(c.id);
        covered.insert(std::string(RowKindName(c.kind)) + "/" + c.keyword);
        const RowAttribute& entry = EntryOf(c.kind, c.keyword);
        auto row = NewRow(c.kind);
        ASSERT_TRUE(entry.set(*row, c.text));
        EXPECT_TRUE(entry.is_set(*row));
        EXPECT_EQ(entry.get(*row).value_or("<unset>"), c.expected);
        // Setting the read-back text again changes nothing; "" empties the member.
        ASSERT_TRUE(entry.set(*row, c.expected));
        EXPECT_EQ(entry.get(*row).value_or("<unset>"), c.expected);
        ASSERT_TRUE(entry.set(*row, ""));
        EXPECT_FALSE(entry.is_set(*row));
        EXPECT_FALSE(entry.get(*row).has_value());
    }
    for (const RowKind kind : kAllRowKinds) {
        for (const RowAttribute& entry : RowAttributesOf(kind)) {
            EXPECT_TRUE(covered.count(std::string(RowKindName(kind)) + "/" + std::string(entry.keyword)))
                << "no round-trip case for " << entry.keyword;
            EXPECT_EQ(FindRowAttribute(kind, entry.tag), &entry);
            EXPECT_EQ(RowKindOfTag(entry.tag), kind) << entry.keyword << " is named by two row kinds";
        }
    }
}

TEST(RowAttributes, InvalidTextsAreRefusedAndLeaveTheValue) {
    struct Case {
        const char* id;
        RowKind kind;
        const char* keyword;
        std::string_view text;
    };
    static const std::string long_text(10241, 'x');
    const Case cases[] = {
        {"DA-not-calendar", RowKind::Patient, "PatientBirthDate", "19700229"},
        {"DA-dashes", RowKind::Study, "StudyDate", "2024-03-05"},
        {"TM-minute-60", RowKind::Study, "StudyTime", "1060"},
        {"TM-fraction-7", RowKind::Series, "SeriesTime", "101010.1234567"},
        {"DT-offset", RowKind::Instance, "AcquisitionDateTime", "20231130+2500"},
        {"UI-letters", RowKind::Study, "StudyInstanceUID", "1.2.abc"},
        {"UI-leading-zero", RowKind::Series, "SeriesInstanceUID", "1.02"},
        {"UI-65", RowKind::Instance, "SOPInstanceUID", "1.2345678901234567890123456789012345678901234567890123456789012345"},
        {"LO-65", RowKind::Patient, "PatientID", "12345678901234567890123456789012345678901234567890123456789012345"},
        {"LO-backslash", RowKind::Equipment, "Manufacturer", "A\\B"},
        {"LO-control", RowKind::Equipment, "InstitutionName", "A\x1b$B"},
        {"LO-bad-utf8", RowKind::Patient, "PatientID", "\xC3\x28"},
        {"SH-17", RowKind::Equipment, "StationName", "12345678901234567"},
        {"LO-multi-65", RowKind::Equipment, "SoftwareVersions",
         "1\\12345678901234567890123456789012345678901234567890123456789012345"},
        {"PN-four-groups", RowKind::Patient, "PatientName", "a=b=c=d"},
        {"PN-six-components", RowKind::Series, "OperatorsName", "a^b^c^d^e^f"},
        {"PN-two-names", RowKind::Series, "PerformingPhysicianName", "A^B\\C^D"},
        {"CS-lower", RowKind::Patient, "PatientSex", "f"},
        {"CS-unknown-term", RowKind::Series, "Modality", "XYZ"},
        {"CS-17", RowKind::Series, "BodyPartExamined", "ABCDEFGHIJKLMNOPQ"},
        {"AS-unit", RowKind::Study, "PatientAge", "042X"},
        {"AS-short", RowKind::Study, "PatientAge", "42Y"},
        {"IS-13", RowKind::Series, "SeriesNumber", "1234567890123"},
        {"IS-overflow", RowKind::Instance, "InstanceNumber", "2147483648"},
        {"IS-decimal", RowKind::Instance, "InstanceNumber", "1.0"},
        {"DS-17", RowKind::Study, "PatientSize", "1.2345678901234567"},
        {"DS-nan", RowKind::Study, "PatientWeight", "nan"},
        {"DS-hex", RowKind::Study, "PatientWeight", "0x10"},
        {"DS-bare-exponent", RowKind::Study, "PatientWeight", "1e"},
        {"LT-10241", RowKind::Patient, "PatientComments", long_text},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        const RowAttribute& entry = EntryOf(c.kind, c.keyword);
        auto row = NewRow(c.kind);
        const bool had_value = entry.is_set(*row);
        const auto before = entry.get(*row);
        EXPECT_FALSE(entry.set(*row, c.text));
        EXPECT_EQ(entry.is_set(*row), had_value);
        EXPECT_EQ(entry.get(*row), before);
    }
}

TEST(RowAttributes, DateAndTimeTagsShareOneMember) {
    StudyDataRow study;
    const RowAttribute& date = *FindRowAttribute(RowKind::Study, {0x0008, 0x0020});
    const RowAttribute& time = *FindRowAttribute(RowKind::Study, {0x0008, 0x0030});
    ASSERT_TRUE(time.set(study, "101502"));
    EXPECT_FALSE(date.is_set(study));
    ASSERT_TRUE(date.set(study, "20240305"));
    EXPECT_EQ(study.study_date_time.Value(), (date_time{2024, 3, 5, 10, 15, 2, 0}));
    ASSERT_TRUE(time.set(study, "09"));  // a shorter time replaces every time field
    EXPECT_EQ(study.study_date_time.Value(), (date_time{2024, 3, 5, 9, 0, 0, 0}));
    ASSERT_TRUE(date.set(study, ""));
    EXPECT_EQ(time.get(study), "090000");
    ASSERT_TRUE(time.set(study, ""));
    EXPECT_TRUE(study.study_date_time.IsEmpty());
}

TEST(RowAttributes, EntriesRefuseRowsOfAnotherClass) {
    SeriesDataRow series;
    const RowAttribute& patient_id = *FindRowAttribute(RowKind::Patient, {0x0010, 0x0020});
    EXPECT_FALSE(patient_id.set(series, "X"));
    EXPECT_FALSE(patient_id.get(series).has_value());
    // Creator-Version UID belongs to raw-data instances only.
    ImageInstanceDataRow image(SOPClass::CTImage);
    const RowAttribute& creator_version = *FindRowAttribute(RowKind::Instance, {0x0008, 0x9123});
    EXPECT_FALSE(creator_version.set(image, "1.2"));
    EXPECT_TRUE(FindRowAttribute(RowKind::Instance, {0x0008, 0x0018})->set(image, "1.2"));
    EXPECT_EQ(FindRowAttribute(RowKind::Patient, {0x0008, 0x0020}), nullptr);
    EXPECT_FALSE(RowKindOfTag({0x0008, 0x0005}).has_value());
}

}  // namespace
