#include "app/ConversionEngine.h"

#include "app/Payload.h"
#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ExtraSequence.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
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

#include <utility>
#include <variant>

namespace Dicapsule {

namespace dm = Lumivale::DataModule;

namespace {

constexpr const char* kTraceModule = "Module ConversionEngine";

void ApplyIdentifiers(const IdentifierFields& identifier, dm::MetadataRows& rows) {
    if (identifier.study_instance_uid) rows.study->study_instance_uid.Set(*identifier.study_instance_uid);
    if (identifier.series_instance_uid) rows.series->series_instance_uid.Set(*identifier.series_instance_uid);
    if (identifier.sop_instance_uid) rows.instance->sop_instance_uid.Set(*identifier.sop_instance_uid);
    rows.instance->instance_number.Set(identifier.instance_number);
    rows.instance->instance_number_fixed = true;
}

// The command line's modality wins; without one, a series that lacks a known modality gets OT.
void ApplyModality(const std::optional<std::string>& modality, dm::SeriesDataRow& series) {
    if (modality) {
        series.modality.SetFromTerm(dm::ToUpperAscii(dm::TrimBlanks(*modality)));
    } else if (series.modality.IsEmpty() || series.modality.Value() == dm::Modality::unknown) {
        series.modality.Set(dm::Modality::OT);
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
        } else if (extra.vr == "SQ") {
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

ConversionResult convert(const ConversionRequest& request) {
    dm::PatientDataSet set;
    dm::MetadataRows rows{};
    if (!dm::LoadMetadata(set, request.metadata, dm::RunTimeStamp(), dm::SOPClass::RawData, rows)) {
        return ConversionResult::metadata_unusable;
    }
    auto* instance = dynamic_cast<dm::RawDataDataRow*>(rows.instance);
    if (instance == nullptr) {
        LV_TRACE(kTraceModule, "%s", "the metadata did not give a raw data instance");
        return ConversionResult::unexpected;
    }

    ApplyIdentifiers(request.identifier, rows);
    ApplyModality(request.modality, *rows.series);
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
    store_payload(instance->custom_data, request.content, request.original_name, request.command_line, references,
                  request.digest);
    for (const ReferenceRecord& reference : references) {
        instance->referenced_instances.push_back({reference.sop_class_uid, reference.sop_instance_uid});
    }
    if (request.thumbnail) {
        const ConversionResult icon = AttachThumbnail(request, *instance);
        if (icon != ConversionResult::written) return icon;
    }

    CompleteIdentifiers(rows);
    dm::DataAdapterModule::DicomFileDataAdapter adapter;
    const auto existing = request.replace_existing ? Portability::ExistingTarget::replace : Portability::ExistingTarget::refuse;
    if (request.to_standard_output) {
        const auto sink = [](const void* data, std::size_t size) { return Portability::WriteStandardOutput(data, size); };
        return adapter.Write(set, *instance, sink) ? ConversionResult::written : ConversionResult::output_not_written;
    }
    if (!adapter.Write(set, *instance, Portability::PathFromUtf8(request.output), existing)) return ConversionResult::output_not_written;
    return ConversionResult::written;
}

}  // namespace Dicapsule
