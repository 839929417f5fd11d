// The rows of a data set, their links, custom data and extra elements, and the named attributes of
// each row kind set and read as DICOM text.
#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/ImageInstanceDataRow.h"
#include "Foundations/DataModule/Rows/InstanceDataRowFactory.h"
#include "Foundations/DataModule/Rows/PatientDataSet.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/Rows/RowAttributes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using namespace Lumivale::DataModule;

TEST(InstanceRowFactory, RowKindFollowsTheSOPClass) {
    struct Case { SOPClass::Enum sop_class; bool raw; bool pdf; bool image; } const cases[] = {
        {SOPClass::RawData, true, false, false},
        {SOPClass::EncapsulatedPDF, false, true, false},
        {SOPClass::CTImage, false, false, true},
        {SOPClass::MultiFrameTrueColorSecondaryCaptureImage, false, false, true},
        {SOPClass::BasicTextSR, false, false, false},
        {SOPClass::unknown, false, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sop_class);
        const auto row = CreateInstanceDataRow(c.sop_class);
        EXPECT_EQ(dynamic_cast<RawDataDataRow*>(row.get()) != nullptr, c.raw);
        EXPECT_EQ(dynamic_cast<EncapsulatedDocumentDataRow*>(row.get()) != nullptr, c.pdf);
        EXPECT_EQ(dynamic_cast<ImageInstanceDataRow*>(row.get()) != nullptr, c.image);
        EXPECT_EQ(row->sop_class.IsSet(), c.sop_class != SOPClass::unknown);
        EXPECT_EQ(row->sop_class.Value(), c.sop_class);
    }
}

TEST(PatientDataSetLinks, LinkMoveAndQuery) {
    PatientDataSet data_set;
    InstanceDataRow& instance = data_set.AddInstanceChain(SOPClass::RawData);
    PatientDataRow& patient = *data_set.FirstPatient();
    StudyDataRow& study = *data_set.FirstStudy();
    SeriesDataRow& series = *data_set.FirstSeries();
    EquipmentDataRow& equipment = *data_set.FirstEquipment();
    EXPECT_EQ(data_set.FirstStudyOf(patient), &study);
    EXPECT_EQ(data_set.PatientOf(study), &patient);
    EXPECT_EQ(data_set.FirstSeriesOf(study), &series);
    EXPECT_EQ(data_set.FirstInstanceOf(series), &instance);
    EXPECT_EQ(data_set.SeriesOf(instance), &series);
    EXPECT_EQ(data_set.EquipmentOf(series), &equipment);
    EXPECT_EQ(data_set.SeriesOf(equipment), &series);

    // A second study keeps link order; moving the first study to another patient updates both sides.
    StudyDataRow& second = data_set.AddStudy();
    ASSERT_TRUE(data_set.Link(patient, second));
    EXPECT_EQ(data_set.StudiesOf(patient), (std::vector<StudyDataRow*>{&study, &second}));
    PatientDataRow& other_patient = data_set.AddPatient();
    ASSERT_TRUE(data_set.Link(other_patient, study));
    EXPECT_EQ(data_set.StudiesOf(patient), (std::vector<StudyDataRow*>{&second}));
    EXPECT_EQ(data_set.PatientOf(study), &other_patient);

    // Pairing the series with new equipment releases the old equipment.
    EquipmentDataRow& new_equipment = data_set.AddEquipment();
    ASSERT_TRUE(data_set.Link(series, new_equipment));
    EXPECT_EQ(data_set.EquipmentOf(series), &new_equipment);
    EXPECT_EQ(data_set.SeriesOf(equipment), nullptr);

    // Rows of another data set are refused.
    PatientDataSet foreign;
    EXPECT_FALSE(data_set.Link(foreign.AddPatient(), study));
    EXPECT_EQ(data_set.PatientOf(study), &other_patient);
    EXPECT_EQ(data_set.FirstStudyOf(foreign.AddPatient()), nullptr);

    // Moving the data set keeps rows and links.
    const PatientDataSet moved = std::move(data_set);
    EXPECT_EQ(moved.FirstInstanceOf(series), &instance);
}

TEST(CustomData, ByteWiseOrderAndEmptiness) {
    CustomDataStore store;
    store.SetText("b", "text");
    store.SetText("\xC3\xA9", "high byte sorts last");
    store.SetText("B", "upper case sorts first");
    store.SetBytes("a", ByteBuffer::CopyOf(std::vector<std::uint8_t>{1, 2}));
    std::string keys;
    for (const auto& [key, value] : store) keys += key + ",";
    EXPECT_EQ(keys, "B,a,b,\xC3\xA9,");

    const std::vector<std::uint8_t> empty_payload;
    store.SetBytes("empty", ByteBuffer::Borrow(empty_payload.data(), 0));
    store.SetBytes("none", ByteBuffer());
    store.SetText("blank", "");
    for (const char* key : {"empty", "none", "blank", "missing"}) EXPECT_TRUE(store.IsValueEmpty(key)) << key;
    EXPECT_FALSE(store.IsValueEmpty("a"));
    EXPECT_EQ(store.ValueLength("b"), 4u);

    std::string text;
    ASSERT_TRUE(store.GetText("a", text)) << "in-memory bytes read as text";
    EXPECT_EQ(text, std::string("\x01\x02", 2));
    EXPECT_EQ(store.GetBytes("b"), nullptr);
    store.SetText("a", "replaced");
    EXPECT_EQ(store.GetBytes("a"), nullptr);
    EXPECT_TRUE(store.Erase("a"));
    EXPECT_FALSE(store.Erase("a"));
    EXPECT_FALSE(store.Contains("a"));
}

TEST(ExtraElements, OnePerTagInTagOrder) {
    ExtraElementList list;
    EXPECT_TRUE(list.SetText({0x0010, 0x2160}, ValueRepresentation::SH, "first"));
    EXPECT_TRUE(list.SetBytes({0x0009, 0x1001}, ValueRepresentation::OB, {1, 2, 3}));
    EXPECT_TRUE(list.SetText({0x0010, 0x2160}, ValueRepresentation::SH, "second"));
    EXPECT_FALSE(list.SetText({0x0010, 0x1000}, ValueRepresentation::Unknown, "no VR"));
    ASSERT_EQ(list.Size(), 2u);
    EXPECT_EQ(list.begin()->first, (Tag{0x0009, 0x1001}));
    const ExtraElement* element = list.Find({0x0010, 0x2160});
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(std::get<std::string>(element->value), "second");
    EXPECT_FALSE(list.Find({0x0009, 0x1001})->IsText());
}

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

// One case per kind of value, and the texts that are normalised when set. (Every entry is set and
// read back with a sample text by the DICOM adapter tests.)
constexpr struct {
    const char* id;
    RowKind kind;
    const char* keyword;
    const char* text;      // what is set
    const char* expected;  // what reads back (the DICOM form)
} kRoundTrips[] = {
    {"PN-trailing", RowKind::Patient, "PatientName", "Doe^John^^^  ", "Doe^John"},
    {"LO", RowKind::Patient, "PatientID", " ID-0042 ", "ID-0042"},
    {"LO-64", RowKind::Patient, "IssuerOfPatientID", "ÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüß1",
     "ÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüßÄÖÜäöüß1"},
    {"CS-sex", RowKind::Patient, "PatientSex", "F ", "F"},
    {"LO-multi", RowKind::Patient, "OtherPatientIDs", "A1\\\\B2", "A1\\\\B2"},
    {"LT", RowKind::Patient, "PatientComments", "  line one\r\nline\\two  ", "  line one\r\nline\\two"},
    {"TM-study", RowKind::Study, "StudyTime", "101502.25", "101502.250000"},
    {"TM-hours", RowKind::Study, "StudyTime", "07", "070000"},
    {"SH", RowKind::Study, "AccessionNumber", "ACC-16-chars-xyz", "ACC-16-chars-xyz"},
    {"DS-size", RowKind::Study, "PatientSize", "+1.75", "1.75"},
    {"DS-exp", RowKind::Study, "PatientWeight", "7.25E1", "72.5"},
    {"UI-study", RowKind::Study, "StudyInstanceUID", "1.2.3.4 ", "1.2.3.4"},
    {"IS", RowKind::Series, "SeriesNumber", "-2147483648", "-2147483648"},
    {"ST", RowKind::Equipment, "InstitutionAddress", "1 Main St\\Town", "1 Main St\\Town"},
    {"LO-versions", RowKind::Equipment, "SoftwareVersions", "1.0\\2.0", "1.0\\2.0"},
    {"TM-creation", RowKind::Instance, "InstanceCreationTime", "1200", "120000"},
    {"DA-content", RowKind::Instance, "ContentDate", "20231130", "20231130"},
    {"TM-content", RowKind::Instance, "ContentTime", "081500", "081500"},
    {"UI-version", RowKind::Instance, "CreatorVersionUID", "1.2.999.4242.1", "1.2.999.4242.1"},
    {"DT", RowKind::Instance, "AcquisitionDateTime", "20231130081500.5+0100", "20231130081500.500000"},
    {"IS-number", RowKind::Instance, "InstanceNumber", "+7", "7"},
};

TEST(RowAttributes, TextsRoundTripAndEntriesAreFoundByTag) {
    for (const auto& c : kRoundTrips) {
        SCOPED_TRACE(c.id);
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
            EXPECT_EQ(FindRowAttribute(kind, entry.tag), &entry);
            EXPECT_EQ(RowKindOfTag(entry.tag), kind) << entry.keyword << " is named by two row kinds";
        }
    }
}

TEST(RowAttributes, InvalidTextsAreRefusedAndLeaveTheValue) {
    struct Case { const char* id; RowKind kind; const char* keyword; std::string_view text; };
    static const std::string long_text(10241, 'x');
    const Case cases[] = {
        {"TM-minute-60", RowKind::Study, "StudyTime", "1060"},
        {"DT-offset", RowKind::Instance, "AcquisitionDateTime", "20231130+2500"},
        {"UI-leading-zero", RowKind::Series, "SeriesInstanceUID", "1.02"},
        {"LO-65", RowKind::Patient, "PatientID", "12345678901234567890123456789012345678901234567890123456789012345"},
        {"LO-backslash", RowKind::Equipment, "Manufacturer", "A\\B"},
        {"LO-control", RowKind::Equipment, "InstitutionName", "A\x1b$B"},
        {"LO-bad-utf8", RowKind::Patient, "PatientID", "\xC3\x28"},
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
