#pragma once
// The controller of Raw Data Storage instances (the packed files).

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomFileDataController.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Stamps Content Date/Time with the run's stamp, makes the Creator-Version UID and drops an
// Instance Number the user did not fix, then does the base preparation.
class RawDataDicomFileDataController : public DicomFileDataController {
public:
    RawDataDicomFileDataController() noexcept : DicomFileDataController(SOPClass::RawData) {}

    bool PrepareForWriting(InstanceDataRow& instance) override;
    bool CheckForWriting(const InstanceDataRow& instance, DicomDataControllerErrors& errors) const override;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
