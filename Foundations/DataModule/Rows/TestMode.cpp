#include "Foundations/DataModule/Rows/TestMode.h"

#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/ImageInstanceDataRow.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/Uid/IdentitySource.h"
#include "Foundations/DataModule/Uid/UIDGenerator.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule {

namespace {

// A stamp put there by this run carries the clock; the zero date_time does not.
void ZeroIfRunStamp(DateTimeDataType& value, const date_time& run_stamp) {
    if (value.IsSet() && value.Value() == run_stamp) value.Set(ZeroDateTime());
}

}  // namespace

void ApplyTestModeToRows(PatientDataRow* patient, StudyDataRow* study, InstanceDataRow* instance,
                         const date_time& run_stamp) {
    if (patient != nullptr) ZeroIfRunStamp(patient->creation_date_time, run_stamp);
    if (study != nullptr) ZeroIfRunStamp(study->study_date_time, run_stamp);
    if (instance == nullptr) return;
    if (dynamic_cast<EncapsulatedDocumentDataRow*>(instance) != nullptr ||
        dynamic_cast<ImageInstanceDataRow*>(instance) != nullptr) {
        ZeroIfRunStamp(instance->instance_creation_date_time, run_stamp);
    } else if (auto* raw_data = dynamic_cast<RawDataDataRow*>(instance)) {
        ZeroIfRunStamp(raw_data->instance_creation_date_time, run_stamp);
        raw_data->sop_instance_uid.Set(TestModeInstanceUid());
    }
}

bool ApplyTestModeIfOn(PatientDataRow* patient, StudyDataRow* study, InstanceDataRow* instance) {
    if (!IsTestModeOn()) return false;
    LV_TRACE("UIDGenerator", "%s", "Test mode: fixed identifiers and time stamps");
    ApplyTestModeToRows(patient, study, instance, RunTimeStamp());
    return true;
}

}  // namespace Lumivale::DataModule
