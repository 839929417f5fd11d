#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomFileDataController.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/Uid/UIDGenerator.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

bool DicomFileDataController::AcceptsInstance(const InstanceDataRow& instance) const noexcept {
    return instance.sop_class.IsSet() && Accepts(instance.sop_class.Value());
}

bool DicomFileDataController::PrepareForWriting(InstanceDataRow& instance) {
    if (!AcceptsInstance(instance)) return true;
    if (instance.sop_instance_uid.IsEmpty() && !instance.sop_instance_uid.Set(GenerateUid(UidKind::Instance))) {
        return false;
    }
    // The meta group's Media Storage SOP Instance UID always repeats the SOP Instance UID.
    instance.media_storage_sop_instance_uid = instance.sop_instance_uid;
    instance.transfer_syntax.Set(TransferSyntax::ExplicitVRLittleEndian);
    return true;
}

bool DicomFileDataController::CheckForWriting(const InstanceDataRow& instance, DicomDataControllerErrors& errors) const {
    const std::size_t before = errors.size();
    const auto missing = [&errors](Tag tag) {
        errors.push_back({tag, DicomDataControllerErrorCode::MissingAttribute, {}});
    };
    if (instance.sop_class.IsEmpty() || instance.sop_class.Value() == SOPClass::unknown) missing(Tags::SOPClassUID);
    if (instance.sop_instance_uid.IsEmpty()) missing(Tags::SOPInstanceUID);
    if (instance.transfer_syntax.IsEmpty()) missing(Tags::TransferSyntaxUID);
    return errors.size() == before;
}

bool DicomFileDataController::PrepareAfterReading(InstanceDataRow& instance) {
    if (instance.media_storage_sop_instance_uid.IsEmpty()) {
        instance.media_storage_sop_instance_uid = instance.sop_instance_uid;
    }
    return true;
}

bool DicomFileDataController::FinishReading(InstanceDataRow&) { return true; }

bool DicomFileDataController::Validate(const InstanceDataRow& instance, DicomDataControllerErrors& errors) const {
    return CheckForWriting(instance, errors);
}

bool DicomFileDataController::Release(InstanceDataRow&) { return true; }

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
