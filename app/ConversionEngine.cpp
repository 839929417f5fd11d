#include "app/ConversionEngine.h"

#include "app/Payload.h"
#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/Uid/TestMode.h"
#include "Foundations/DataModule/Uid/UIDGenerator.h"
#include "Foundations/DataModule/Uid/IdentitySource.h"
#include "Foundations/DataModule/metadata/MetadataReader.h"
#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/icon/IconImageBuilder.h"
#include "Portability/Misc/DebugTrace.h"

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

ConversionResult AttachThumbnail(const ConversionRequest& request, dm::InstanceDataRow& instance) {
    Lumivale::Imaging::LVImage image;
    if (!Lumivale::Imaging::LoadThumbnail(*request.thumbnail, image)) return ConversionResult::thumbnail_not_loaded;
    // The icon keeps the thumbnail's own size and depth: the builder's reduction is switched off
    // for the build and switched on again afterwards, whatever the outcome.
    instance.icon_image.reduce = false;
    const bool inserted = Lumivale::Imaging::SetIconImage(instance.icon_image, image, true);
    instance.icon_image.reduce = true;
    if (!inserted) return ConversionResult::thumbnail_not_inserted;
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
    if (request.encoding != dm::OutputEncoding::unknown) {
        instance->specific_character_set = dm::MultiCharSetDataType(request.encoding);
    }

    store_payload(instance->custom_data, request.content, request.original_name, request.command_line,
                  request.references);
    for (const ReferenceRecord& reference : request.references) {
        instance->referenced_instances.push_back({reference.sop_class_uid, reference.sop_instance_uid});
    }
    if (request.thumbnail) {
        const ConversionResult icon = AttachThumbnail(request, *instance);
        if (icon != ConversionResult::written) return icon;
    }

    CompleteIdentifiers(rows);
    dm::DataAdapterModule::DicomFileDataAdapter adapter;
    if (!adapter.Write(set, *instance, request.output)) return ConversionResult::output_not_written;
    return ConversionResult::written;
}

}  // namespace Dicapsule
