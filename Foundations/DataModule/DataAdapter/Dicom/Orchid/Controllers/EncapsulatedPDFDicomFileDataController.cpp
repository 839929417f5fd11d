#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/EncapsulatedPDFDicomFileDataController.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/Enumerations/DocumentClass.h"
#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Uid/IdentitySource.h"
#include "Foundations/DataModule/Uid/UIDGenerator.h"

#include <string_view>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

// Burned In Annotation terms; a generated document carries no burned-in patient data.
constexpr std::string_view kBurnedInAnnotationTerms[] = {"NO", "YES"};
// SC Equipment's Conversion Type: made on a workstation.
constexpr std::string_view kWorkstationConversion = "WSD";

}  // namespace

bool EncapsulatedPDFDicomFileDataController::PrepareForWriting(InstanceDataRow& instance) {
    auto* document = dynamic_cast<EncapsulatedDocumentDataRow*>(&instance);
    if (!AcceptsInstance(instance) || document == nullptr) return true;
    const EncapsulatedDocumentClass* documentClass = EncapsulatedDocumentClassOf(instance.sop_class.Value());
    if (documentClass == nullptr) return false;
    if (document->mime_type.IsEmpty()) document->mime_type.Set(std::string(documentClass->mime_type));
    if (document->instance_number.IsEmpty()) document->instance_number.Set(1);
    if (document->burned_in_annotation.IsEmpty()) {
        document->burned_in_annotation.Set(std::string(kBurnedInAnnotationTerms[0]));
    }
    // The run's stamp rather than the clock, so that test mode's output is reproducible.
    if (document->content_date_time.IsEmpty()) document->content_date_time.Set(RunTimeStamp());
    // PDF and CDA instances carry SC Equipment; the 3D models carry Enhanced General Equipment instead.
    if (!documentClass->is_model && document->conversion_type.IsEmpty()) {
        document->conversion_type.Set(std::string(kWorkstationConversion));
    }
    if (documentClass->is_model && document->frame_of_reference_uid.IsEmpty() &&
        !document->frame_of_reference_uid.Set(GenerateUid(UidKind::FrameOfReference))) {
        return false;
    }
    return DicomFileDataController::PrepareForWriting(instance);
}

bool EncapsulatedPDFDicomFileDataController::CheckForWriting(const InstanceDataRow& instance,
                                                             DicomDataControllerErrors& errors) const {
    bool complete = DicomFileDataController::CheckForWriting(instance, errors);
    const auto* document = dynamic_cast<const EncapsulatedDocumentDataRow*>(&instance);
    if (!AcceptsInstance(instance) || document == nullptr) return complete;
    const auto missing = [&errors, &complete](Tag tag) {
        errors.push_back({tag, DicomDataControllerErrorCode::MissingAttribute, {}});
        complete = false;
    };
    if (document->encapsulated_document.IsEmpty()) missing(Tags::EncapsulatedDocument);
    if (document->mime_type.IsEmpty()) missing(Tags::MIMETypeOfEncapsulatedDocument);
    const EncapsulatedDocumentClass* documentClass = EncapsulatedDocumentClassOf(instance.sop_class.Value());
    if (documentClass && documentClass->is_model && document->frame_of_reference_uid.IsEmpty()) {
        missing(Tags::FrameOfReferenceUID);
    }
    return complete;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
