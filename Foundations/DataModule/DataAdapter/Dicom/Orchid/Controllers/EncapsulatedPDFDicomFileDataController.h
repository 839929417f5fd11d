#pragma once
// The controller of Encapsulated PDF Storage instances.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomFileDataController.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Gives the document its MIME type, an Instance Number (1 when none) and Burned In Annotation,
// then does the base preparation.
class EncapsulatedPDFDicomFileDataController : public DicomFileDataController {
public:
    EncapsulatedPDFDicomFileDataController() noexcept : DicomFileDataController(SOPClass::EncapsulatedPDF) {}

    bool PrepareForWriting(InstanceDataRow& instance) override;
    bool CheckForWriting(const InstanceDataRow& instance, DicomDataControllerErrors& errors) const override;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
