#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/EncapsulatedPDFDicomFileDataController.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/Rows/EncapsulatedPdfDataRow.h"

#include <string_view>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

// Burned In Annotation terms; a generated document carries no burned-in patient data.
constexpr std::string_view kBurnedInAnnotationTerms[] = {"NO", "YES"};
constexpr std::string_view kPdfMimeType = "application/pdf";

}  // namespace

bool EncapsulatedPDFDicomFileDataController::PrepareForWriting(InstanceDataRow& instance) {
    auto* pdf = dynamic_cast<EncapsulatedPdfDataRow*>(&instance);
    if (!AcceptsInstance(instance) || pdf == nullptr) return true;
    if (pdf->mime_type.IsEmpty()) pdf->mime_type.Set(std::string(kPdfMimeType));
    if (pdf->instance_number.IsEmpty()) pdf->instance_number.Set(1);
    if (pdf->burned_in_annotation.IsEmpty()) pdf->burned_in_annotation.Set(std::string(kBurnedInAnnotationTerms[0]));
    return DicomFileDataController::PrepareForWriting(instance);
}

bool EncapsulatedPDFDicomFileDataController::CheckForWriting(const InstanceDataRow& instance,
                                                             DicomDataControllerErrors& errors) const {
    bool complete = DicomFileDataController::CheckForWriting(instance, errors);
    const auto* pdf = dynamic_cast<const EncapsulatedPdfDataRow*>(&instance);
    if (!AcceptsInstance(instance) || pdf == nullptr) return complete;
    if (!pdf->encapsulated_document.HasBuffer()) {
        errors.push_back({TagNumber(Tag::EncapsulatedDocument), DicomDataControllerErrorCode::MissingAttribute, {}});
        complete = false;
    }
    return complete;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
