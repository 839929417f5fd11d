#include "Foundations/DataModule/metadata/MetadataReader.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Lumivale::DataModule;

const date_time kStamp{2024, 3, 5, 10, 15, 0, 0};

// What pack takes over from sample DICOM files is checked end to end by the CLI suite; here the
// files it cannot use, and what it copies from the equipment of a source.
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
    EXPECT_EQ(rows.series->series_number.Value(), 1);
    EXPECT_EQ(rows.series->series_date_time.Value(), kStamp);
    EXPECT_EQ(rows.equipment->device_serial_number.Utf8(), "x");
    EXPECT_EQ(rows.equipment->station_name.Utf8(), "x");
    EXPECT_TRUE(rows.equipment->institution_address.IsEmpty());
    PatientDataSet without_equipment;
    without_equipment.Link(without_equipment.AddPatient(), without_equipment.AddStudy());
    EXPECT_FALSE(BuildRowsFromDicomSource(set, without_equipment, kStamp, SOPClass::RawData, rows));
}

}  // namespace
