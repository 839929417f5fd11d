#include "AdapterSampleRows.h"

#include <algorithm>

namespace AdapterTesting {

namespace dm = Lumivale::DataModule;

namespace {

struct SampleText { std::string_view keyword; std::string_view text; };

constexpr SampleText kSamples[] = {
    {"PatientName", "Doe^John^Q^Dr^Jr"}, {"PatientID", "ID-42"}, {"IssuerOfPatientID", "Clinic Registry"},
    {"PatientBirthDate", "19700215"}, {"PatientSex", "M"}, {"OtherPatientIDs", "A1\\B2"},
    {"PatientComments", "Line one\r\nLine two"},
    {"StudyDate", "20240131"}, {"StudyTime", "235959.123456"}, {"AccessionNumber", "ACC1"},
    {"ReferringPhysicianName", "Smith^Anna"}, {"StudyDescription", "Panoramic check"}, {"PatientAge", "051Y"},
    {"PatientSize", "1.82"}, {"PatientWeight", "75.5"}, {"StudyInstanceUID", "1.2.826.0.1.3680043.2.1"},
    {"StudyID", "S1"},
    {"SeriesDate", "20240201"}, {"SeriesTime", "101010"}, {"Modality", "DX"}, {"SeriesDescription", "First series"},
    {"PerformingPhysicianName", "Who^Doctor"}, {"OperatorsName", "Op^One"}, {"BodyPartExamined", "ABDOMEN"},
    {"ProtocolName", "Protocol 9"}, {"SeriesInstanceUID", "1.2.826.0.1.3680043.2.1.2"}, {"SeriesNumber", "7"},
    {"Laterality", "L"},
    {"Manufacturer", "Ivra"}, {"InstitutionName", "Clinic"}, {"InstitutionAddress", "1 Main Street"},
    {"StationName", "ST1"}, {"InstitutionalDepartmentName", "Radiology"}, {"ManufacturerModelName", "Model X"},
    {"DeviceSerialNumber", "SN-1"}, {"SoftwareVersions", "Dicapsule 2.0.10\\fw 3"},
    {"InstanceCreationDate", "20240301"}, {"InstanceCreationTime", "080000"},
    {"InstanceCreatorUID", "1.2.826.0.1.3680043.2.9"}, {"SOPInstanceUID", "1.2.826.0.1.3680043.2.1.2.3"},
    {"ContentDate", "20240302"}, {"AcquisitionDateTime", "20240301080000"}, {"ContentTime", "090000"},
    {"CreatorVersionUID", "1.2.826.0.1.3680043.2.50"}, {"InstanceNumber", "3"},
};

}  // namespace

std::string_view SampleOf(std::string_view keyword) {
    const auto sample = std::ranges::find(kSamples, keyword, &SampleText::keyword);
    return sample == std::end(kSamples) ? std::string_view{} : sample->text;
}

dm::DataRow* ChainRow(const dm::PatientDataSet& set, dm::InstanceDataRow& instance, dm::RowKind kind) {
    dm::SeriesDataRow* series = set.SeriesOf(instance);
    dm::StudyDataRow* study = series ? set.StudyOf(*series) : nullptr;
    switch (kind) {
        case dm::RowKind::Patient: return study ? set.PatientOf(*study) : nullptr;
        case dm::RowKind::Study: return study;
        case dm::RowKind::Series: return series;
        case dm::RowKind::Equipment: return series ? set.EquipmentOf(*series) : nullptr;
        case dm::RowKind::Instance: return &instance;
    }
    return nullptr;
}

bool FillAllNamedAttributes(dm::PatientDataSet& set, dm::InstanceDataRow& instance) {
    for (const dm::RowKind kind : dm::kAllRowKinds) {
        dm::DataRow* row = ChainRow(set, instance, kind);
        for (const dm::RowAttribute& attribute : dm::RowAttributesOf(kind)) {
            if (row == nullptr || !attribute.set(*row, SampleOf(attribute.keyword))) return false;
        }
    }
    instance.instance_number_fixed = true;
    return true;
}

dm::RawDataDataRow& AddTypicalRawDataChain(dm::PatientDataSet& set) {
    auto& raw = static_cast<dm::RawDataDataRow&>(set.AddInstanceChain(dm::SOPClass::RawData));
    constexpr std::string_view kTypical[] = {"PatientName",    "PatientID", "StudyInstanceUID", "SeriesInstanceUID",
                                             "SOPInstanceUID", "Modality",  "Manufacturer",     "SoftwareVersions"};
    for (const dm::RowKind kind : dm::kAllRowKinds)
        for (const dm::RowAttribute& attribute : dm::RowAttributesOf(kind))
            if (std::ranges::find(kTypical, attribute.keyword) != std::end(kTypical))
                attribute.set(*ChainRow(set, raw, kind), SampleOf(attribute.keyword));
    raw.custom_data.SetText("Dicapsule.PackedFile.Name", "report.pdf");
    raw.custom_data.SetBytes("Dicapsule.PackedFile.Content", dm::ByteBuffer::CopyOf(std::vector<std::uint8_t>{0x25, 0x50, 0x44, 0x46, 0x00, 0xFF, 0x7F}));
    raw.custom_data.SetText("Dicapsule.CommandLine", "pack -i report.pdf -o out.dcm");
    return raw;
}

void AttachRgbIcon(dm::InstanceDataRow& instance, std::uint16_t columns, std::uint16_t rows, std::uint16_t bits,
                   std::uint32_t stride, std::vector<std::vector<std::uint8_t>> planes) {
    dm::IconImageRecord& icon = instance.icon_image;
    icon.samples_per_pixel = 3;
    icon.photometric_interpretation = dm::PhotometricInterpretation::RGB;
    icon.rows = rows;
    icon.columns = columns;
    icon.bits_allocated = icon.bits_stored = bits;
    icon.high_bit = static_cast<std::uint16_t>(bits - 1);
    icon.pixel_representation = 0;
    icon.planar_configuration = 0;
    icon.pixel_description = {rows, columns, stride, bits, bits, 3, 0};
    for (unsigned p = 0; p < 3; ++p) icon.pixel_data[p] = dm::ByteBuffer::Adopt(std::move(planes[p]));
    icon.is_set = true;
    instance.duplicate_icon_as_image = true;
}

}  // namespace AdapterTesting
