#include "Foundations/DataModule/metadata/LVDataEditor.h"
#include "Foundations/DataModule/metadata/MetadataReader.h"

#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/RowAttributes.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"

#include "Portability/Misc/DebugTrace.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using namespace Lumivale::DataModule;
using DataConverterModule::LVDataEditor;

const date_time kStamp{2024, 3, 5, 10, 15, 0, 0};

// The debug trace lines written while it is alive: where the reader says why it refused.
class TraceLines {
public:
    TraceLines() : previous_(Portability::SetTraceSink([this](const Portability::TraceLine& l) { all_.append(l.text).append("\n"); })) {}
    ~TraceLines() { Portability::SetTraceSink(previous_); }
    TraceLines(const TraceLines&) = delete;
    TraceLines& operator=(const TraceLines&) = delete;
    bool Contains(std::string_view text) const { return all_.find(text) != std::string::npos; }
    const std::string& All() const { return all_; }

private:
    std::string all_;
    Portability::TraceSink previous_;
};

std::string Document(const std::string& operations) {
    return "<orchid type=\"ConvertixToFp\"><operations>" + operations + "</operations></orchid>";
}

std::string Edition(const std::string& scope, const std::string& elements) {
    return "<operation type=\"edition\"><" + scope + ">" + elements + "</" + scope + "></operation>";
}

DataRow* RowOf(const MetadataRows& rows, RowKind kind) {
    DataRow* const byKind[] = {rows.patient, rows.study, rows.series, rows.equipment, rows.instance};
    return byKind[static_cast<int>(kind)];
}

// Keywords resolve through the dictionary and land in the row table: both must agree on tag and VR.
TEST(EditionDocument, RowAttributeTableAgreesWithTheDictionary) {
    namespace Codec = DataAdapterModule::DicomCodecModule;
    for (const RowKind kind : kAllRowKinds) {
        for (const RowAttribute& attribute : RowAttributesOf(kind)) {
            SCOPED_TRACE(std::string(attribute.keyword));
            const Codec::DictionaryEntry& entry = Codec::EntryByKeyword(attribute.keyword);
            EXPECT_EQ(entry.tag, attribute.tag);
            EXPECT_EQ(entry.vr, attribute.vr);
        }
    }
}

// What one element of an edition gives: the text read back from the row (named member or extra element).
TEST(EditionDocument, EveryElementKindReachesItsRow) {
    const struct { const char* id; const char* scope; const char* element; RowKind kind; Tag tag;
        const char* expected; } cases[] = {
        {"string-by-tag", "Patient", R"x(<String Name="(0010,0021)" Value="Issuer"/>)x", RowKind::Patient, {0x0010, 0x0021}, "Issuer"},
        {"number", "Series", R"x(<Number Name="SeriesNumber" Value="3"/>)x", RowKind::Series, {0x0020, 0x0011}, "3"},
        {"number-ds", "Study", R"x(<Number Name="PatientWeight" Value="72.5"/>)x", RowKind::Study, {0x0010, 0x1030}, "72.5"},
        {"boolean-cs-extra", "Instance", R"x(<Boolean Name="BurnedInAnnotation" Value="true"/>)x", RowKind::Instance, {0x0028, 0x0301}, "YES"},
        {"code-value", "Patient", R"x(<Code Name="PatientSex" Value="F"/>)x", RowKind::Patient, {0x0010, 0x0040}, "F"},
        {"date-value", "Study", R"x(<Date Name="StudyDate" Value="20240305"/>)x", RowKind::Study, {0x0008, 0x0020}, "20240305"},
        {"date-parts", "Patient", R"x(<Date Name="PatientBirthDate" Year="1980" Month="2" Day="14"/>)x", RowKind::Patient, {0x0010, 0x0030}, "19800214"},
        {"time-value", "Study", R"x(<Time Name="StudyTime" Value="101502"/>)x", RowKind::Study, {0x0008, 0x0030}, "101502"},
        {"time-parts", "Series", R"x(<Time Name="SeriesTime" Hour="9" Minute="5" Second="7.25"/>)x", RowKind::Series, {0x0008, 0x0031}, "090507.250000"},
        {"time-hour", "Instance", R"x(<Time Name="ContentTime" Hour="23"/>)x", RowKind::Instance, {0x0008, 0x0033}, "230000"},
        {"datetime-parts", "Instance", R"x(<DateTime Name="AcquisitionDateTime" Year="2023" Month="11" Day="30" Hour="8" Minute="15" Second="0"/>)x",
         RowKind::Instance, {0x0008, 0x002A}, "20231130081500"},
        {"name-groups", "Patient",
         R"x(<Name Name="PatientName" Family="Yamada" Given="Tarou"><IdeographicName Family="山田" Given="太郎"/><PhoneticName Family="やまだ" Given="たろう"/></Name>)x",
         RowKind::Patient, {0x0010, 0x0010}, "Yamada^Tarou=山田^太郎=やまだ^たろう"},
        {"name-prefix-only-phonetic", "Study", R"x(<Name Name="ReferringPhysicianName" Family="Martin" Prefix="Dr"><PhoneticName Given="p"/></Name>)x",
         RowKind::Study, {0x0008, 0x0090}, "Martin^^^Dr==^p"},
        {"element-extra", "Series", R"x(<Element Tag="(0018,0060)" VR="DS" Value="70"/>)x", RowKind::Series, {0x0018, 0x0060}, "70"},
        {"element-private", "Equipment", R"x(<Element Tag="(0011,1001)" VR="LO" Value="x"/>)x", RowKind::Equipment, {0x0011, 0x1001}, "x"},
        {"element-xs", "Instance", R"x(<Element Tag="(0028,0106)" VR="SS" Value="-5"/>)x", RowKind::Instance, {0x0028, 0x0106}, "-5"},
        {"string-extra-multi", "Instance", R"x(<String Name="ImageType" Value="DERIVED\SECONDARY"/>)x", RowKind::Instance, {0x0008, 0x0008}, "DERIVED\\SECONDARY"},
        {"equipment", "Equipment", R"x(<String Name="SoftwareVersions" Value="1\2"/>)x", RowKind::Equipment, {0x0018, 0x1020}, "1\\2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        PatientDataSet set;
        MetadataRows rows;
        ASSERT_TRUE(BuildRowsFromEditionDocument(set, Document(Edition(c.scope, c.element)), kStamp, SOPClass::RawData, rows));
        const DataRow& row = *RowOf(rows, c.kind);
        if (const RowAttribute* attribute = FindRowAttribute(c.kind, c.tag)) {
            EXPECT_EQ(attribute->get(row).value_or("<unset>"), c.expected);
        } else {
            const ExtraElement* extra = row.extra_elements.Find(c.tag);
            ASSERT_NE(extra, nullptr);
            EXPECT_EQ(std::get<std::string>(extra->value), c.expected);
        }
    }
}

// Each refusal says why in the debug trace: the reason, and where it was found.
TEST(EditionDocument, WhatCannotBeAppliedFailsTheLoadForItsReason) {
    const struct Case { const char* id; std::string document; const char* reason; } cases[] = {
        {"unknown-keyword", Document(Edition("Patient", R"x(<String Name="PatientNickname" Value="x"/>)x")), "Edition operation 0 refused: <String> at offset 77: unknown attribute name \"PatientNickname\""},
        {"keyword-of-other-row", Document(Edition("Series", R"x(<String Name="PatientID" Value="x"/>)x")), "Edition operation 0 refused: PatientID (0010,0020) in Series: the attribute belongs to the Patient scope"},
        {"malformed-date", Document(Edition("Study", R"x(<Date Name="StudyDate" Value="2024-03-05"/>)x")), "Edition operation 0 refused: StudyDate (0008,0020) in Study: \"2024-03-05\" is not a valid value"},
        {"date-parts-missing-day", Document(Edition("Study", R"x(<Date Name="StudyDate" Year="2024" Month="3"/>)x")), "Edition operation 0 refused: <Date> at offset 75: Day is missing or out of range"},
        {"too-long-sh", Document(Edition("Study", R"x(<String Name="StudyID" Value="12345678901234567"/>)x")), "Edition operation 0 refused: StudyID (0020,0010) in Study: \"12345678901234567\" is not a valid value"},
        {"too-long-extra", Document(Edition("Series", R"x(<String Name="PerformedStationAETitle" Value="ABCDEFGHIJKLMNOPQ"/>)x")), "Edition operation 0 refused: PerformedStationAETitle (0040,0241) in Series: \"ABCDEFGHIJKLMNOPQ\" is not a valid AE value"},
        {"bad-tag", Document(Edition("Series", R"x(<Element Tag="(0018,60)" VR="DS" Value="1"/>)x")), "Edition operation 0 refused: <Element> at offset 76: Tag \"(0018,60)\" is not (gggg,eeee)"},
        {"vr-against-dictionary", Document(Edition("Series", R"x(<Element Tag="(0018,0060)" VR="LO" Value="1"/>)x")), "Edition operation 0 refused: <Element> at offset 76: (0018,0060) has VR DS, not LO"},
        {"binary-vr", Document(Edition("Series", R"x(<Element Tag="(0011,0010)" VR="OB" Value="1"/>)x")), "Edition operation 0 refused: <Element> at offset 76: VR \"OB\" cannot be given as text"},
        {"uv-negative", Document(Edition("Series", R"x(<Element Tag="(0011,1010)" VR="UV" Value="-1"/>)x")), "Edition operation 0 refused: (0011,1010) (0011,1010) in Series: \"-1\" is not a valid UV value"},
        {"sv-past-64-bits", Document(Edition("Series", R"x(<Element Tag="(0011,1010)" VR="SV" Value="9223372036854775808"/>)x")), "Edition operation 0 refused: (0011,1010) (0011,1010) in Series: \"9223372036854775808\" is not a valid SV value"},
        {"uv-fraction", Document(Edition("Series", R"x(<Element Tag="(0011,1010)" VR="UV" Value="1.5"/>)x")), "Edition operation 0 refused: (0011,1010) (0011,1010) in Series: \"1.5\" is not a valid UV value"},
        {"kind-against-vr", Document(Edition("Patient", R"x(<Date Name="PatientID" Value="20240101"/>)x")), "Edition operation 0 refused: <Date> at offset 77: PatientID has VR LO, which this element kind cannot set"},
        {"unknown-attribute", Document(Edition("Patient", R"x(<String Name="PatientID" value="x"/>)x")), "Edition operation 0 refused: <String> at offset 77: unexpected attribute \"value\""},
        {"unknown-element", Document(Edition("Patient", R"x(<Text Name="PatientID" Value="x"/>)x")), "Edition operation 0 refused: <Text> at offset 77: is not a value element"},
        {"unknown-scope", Document(Edition("Visit", R"x(<String Name="PatientID" Value="x"/>)x")), "Edition operation 0 refused: <Visit> at offset 68: is not a row scope"},
        {"charset-outside-instance", Document(Edition("Patient", R"x(<Code Name="SpecificCharacterSet" Value="ISO_IR 192"/>)x")), "Edition operation 0 refused: SpecificCharacterSet (0008,0005) in Patient: the character set belongs to the Instance scope"},
        {"charset-unknown", Document(Edition("Instance", R"x(<Code Name="SpecificCharacterSet" Value="ISO_IR 999"/>)x")), "Edition operation 0 refused: SpecificCharacterSet (0008,0005) in Instance: unknown character set \"ISO_IR 999\""},
        {"reserved-file-meta", Document(Edition("Instance", R"x(<Element Tag="(0002,0010)" VR="UI" Value="1.2"/>)x")), "Edition operation 0 refused: (0002,0010) (0002,0010) in Instance: the file meta group is written by the tool"},
        {"reserved-sop-class", Document(Edition("Instance", R"x(<String Name="SOPClassUID" Value="1.2"/>)x")), "Edition operation 0 refused: SOPClassUID (0008,0016) in Instance: the SOP class is the instance's own"},
        {"reserved-private-group", Document(Edition("Instance", R"x(<Element Tag="(0009,1001)" VR="LO" Value="x"/>)x")), "Edition operation 0 refused: (0009,1001) (0009,1001) in Instance: group 0009 holds the tool's own private attributes"},
        {"name-component-delimiter", Document(Edition("Patient", R"x(<Name Name="PatientName" Family="A^B"/>)x")), "Edition operation 0 refused: <Name> at offset 77: Family holds a ^, = or \\"},
        {"boolean-word", Document(Edition("Instance", R"x(<Boolean Name="BurnedInAnnotation" Value="maybe"/>)x")), "Edition operation 0 refused: <Boolean> at offset 78: Value is not a boolean"},
        {"code-missing-meaning", Document(Edition("Study", R"x(<Code Name="ProcedureCodeSequence" Code="1" Scheme="99X"/>)x")), "Edition operation 0 refused: <Code> at offset 75: a code needs Code, Scheme and Meaning"},
        {"second-edition-fails", Document(Edition("Patient", "") + Edition("Study", R"x(<Number Name="StudyID" Value="1"/>)x")), "Edition operation 1 refused: <Number> at offset 132: StudyID has VR SH, which this element kind cannot set"},
        {"not-orchid", "<metadata/>", "Metadata not loaded (the document element is not \"orchid\")"},
        {"not-xml", "<orchid type=\"x\"><operations>", "Metadata document does not parse: Start-end tags mismatch at offset 28"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        PatientDataSet set;
        MetadataRows rows;
        const TraceLines trace;
        EXPECT_FALSE(BuildRowsFromEditionDocument(set, c.document, kStamp, SOPClass::RawData, rows));
        EXPECT_TRUE(trace.Contains(c.reason)) << trace.All();
    }
}

TEST(EditionDocument, OperationsApplyInOrderAndOthersAreSkipped) {
    const std::string document = Document(
        Edition("Patient", R"x(<String Name="PatientID" Value="first"/>)x") +
        R"x(<operation type="conversion"><Patient><Bogus/></Patient></operation>)x" +
        Edition("Patient", R"x(<String Name="PatientID" Value="second"/>)x") +
        Edition("Instance", R"x(<Code Name="SpecificCharacterSet" Value="\ISO 2022 IR 87"/>)x"));
    PatientDataSet set;
    MetadataRows rows;
    ASSERT_TRUE(BuildRowsFromEditionDocument(set, document, kStamp, SOPClass::RawData, rows));
    EXPECT_EQ(rows.patient->patient_id.Utf8(), "second");
    EXPECT_EQ(rows.instance->specific_character_set.ToText(), "ISO 2022 IR 6\\ISO 2022 IR 87");
    EXPECT_EQ(rows.series->modality.Term(), "OT");
    EXPECT_EQ(rows.study->study_date_time.Value(), kStamp);
    EXPECT_EQ(set.SeriesOf(*rows.instance), rows.series);
    EXPECT_EQ(set.PatientOf(*rows.study), rows.patient);
}

TEST(EditionDocument, SequencesAreStoredAsEncodedItems) {
    const std::string document = Document(Edition("Study",
        R"x(<Code Name="ProcedureCodeSequence" Code="D0330" Scheme="CDT" Meaning="Panoramic"/>)x"
        R"x(<Sequence Name="RequestAttributesSequence"><Item><String Name="RequestedProcedureID" Value="RP1"/></Item><Item/></Sequence>)x"));
    PatientDataSet set;
    MetadataRows rows;
    ASSERT_TRUE(BuildRowsFromEditionDocument(set, document, kStamp, SOPClass::RawData, rows));
    const ExtraElement* code = rows.study->extra_elements.Find({0x0008, 0x1032});
    ASSERT_NE(code, nullptr);
    EXPECT_EQ(code->vr, ValueRepresentation::SQ);
    const std::vector<std::uint8_t> expected = {
        0xFE, 0xFF, 0x00, 0xE0, 44, 0, 0, 0,                                   // item, length 44
        0x08, 0, 0x00, 0x01, 'S', 'H', 6, 0, 'D', '0', '3', '3', '0', ' ',     // (0008,0100) CodeValue
        0x08, 0, 0x02, 0x01, 'S', 'H', 4, 0, 'C', 'D', 'T', ' ',               // (0008,0102) CodingSchemeDesignator
        0x08, 0, 0x04, 0x01, 'L', 'O', 10, 0, 'P', 'a', 'n', 'o', 'r', 'a', 'm', 'i', 'c', ' ',  // (0008,0104)
    };
    EXPECT_EQ(std::get<std::vector<std::uint8_t>>(code->value), expected);
    const ExtraElement* request = rows.study->extra_elements.Find({0x0040, 0x0275});
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(std::get<std::vector<std::uint8_t>>(request->value).size(), 8u + 12u + 8u);
}

TEST(EditionDocument, EditorRefusesInstancesItCannotEdit) {
    PatientDataSet set;
    InstanceDataRow& plain = set.AddInstanceChain(SOPClass::BasicTextSR);
    LVDataEditor editor;
    EXPECT_FALSE(editor.ApplyEdition(set, plain, Edition("Patient", "")));
    InstanceDataRow& pdf = set.AddInstanceChain(SOPClass::EncapsulatedPDF);
    EXPECT_TRUE(editor.ApplyEdition(set, pdf, Edition("Patient", R"x(<String Name="PatientID" Value="x"/>)x")));
    InstanceDataRow& loose = set.AddInstance(SOPClass::RawData);
    EXPECT_FALSE(editor.ApplyEdition(set, loose, Edition("Patient", "")));
}

// The CLI suite gives documents as files and as text, and names missing files; here the edge cases.
TEST(EditionDocument, EmptyDocumentLoadsAndTextThatIsNotUtf8Fails) {
    PatientDataSet set;
    MetadataRows rows;
    ASSERT_TRUE(LoadMetadata(set, "<orchid type=\"ConvertixToFp\"/>", kStamp, SOPClass::RawData, rows));
    EXPECT_TRUE(rows.patient->patient_id.IsEmpty());
    EXPECT_FALSE(LoadMetadata(set, "<\xC3\x28", kStamp, SOPClass::RawData, rows));
}

}  // namespace
