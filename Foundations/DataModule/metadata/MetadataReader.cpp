#include "Foundations/DataModule/metadata/MetadataReader.h"

#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/Uid/UIDGenerator.h"
#include "Foundations/DataModule/metadata/LVDataEditor.h"
#include "Foundations/DataModule/metadata/SourceSignature.h"
#include "Portability/Misc/DebugTrace.h"

#include <pugixml.hpp>

#include <filesystem>
#include <system_error>

namespace Lumivale::DataModule {

namespace {

constexpr const char* kTraceModule = "Module MetadataReader";

// A metadata document is a few kilobytes. The cap bounds what a hostile one costs: the parsed
// tree takes up to about 26 times the text (two nodes per "<a/>x"), so 2 MiB stays near 55 MB.
constexpr std::uintmax_t kMaxDocumentSize = 2ull * 1024 * 1024;

bool Fail(const char* reason, const std::string& source) {
    LV_TRACE(kTraceModule, "Metadata not loaded (%s): %s", reason, source.c_str());
    return false;
}

std::filesystem::path PathOf(const std::string& source_utf8) {
    return std::filesystem::path(std::u8string(source_utf8.begin(), source_utf8.end()));
}

bool ReadWholeFile(const Portability::OpenFile& file, std::string& text) {
    if (file.Size() > kMaxDocumentSize) return false;
    text.assign(static_cast<std::size_t>(file.Size()), '\0');
    return file.ReadAt(text.data(), text.size(), 0);
}

// The source's Specific Character Set as the output's default, without the terms this program
// cannot write: text was read past them (as the default repertoire), and the output then takes
// the set its text needs. An unknown first value drops the whole declaration.
MultiCharSetDataType OutputCharSetOf(const MultiCharSetDataType& source) {
    MultiCharSetDataType usable = source;
    for (std::size_t position = 0; position < source.Count(); ++position) {
        if (source.IsEmpty(position) || source.Get(position) != CharSet::Unknown) continue;
        LV_TRACE(kTraceModule, "Specific Character Set value %zu of the DICOM source is unknown and not carried over",
                 position);
        if (position == 0) return MultiCharSetDataType();
        usable.Clear(position);
    }
    return usable;
}

std::optional<SourceInstanceUids> SourceInstanceOf(const StudyDataRow& study, const SeriesDataRow& series,
                                                   const InstanceDataRow* instance) {
    if (instance == nullptr || study.study_instance_uid.IsEmpty() || series.series_instance_uid.IsEmpty() ||
        instance->sop_instance_uid.IsEmpty()) {
        return std::nullopt;
    }
    return SourceInstanceUids{study.study_instance_uid.Value(), series.series_instance_uid.Value(),
                              instance->sop_instance_uid.Value(),
                              instance->sop_class.IsEmpty() ? std::string() : instance->sop_class.Term()};
}

}  // namespace

bool BuildRowsFromDicomSource(PatientDataSet& set, const PatientDataSet& source, const date_time& stamp,
                              SOPClass::Enum instance_class, MetadataRows& rows) {
    const PatientDataRow* source_patient = source.FirstPatient();
    const StudyDataRow* source_study = source_patient ? source.FirstStudyOf(*source_patient) : nullptr;
    const SeriesDataRow* source_series = source_study ? source.FirstSeriesOf(*source_study) : nullptr;
    const EquipmentDataRow* source_equipment = source_series ? source.EquipmentOf(*source_series) : nullptr;
    if (!source_equipment) return Fail("the DICOM source lacks a patient, study, series or equipment", "");
    const InstanceDataRow* source_instance = source.FirstInstanceOf(*source_series);

    PatientDataRow& patient = set.AddPatient();
    patient = *source_patient;
    StudyDataRow& study = set.AddStudy();
    study = *source_study;
    SeriesDataRow& series = set.AddSeries();
    series.series_instance_uid.Set(GenerateUid(UidKind::Series));
    series.series_number.Set(1);
    series.series_date_time.Set(stamp);
    series.creation_date_time.Set(stamp);
    EquipmentDataRow& equipment = set.AddEquipment();
    equipment.manufacturer = source_equipment->manufacturer;
    equipment.institution_name = source_equipment->institution_name;
    equipment.station_name = source_equipment->station_name;
    equipment.manufacturer_model_name = source_equipment->manufacturer_model_name;
    equipment.device_serial_number = source_equipment->device_serial_number;
    InstanceDataRow& instance = set.AddInstance(instance_class);
    instance.sop_instance_uid.Set(GenerateUid(UidKind::Instance));
    instance.creation_date_time.Set(stamp);
    if (source_instance) instance.specific_character_set = OutputCharSetOf(source_instance->specific_character_set);
    if (!set.Link(patient, study) || !set.Link(study, series) || !set.Link(series, equipment) ||
        !set.Link(series, instance)) {
        return Fail("the new rows could not be linked", "");
    }
    rows = {&patient, &study, &series, &equipment, &instance, std::nullopt};
    rows.source_instance = SourceInstanceOf(*source_study, *source_series, source_instance);
    return true;
}

bool BuildRowsFromEditionDocument(PatientDataSet& set, std::string_view document_text, const date_time& stamp,
                                  SOPClass::Enum instance_class, MetadataRows& rows) {
    PatientDataRow& patient = set.AddPatient();
    patient.creation_date_time.Set(stamp);
    StudyDataRow& study = set.AddStudy();
    study.study_date_time.Set(stamp);
    study.creation_date_time.Set(stamp);
    SeriesDataRow& series = set.AddSeries();
    series.modality.Set(Modality::OT);
    series.series_date_time.Set(stamp);
    series.creation_date_time.Set(stamp);
    EquipmentDataRow& equipment = set.AddEquipment();
    InstanceDataRow& instance = set.AddInstance(instance_class);
    if (!set.Link(patient, study) || !set.Link(study, series) || !set.Link(series, equipment) ||
        !set.Link(series, instance)) {
        return Fail("the new rows could not be linked", "");
    }
    rows = {&patient, &study, &series, &equipment, &instance, std::nullopt};

    if (document_text.size() > kMaxDocumentSize) return Fail("the document is larger than the size cap", "");
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(document_text.data(), document_text.size());
    if (!parsed) {
        LV_TRACE(kTraceModule, "Metadata document does not parse: %s at offset %lld", parsed.description(),
                 static_cast<long long>(parsed.offset));
        return false;
    }
    const pugi::xml_node root = document.document_element();
    if (std::string_view(root.name()) != "orchid") return Fail("the document element is not \"orchid\"", root.name());
    DataConverterModule::LVDataEditor editor;
    int index = 0;
    for (pugi::xml_node operation = root.child("operations").child("operation"); operation;
         operation = operation.next_sibling("operation"), ++index) {
        if (std::string_view(operation.attribute("type").value()) != "edition") continue;
        // Read in place: printing the element back to text first would cost the square of its depth.
        if (!editor.ApplyOperation(set, instance, operation)) {
            LV_TRACE(kTraceModule, "Edition operation %d refused: %s", index, editor.error().c_str());
            return false;
        }
    }
    return true;
}

bool LoadMetadata(PatientDataSet& set, const std::string& source_utf8, const date_time& stamp,
                  SOPClass::Enum instance_class, MetadataRows& rows) {
    return LoadMetadata(set, source_utf8, stamp, instance_class, rows, &ReadDicomSourceRows);
}

bool LoadMetadata(PatientDataSet& set, const std::string& source_utf8, const date_time& stamp,
                  SOPClass::Enum instance_class, MetadataRows& rows, const DicomRowsReader& read_dicom) {
    if (!IsValidUtf8(source_utf8)) return Fail("the source is not UTF-8", "");
    const std::filesystem::path path = PathOf(source_utf8);
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        const std::string_view text = TrimBlanks(source_utf8);
        if (!text.empty() && text.front() == '<') return BuildRowsFromEditionDocument(set, text, stamp, instance_class, rows);
        return Fail("no such file", source_utf8);
    }
    // Opened once: its head says what it is, and the same open file is then read whole.
    const std::shared_ptr<const Portability::OpenFile> file = Portability::OpenFile::Open(source_utf8);
    std::vector<std::uint8_t> head;
    if (!file || !ReadSourceHead(*file, head)) return Fail("cannot read", source_utf8);
    if (DetectSourceKind(head) == SourceKind::Dicom) {
        PatientDataSet source;
        if (!read_dicom || !read_dicom(file, source)) return Fail("not a readable DICOM file", source_utf8);
        return BuildRowsFromDicomSource(set, source, stamp, instance_class, rows);
    }
    std::string document;
    if (!ReadWholeFile(*file, document)) return Fail("cannot read", source_utf8);
    return BuildRowsFromEditionDocument(set, document, stamp, instance_class, rows);
}

}  // namespace Lumivale::DataModule
