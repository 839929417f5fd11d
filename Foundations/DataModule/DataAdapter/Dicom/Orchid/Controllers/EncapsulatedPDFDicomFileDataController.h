#pragma once
// The controller of the Encapsulated Document classes: PDF, and CDA, STL, OBJ and MTL alike.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomFileDataController.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Gives the document its class's MIME type, an Instance Number (1 when none), Burned In
// Annotation and a content date; PDF and CDA the SC Equipment's Conversion Type, a 3D model a frame
// of reference; then does the base preparation.
class EncapsulatedPDFDicomFileDataController : public DicomFileDataController {
public:
    EncapsulatedPDFDicomFileDataController() noexcept : DicomFileDataController(SOPClass::EncapsulatedPDF) {}
    // The controller of another Encapsulated Document class.
    explicit EncapsulatedPDFDicomFileDataController(SOPClass::Enum sopClass) noexcept : DicomFileDataController(sopClass) {}

    bool PrepareForWriting(InstanceDataRow& instance) override;
    bool CheckForWriting(const InstanceDataRow& instance, DicomDataControllerErrors& errors) const override;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
