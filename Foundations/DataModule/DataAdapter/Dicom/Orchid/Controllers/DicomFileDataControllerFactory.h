#pragma once
// Makes the file data controller of a SOP class.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomFileDataController.h"

#include <memory>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Maps a SOP class to the function that creates its controller.
class DicomFileDataControllerFactory {
public:
    // Creates a controller for instances of a class.
    using Creator = std::unique_ptr<DicomFileDataController> (*)(SOPClass::Enum sopClass);

    // The creator registered for a class, or nullptr when none is.
    static Creator CreatorOf(SOPClass::Enum sopClass) noexcept;
    // A new controller for the class (the caller owns it), or nullptr when no creator is registered.
    static std::unique_ptr<DicomFileDataController> Create(SOPClass::Enum sopClass);
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
