#include "Foundations/DataModule/metadata/MetadataReader.h"

#include "Foundations/DataModule/Rows/RawDataDataRow.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Lumivale::DataModule;

const date_time kStamp{2024, 3, 5, 10, 15, 0, 0};

// Sample files of several character sets and transfer syntaxes with what their rows should hold.
TEST(DicomMetadataSource, PatientAndStudyAreTakenOverWithDecodedText) {
    const struct Case {
        const char* file;
        const char* charset;
        const char* patient_name;
        const char* patient_id;
        const char* study_uid;
        const char* manufacturer;
    } cases[] = {
        {"charset_files/chrH31.dcm", "ISO 2022 IR 6\\ISO 2022 IR 87", "Yamada^Tarou=山田^太郎=やまだ^たろう", "H31EXAMPLE",
         "1.3.6.1.4.1.5962.1.2.0.1175775771.5702.0", ""},
        {"charset_files/chrRuss.dcm", "ISO_IR 144", "Люкceмбypг", "SCSRUSS", "1.3.6.1.4.1.5962.1.2.0.1175775772.5729.0", ""},
        {"charset_files/chrGerm.dcm", "ISO_IR 100", "Äneas^Rüdiger", "SCSGERM", "1.3.6.1.4.1.5962.1.2.0.1175775772.5723.0", ""},
        {"charset_files/chrKoreanMulti.dcm", "\\ISO 2022 IR 149", "김희중", "2008-3",
         "1.3.51.0.7.11986030739.15242.20106.39861.48967.23056.44419", "Agfa-Gevaert AG"},
        {"charset_files/chrX1.dcm", "ISO_IR 192", "Wang^XiaoDong=王^小東", "X1EXAMPLE", "1.3.6.1.4.1.5962.1.2.0.1175775771.5711.0", ""},
        {"test_files/MR_small_bigendian.dcm", "", "CompressedSamples^MR1", "4MR1", "1.3.6.1.4.1.5962.1.2.4.20040826185059.5457", "TOSHIBA_MEC"},
        {"test_files/MR_small_implicit.dcm", "", "CompressedSamples^MR1", "4MR1", "1.3.6.1.4.1.5962.1.2.4.20040826185059.5457", "TOSHIBA_MEC"},
        {"test_files/JPEG2000.dcm", "", "CompressedSamples^NM1", "8NM1", "1.3.6.1.4.1.5962.1.2.8.20040826185059.5457", "GE Medical Systems"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        PatientDataSet set;
        MetadataRows rows;
        ASSERT_TRUE(LoadMetadata(set, std::string(PYDICOM_DATA_DIR "/") + c.file, kStamp, SOPClass::RawData, rows));
        const std::string charset = rows.instance->specific_character_set.ToText();
        EXPECT_EQ(charset, c.charset);
        EXPECT_EQ(ToUtf8(rows.patient->patient_name.Text()), c.patient_name);
        EXPECT_EQ(rows.patient->patient_id.Utf8(), c.patient_id);
        EXPECT_EQ(rows.study->study_instance_uid.Value(), c.study_uid);
        EXPECT_EQ(rows.equipment->manufacturer.Utf8(), c.manufacturer);
        // Only the new chain is in the set: series, equipment and instance are new.
        EXPECT_EQ(set.Patients().Size(), 1u);
        EXPECT_EQ(set.Series().Size(), 1u);
        EXPECT_EQ(set.FirstSeries(), rows.series);
        EXPECT_EQ(set.SeriesOf(*rows.instance), rows.series);
        EXPECT_EQ(set.EquipmentOf(*rows.series), rows.equipment);
        EXPECT_NE(dynamic_cast<RawDataDataRow*>(rows.instance), nullptr);
        EXPECT_EQ(rows.series->series_number.Value(), 1);
        EXPECT_EQ(rows.series->series_date_time.Value(), kStamp);
        EXPECT_TRUE(rows.series->series_instance_uid.IsSet());
        EXPECT_TRUE(rows.instance->sop_instance_uid.IsSet());
        EXPECT_NE(rows.series->series_instance_uid.Value(), rows.instance->sop_instance_uid.Value());
    }
}

TEST(DicomMetadataSource, FailuresAndTheEquipmentCopy) {
    // A media directory goes down the XML path and does not parse; a truncated file is not readable.
    for (const char* file : {"test_files/dicomdirtests/DICOMDIR", "test_files/MR_truncated.dcm"}) {
        SCOPED_TRACE(file);
        PatientDataSet set;
        MetadataRows rows;
        EXPECT_FALSE(LoadMetadata(set, std::string(PYDICOM_DATA_DIR "/") + file, kStamp, SOPClass::RawData, rows));
    }
    PatientDataSet source;
    InstanceDataRow& old_instance = source.AddInstanceChain(SOPClass::CTImage);
    old_instance.sop_instance_uid.Set("1.2.3");
    SeriesDataRow& old_series = *source.SeriesOf(old_instance);
    old_series.series_instance_uid.Set("1.2.4");
    EquipmentDataRow& old_equipment = *source.EquipmentOf(old_series);
    for (WStringDataType* value : {&old_equipment.manufacturer, &old_equipment.institution_name, &old_equipment.station_name,
                                   &old_equipment.manufacturer_model_name, &old_equipment.device_serial_number,
                                   &old_equipment.institution_address}) {
        value->SetFromUtf8("x");
    }
    PatientDataSet set;
    MetadataRows rows;
    ASSERT_TRUE(BuildRowsFromDicomSource(set, source, kStamp, SOPClass::RawData, rows));
    EXPECT_NE(rows.series->series_instance_uid.Value(), "1.2.4");
    EXPECT_NE(rows.instance->sop_instance_uid.Value(), "1.2.3");
    EXPECT_EQ(rows.equipment->device_serial_number.Utf8(), "x");
    EXPECT_EQ(rows.equipment->station_name.Utf8(), "x");
    EXPECT_TRUE(rows.equipment->institution_address.IsEmpty());
    PatientDataSet without_equipment;
    without_equipment.Link(without_equipment.AddPatient(), without_equipment.AddStudy());
    EXPECT_FALSE(BuildRowsFromDicomSource(set, without_equipment, kStamp, SOPClass::RawData, rows));
}

}  // namespace
