#include "app/ConversionEngine.h"

#include "app/Payload.h"
#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ExtraSequence.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
#include "Foundations/DataModule/Enumerations/DocumentClass.h"
#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/Rows/RowAttributes.h"
#include "Foundations/DataModule/Rows/TestMode.h"
#include "Foundations/DataModule/Uid/UIDGenerator.h"
#include "Foundations/DataModule/Uid/IdentitySource.h"
#include "Foundations/DataModule/metadata/MetadataReader.h"
#include "Foundations/LVCodec/module/ThumbnailIcon.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/StandardStreams.h"
#include "Portability/Misc/Utf8Path.h"

#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace Dicapsule {

namespace dm = Lumivale::DataModule;

namespace {

constexpr const char* kTraceModule = "Module ConversionEngine";
constexpr std::string_view kBurnedInAnnotationYes = "YES";

void ApplyIdentifiers(const IdentifierFields& identifier, dm::MetadataRows& rows) {
    if (identifier.study_instance_uid) rows.study->study_instance_uid.Set(*identifier.study_instance_uid);
    if (identifier.series_instance_uid) rows.series->series_instance_uid.Set(*identifier.series_instance_uid);
    if (identifier.sop_instance_uid) rows.instance->sop_instance_uid.Set(*identifier.sop_instance_uid);
    rows.instance->instance_number.Set(identifier.instance_number);
    rows.instance->instance_number_fixed = true;
}

// The command line's modality wins; without one, a series that lacks a known modality gets OT, or
// a document's usual term (DOC, M3D), which also replaces OT ("other" is only the default of an
// edition document). A 3D model's series is M3D whatever the metadata says: its class allows no other.
void ApplyModality(const std::optional<std::string>& modality, const dm::EncapsulatedDocumentClass* documentClass,
                   dm::SeriesDataRow& series) {
    const bool lacking = series.modality.IsEmpty() || series.modality.Value() == dm::Modality::unknown;
    if (modality) {
        series.modality.SetFromTerm(dm::ToUpperAscii(dm::TrimBlanks(*modality)));
    } else if (documentClass && (lacking || documentClass->is_model || series.modality.Value() == dm::Modality::OT)) {
        series.modality.Set(documentClass->modality);
    } else if (lacking) {
        series.modality.Set(dm::Modality::OT);
    }
}

// A document instance holds the payload once, in its document element; its custom data keeps the
// facts of the packing (name, command line, references).
// The document element comes after the private custom data in the file, so its digest cannot be
// taken as it is written: it is taken from the input first (a change to the input after that fails
// the write). False when the input cannot be read.
bool StoreDocument(const ConversionRequest& request, const std::vector<ReferenceRecord>& references,
                   dm::EncapsulatedDocumentDataRow& document) {
    store_payload(document.custom_data, request.content, request.original_name, request.command_line, references,
                  false);
    document.custom_data.Erase(kPackedFileContentKey);
    if (request.digest) {
        std::string digest;
        if (!ContentSha256(request.content, digest)) return false;
        document.custom_data.SetText(std::string(kPackedFileSha256Key), digest);
    }
    document.encapsulated_document = request.content;
    document.document_title.SetFromUtf8(request.original_name);
    document.hl7_instance_identifier = request.document->hl7_instance_identifier;
    // Whether a document shows patient data cannot be told from its bytes: it is said that it may.
    document.burned_in_annotation.Set(std::string(kBurnedInAnnotationYes));
    return true;
}

// A 3D model's equipment must name its maker, model and serial number: the metadata's, else this
// program on this machine.
void CompleteModelEquipment(const ConversionRequest& request, dm::EquipmentDataRow& equipment) {
    if (equipment.manufacturer.IsEmpty()) equipment.manufacturer.SetFromUtf8(request.product_name);
    if (equipment.manufacturer_model_name.IsEmpty()) equipment.manufacturer_model_name.SetFromUtf8(request.product_name);
    if (equipment.device_serial_number.IsEmpty()) {
        equipment.device_serial_number.SetFromUtf8(std::to_string(dm::ProcessIdentitySource().MachineNumber()));
    }
}

void CompleteIdentifiers(dm::MetadataRows& rows) {
    if (rows.study->study_instance_uid.IsEmpty()) rows.study->study_instance_uid.Set(dm::GenerateUid(dm::UidKind::Study));
    if (rows.series->series_instance_uid.IsEmpty()) {
        rows.series->series_instance_uid.Set(dm::GenerateUid(dm::UidKind::Series));
    }
    if (rows.instance->sop_instance_uid.IsEmpty()) {
        rows.instance->sop_instance_uid.Set(dm::GenerateUid(dm::UidKind::Instance));
    }
    dm::ApplyTestModeIfOn(rows.patient, rows.study, rows.instance);
}

// True when an extra element holds text beyond ASCII, directly or in a text value of a sequence's
// items (only their text: item headers and binary numbers hold bytes above 0x7F too).
bool ExtrasNeedMoreThanAscii(const dm::ExtraElementList& extras) {
    for (const auto& [tag, extra] : extras) {
        if (const auto* text = std::get_if<std::string>(&extra.value)) {
            if (!dm::IsAscii(*text)) return true;
        } else if (extra.vr == dm::ValueRepresentation::SQ) {
            const auto& items = std::get<std::vector<std::uint8_t>>(extra.value);
            if (dm::DataAdapterModule::StoredItemsHoldTextBeyondAscii(tag, items)) return true;
        }
    }
    return false;
}

// True when some named attribute or extra element of the rows holds text beyond ASCII.
bool RowsNeedMoreThanAscii(const dm::MetadataRows& rows) {
    const std::pair<dm::RowKind, const dm::DataRow*> scopes[] = {
        {dm::RowKind::Patient, rows.patient}, {dm::RowKind::Study, rows.study}, {dm::RowKind::Series, rows.series},
        {dm::RowKind::Equipment, rows.equipment}, {dm::RowKind::Instance, rows.instance}};
    for (const auto& [kind, row] : scopes) {
        for (const dm::RowAttribute& attribute : dm::RowAttributesOf(kind)) {
            const std::optional<std::string> text = attribute.get(*row);
            if (text && !dm::IsAscii(*text)) return true;
        }
        if (ExtrasNeedMoreThanAscii(row->extra_elements)) return true;
    }
    return false;
}

// The output character set: --encoding when given; else the metadata's; and when the metadata
// named none (an edition document may not) but its text is not plain ASCII, UTF-8, since the
// document's text is Unicode and the default repertoire could not hold it.
void ChooseCharacterSet(dm::OutputEncoding::Enum encoding, const dm::MetadataRows& rows, dm::InstanceDataRow& instance) {
    if (encoding != dm::OutputEncoding::unknown) {
        instance.specific_character_set = dm::MultiCharSetDataType(encoding);
    } else if (instance.specific_character_set.IsEmpty() && RowsNeedMoreThanAscii(rows)) {
        instance.specific_character_set = dm::MultiCharSetDataType(dm::OutputEncoding::unicode);
    }
}

ConversionResult AttachThumbnail(const ConversionRequest& request, dm::InstanceDataRow& instance) {
    using Lumivale::Imaging::ThumbnailIconResult;
    switch (Lumivale::Imaging::InsertThumbnailIcon(*request.thumbnail, instance.icon_image)) {
        case ThumbnailIconResult::not_loaded: return ConversionResult::thumbnail_not_loaded;
        case ThumbnailIconResult::not_inserted: return ConversionResult::thumbnail_not_inserted;
        case ThumbnailIconResult::module_unavailable: return ConversionResult::imaging_module_unavailable;
        case ThumbnailIconResult::inserted: break;
    }
    instance.duplicate_icon_as_image = request.hackforbmpacs;
    return ConversionResult::written;
}

}  // namespace

namespace {

// The rows of the instance the request describes, complete and ready to be written.
ConversionResult BuildRows(const ConversionRequest& request, dm::PatientDataSet& set, dm::MetadataRows& rows) {
    const dm::SOPClass::Enum instanceClass = request.document ? request.document->sop_class : dm::SOPClass::RawData;
    if (!dm::LoadMetadata(set, request.metadata, dm::RunTimeStamp(), instanceClass, rows)) {
        return ConversionResult::metadata_unusable;
    }
    dm::InstanceDataRow* instance = rows.instance;
    auto* raw = dynamic_cast<dm::RawDataDataRow*>(instance);
    auto* document = dynamic_cast<dm::EncapsulatedDocumentDataRow*>(instance);
    const dm::EncapsulatedDocumentClass* documentClass = dm::EncapsulatedDocumentClassOf(instanceClass);
    if (request.document ? (document == nullptr || documentClass == nullptr) : raw == nullptr) {
        LV_TRACE(kTraceModule, "%s", "the metadata did not give an instance of the class asked for");
        return ConversionResult::unexpected;
    }

    ApplyIdentifiers(request.identifier, rows);
    ApplyModality(request.modality, documentClass, *rows.series);
    rows.equipment->software_versions.Clear();
    rows.equipment->software_versions.Set(0u, dm::FromUtf8(request.product_name + " " + request.product_version));
    ChooseCharacterSet(request.encoding, rows, *instance);

    // Without --reference, a DICOM source is itself the instance the new one refers to.
    std::vector<ReferenceRecord> references = request.references;
    if (references.empty() && rows.source_instance) {
        const dm::SourceInstanceUids& source = *rows.source_instance;
        references.push_back({source.study_instance_uid, source.series_instance_uid, source.sop_instance_uid,
                              source.sop_class_uid});
    }
    if (document) {
        if (!StoreDocument(request, references, *document)) return ConversionResult::output_not_written;
        if (documentClass->is_model) CompleteModelEquipment(request, *rows.equipment);
    } else {
        store_payload(raw->custom_data, request.content, request.original_name, request.command_line, references,
                      request.digest, request.part);
    }
    for (const ReferenceRecord& reference : references) {
        instance->referenced_instances.push_back({reference.sop_class_uid, reference.sop_instance_uid});
    }
    if (request.thumbnail) {
        const ConversionResult icon = AttachThumbnail(request, *instance);
        if (icon != ConversionResult::written) return icon;
    }

    CompleteIdentifiers(rows);
    // The test mode's fixed instance UID is the first part's; the others add their index to it.
    if (request.part && request.part->index > 1 && raw && raw->sop_instance_uid.ValueOr({}) == dm::TestModeInstanceUid()) {
        raw->sop_instance_uid.Set(dm::TestModeInstanceUid() + "." + std::to_string(request.part->index));
    }
    return ConversionResult::written;
}

}  // namespace

ConversionResult convert(const ConversionRequest& request) {
    dm::PatientDataSet set;
    dm::MetadataRows rows{};
    if (const ConversionResult built = BuildRows(request, set, rows); built != ConversionResult::written) return built;
    dm::InstanceDataRow* instance = rows.instance;
    dm::DataAdapterModule::DicomFileDataAdapter adapter;
    const auto existing = request.replace_existing ? Portability::ExistingTarget::replace : Portability::ExistingTarget::refuse;
    if (request.to_standard_output) {
        const auto sink = [](const void* data, std::size_t size) { return Portability::WriteStandardOutput(data, size); };
        return adapter.Write(set, *instance, sink) ? ConversionResult::written : ConversionResult::output_not_written;
    }
    if (!adapter.Write(set, *instance, Portability::PathFromUtf8(request.output), existing)) return ConversionResult::output_not_written;
    return ConversionResult::written;
}

ConversionResult convert(const ConversionRequest& request, PendingInstance& pending) {
    dm::PatientDataSet set;
    dm::MetadataRows rows{};
    if (const ConversionResult built = BuildRows(request, set, rows); built != ConversionResult::written) return built;
    dm::DataAdapterModule::DicomFileDataAdapter adapter;
    const auto existing = request.replace_existing ? Portability::ExistingTarget::replace : Portability::ExistingTarget::refuse;
    if (!adapter.WriteUncommitted(set, *rows.instance, Portability::PathFromUtf8(request.output), existing, pending.file)) {
        return ConversionResult::output_not_written;
    }
    pending.study_instance_uid = rows.study->study_instance_uid.ValueOr({});
    pending.series_instance_uid = rows.series->series_instance_uid.ValueOr({});
    return ConversionResult::written;
}

}  // namespace Dicapsule
