#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/RawDataDicomFileDataController.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/Uid/IdentitySource.h"
#include "Foundations/DataModule/Uid/UIDGenerator.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

bool RawDataDicomFileDataController::PrepareForWriting(InstanceDataRow& instance) {
    auto* raw = dynamic_cast<RawDataDataRow*>(&instance);
    if (!AcceptsInstance(instance) || raw == nullptr) return true;
    // The run's stamp rather than the clock: in test mode it is fixed, so the output is reproducible.
    raw->content_date_time.Set(RunTimeStamp());
    if (!raw->creator_version_uid.Set(GenerateUid(UidKind::Version))) return false;
    if (raw->instance_number.IsSet() && !raw->instance_number_fixed) raw->instance_number.Clear();
    return DicomFileDataController::PrepareForWriting(instance);
}

bool RawDataDicomFileDataController::CheckForWriting(const InstanceDataRow& instance,
                                                     DicomDataControllerErrors& errors) const {
    bool complete = DicomFileDataController::CheckForWriting(instance, errors);
    const auto* raw = dynamic_cast<const RawDataDataRow*>(&instance);
    if (!AcceptsInstance(instance) || raw == nullptr) return complete;
    if (raw->creator_version_uid.IsEmpty()) {
        errors.push_back({Tags::CreatorVersionUID, DicomDataControllerErrorCode::MissingAttribute, {}});
        complete = false;
    }
    if (raw->content_date_time.IsEmpty()) {
        errors.push_back({Tags::ContentDate, DicomDataControllerErrorCode::MissingAttribute, {}});
        complete = false;
    }
    return complete;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
