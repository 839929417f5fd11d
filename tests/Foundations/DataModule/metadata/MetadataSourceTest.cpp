// Which kind of metadata source a file is, and what a DICOM source gives.
#include "Foundations/DataModule/metadata/MetadataReader.h"
#include "Foundations/DataModule/metadata/SourceSignature.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Lumivale::DataModule;
using namespace std::string_literals;

// A file head: 128 bytes of preamble (or none), then the given bytes.
std::vector<std::uint8_t> Head(const std::string& bytes, bool preamble = false) {
    std::vector<std::uint8_t> head(bytes.begin(), bytes.end());
    if (preamble) head.insert(head.begin(), 128, std::uint8_t{0});
    return head;
}

const std::string kMediaDirectoryMeta =
    "DICM"
    "\x02\x00\x00\x00" "UL" "\x04\x00" "\xBA\x00\x00\x00"  // (0002,0000) any group length
    "\x02\x00\x01\x00" "OB" "\x00\x00" "\x02\x00\x00\x00" "\x00\x01"s
    + "\x02\x00\x02\x00" "UI" "\x14\x00" "1.2.840.10008.1.3.10"s;

TEST(SourceSignature, FirstMatchingRowGivesTheKind) {
    struct Case { const char* id; std::vector<std::uint8_t> head; SourceKind::Enum kind; } const cases[] = {
        {"media-directory", Head(kMediaDirectoryMeta, true), SourceKind::MediaDirectory},
        {"media-directory-other-class", Head(kMediaDirectoryMeta.substr(0, 57) + "1", true), SourceKind::Dicom},
        {"part10", Head("DICM\x02\x00\x00\x00"s, true), SourceKind::Dicom},
        {"part10-exactly-132-bytes", Head("DICM", true), SourceKind::Dicom},
        {"dicm-cut-short", Head("DIC", true), SourceKind::Unrecognised},
        {"jpeg", Head("\xFF\xD8\xFF\xE0"s), SourceKind::JpegFamily},
        {"j2k-codestream", Head("\xFF\x4F\xFF\x51"s), SourceKind::JpegFamily},
        {"jp2", Head("\x00\x00\x00\x0C\x6A\x50\x20\x20\x0D\x0A"s), SourceKind::JpegFamily},
        {"jp2-cut", Head("\x00\x00\x00\x0C\x6A\x50\x20"s), SourceKind::Unrecognised},
        {"tiff-le", Head("II*\x00"s), SourceKind::Tiff},
        {"tiff-be", Head("MM\x00*"s), SourceKind::Tiff},
        {"bare-0008-0000-be", Head("\x00\x08\x00\x00"s), SourceKind::Dicom},
        {"bare-0002-le", Head("\x02\x00\x00\x00"s), SourceKind::Dicom},
        {"bare-0008-0005", Head("\x08\x00\x05\x00"s), SourceKind::Dicom},
        {"own-xml", Head("<orchid type=\"ConvertixToFp\">"), SourceKind::OwnXml},
        {"own-xml-single-quote", Head("<orchid type='x'>"), SourceKind::Unrecognised},
        {"xml-declaration", Head("<?xml version=\"1.0\"?><orchid type=\"x\">"), SourceKind::Unrecognised},
        {"empty", {}, SourceKind::Unrecognised},
        {"one-byte", Head("\xFF"s), SourceKind::Unrecognised},
    };
    for (const Case& c : cases) EXPECT_EQ(DetectSourceKind(c.head), c.kind) << c.id;
    EXPECT_EQ(SourceSignatureReadLength(), 256u);
}

TEST(SourceSignature, ReadsAtMostTheSignatureLength) {
    const TestFiles::ScratchDirectory scratch("signature-head");
    const std::string path = (scratch.path / "head.bin").string();
    TestFiles::WriteBytes(path, std::vector<std::uint8_t>(1000, 0x41));
    std::vector<std::uint8_t> head;
    const auto file = Portability::OpenFile::Open(path);
    ASSERT_TRUE(file && ReadSourceHead(*file, head));
    EXPECT_EQ(head.size(), 256u);
}

const date_time kStamp{2024, 3, 5, 10, 15, 0, 0};

// What pack takes over from sample DICOM files is checked end to end by the CLI suite; here the
// files it cannot use, and what it copies from the equipment of a source.
TEST(DicomMetadataSource, FailuresAndTheEquipmentCopy) {
    // A media directory goes down the XML path and does not parse; a truncated file is not readable.
    for (const char* file : {"test_files/dicomdirtests/DICOMDIR", "test_files/MR_truncated.dcm"}) {
        SCOPED_TRACE(file);
        const std::string path = std::string(PYDICOM_DATA_DIR "/") + file;
        ASSERT_FALSE(TestFiles::ReadBytes(path).empty()) << "pydicom's sample is missing";
        PatientDataSet set;
        MetadataRows rows;
        EXPECT_FALSE(LoadMetadata(set, path, kStamp, SOPClass::RawData, rows));
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
