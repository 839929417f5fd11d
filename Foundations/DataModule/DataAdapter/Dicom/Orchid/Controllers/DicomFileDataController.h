#pragma once
// A file data controller completes the attributes of one instance row for its SOP class before
// the instance is written, and after it is read. This base does what every class needs: the SOP
// Class and Instance UIDs, their media storage copies, and the transfer syntax.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomDataControllerError.h"
#include "Foundations/DataModule/Enumerations/SOPClass.h"
#include "Foundations/DataModule/Rows/InstanceDataRow.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Base controller; works on instances of the SOP class it was made for and leaves others alone.
class DicomFileDataController {
public:
    // A controller for instances of sopClass.
    explicit DicomFileDataController(SOPClass::Enum sopClass) noexcept : sopClass_(sopClass) {}
    virtual ~DicomFileDataController() = default;
    DicomFileDataController(const DicomFileDataController&) = delete;
    DicomFileDataController& operator=(const DicomFileDataController&) = delete;

    // Complete the instance for writing; true and no change when its class is not accepted.
    virtual bool PrepareForWriting(InstanceDataRow& instance);
    // Add an error per type 1 attribute still missing; false when any was added.
    virtual bool CheckForWriting(const InstanceDataRow& instance, DicomDataControllerErrors& errors) const;
    // Complete an instance just read from a file (media storage UID from the SOP Instance UID when missing).
    virtual bool PrepareAfterReading(InstanceDataRow& instance);
    // Second read hook, after the custom data and icon are read; nothing in the base.
    virtual bool FinishReading(InstanceDataRow& instance);
    // Validation of a read instance: the same checks as for writing.
    virtual bool Validate(const InstanceDataRow& instance, DicomDataControllerErrors& errors) const;
    // Last hook; nothing in the base.
    virtual bool Release(InstanceDataRow& instance);

    // The SOP class this controller was made for.
    SOPClass::Enum SopClass() const noexcept { return sopClass_; }
    // True when the controller works on instances of this class.
    virtual bool Accepts(SOPClass::Enum sopClass) const noexcept { return sopClass == sopClass_; }

protected:
    // True when the instance's class is accepted.
    bool AcceptsInstance(const InstanceDataRow& instance) const noexcept;

private:
    SOPClass::Enum sopClass_;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
