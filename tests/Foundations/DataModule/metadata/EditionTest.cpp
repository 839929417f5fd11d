#include "Foundations/DataModule/metadata/LVDataEditor.h"
#include "Foundations/DataModule/metadata/MetadataReader.h"

#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/RowAttributes.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Lumivale::DataModule;
using DataConverterModule::LVDataEditor;

const date_time kStamp{2024, 3, 5, 10, 15, 0, 0};

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
            EXPECT_EQ(entry.tag, Codec::MakeTagNumber(attribute.tag.group, attribute.tag.element));
            EXPECT_EQ(Codec::VRCode(entry.vr), attribute.vr);
        }
    }
}

// What one element of an edition gives: the text read back from the row (named member or extra element).
TEST(EditionDocument, EveryElementKindReachesItsRow) {
    const struct { const char* id; const char* scope; const char* element; RowKind kind; ElementTag tag;
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

TEST(EditionDocument, WhatCannotBeAppliedFailsTheLoad) {
    const struct Case { const char* id; std::string document; } cases[] = {
        {"unknown-keyword", Document(Edition("Patient", R"x(<String Name="PatientNickname" Value="x"/>)x"))},
        {"keyword-of-other-row", Document(Edition("Series", R"x(<String Name="PatientID" Value="x"/>)x"))},
        {"malformed-date", Document(Edition("Study", R"x(<Date Name="StudyDate" Value="2024-03-05"/>)x"))},
        {"date-parts-missing-day", Document(Edition("Study", R"x(<Date Name="StudyDate" Year="2024" Month="3"/>)x"))},
        {"too-long-sh", Document(Edition("Study", R"x(<String Name="StudyID" Value="12345678901234567"/>)x"))},
        {"too-long-extra", Document(Edition("Series", R"x(<String Name="PerformedStationAETitle" Value="ABCDEFGHIJKLMNOPQ"/>)x"))},
        {"bad-tag", Document(Edition("Series", R"x(<Element Tag="(0018,60)" VR="DS" Value="1"/>)x"))},
        {"vr-against-dictionary", Document(Edition("Series", R"x(<Element Tag="(0018,0060)" VR="LO" Value="1"/>)x"))},
        {"binary-vr", Document(Edition("Series", R"x(<Element Tag="(0011,0010)" VR="OB" Value="1"/>)x"))},
        {"uv-negative", Document(Edition("Series", R"x(<Element Tag="(0011,1010)" VR="UV" Value="-1"/>)x"))},
        {"sv-past-64-bits", Document(Edition("Series", R"x(<Element Tag="(0011,1010)" VR="SV" Value="9223372036854775808"/>)x"))},
        {"uv-fraction", Document(Edition("Series", R"x(<Element Tag="(0011,1010)" VR="UV" Value="1.5"/>)x"))},
        {"kind-against-vr", Document(Edition("Patient", R"x(<Date Name="PatientID" Value="20240101"/>)x"))},
        {"unknown-attribute", Document(Edition("Patient", R"x(<String Name="PatientID" value="x"/>)x"))},
        {"unknown-element", Document(Edition("Patient", R"x(<Text Name="PatientID" Value="x"/>)x"))},
        {"unknown-scope", Document(Edition("Visit", R"x(<String Name="PatientID" Value="x"/>)x"))},
        {"charset-outside-instance", Document(Edition("Patient", R"x(<Code Name="SpecificCharacterSet" Value="ISO_IR 192"/>)x"))},
        {"charset-unknown", Document(Edition("Instance", R"x(<Code Name="SpecificCharacterSet" Value="ISO_IR 999"/>)x"))},
        {"reserved-file-meta", Document(Edition("Instance", R"x(<Element Tag="(0002,0010)" VR="UI" Value="1.2"/>)x"))},
        {"reserved-sop-class", Document(Edition("Instance", R"x(<String Name="SOPClassUID" Value="1.2"/>)x"))},
        {"reserved-private-group", Document(Edition("Instance", R"x(<Element Tag="(0009,1001)" VR="LO" Value="x"/>)x"))},
        {"name-component-delimiter", Document(Edition("Patient", R"x(<Name Name="PatientName" Family="A^B"/>)x"))},
        {"boolean-word", Document(Edition("Instance", R"x(<Boolean Name="BurnedInAnnotation" Value="maybe"/>)x"))},
        {"code-missing-meaning", Document(Edition("Study", R"x(<Code Name="ProcedureCodeSequence" Code="1" Scheme="99X"/>)x"))},
        {"second-edition-fails", Document(Edition("Patient", "") + Edition("Study", R"x(<Number Name="StudyID" Value="1"/>)x"))},
        {"not-orchid", "<metadata/>"},
        {"not-xml", "<orchid type=\"x\"><operations>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        PatientDataSet set;
        MetadataRows rows;
        EXPECT_FALSE(BuildRowsFromEditionDocument(set, c.document, kStamp, SOPClass::RawData, rows));
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
    EXPECT_EQ(code->vr, "SQ");
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
