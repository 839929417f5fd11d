#pragma once
// The test mode's changes to the rows of a pack run, so that two runs on the same input write
// byte-identical files.
//
// With CONVERTIX_TESTMODE in the environment the process-wide identity source already gives a
// fixed time, process id and machine number (IdentitySource.h), so every generated UID and every
// stamp is the same from run to run. On top of that, the rows are changed as follows:
// - the patient row's creation stamp and the study row's Study Date/Time, when set and equal to the
//   run's stamp, become the zero date_time;
// - the instance row, when it is an Encapsulated PDF, image or Raw Data row (tested in that order),
//   has its Instance Creation Date/Time treated the same way; a Raw Data row also gets the fixed
//   SOP Instance UID (TestModeInstanceUid), even when the user or the metadata gave one.
// The zero date_time is written as an empty value (DateTime.h). Only attributes of type 2 or 3 are
// zeroed, so the output stays valid DICOM.

#include "Foundations/DataModule/Rows/InstanceDataRow.h"
#include "Foundations/DataModule/Rows/PatientDataRow.h"
#include "Foundations/DataModule/Rows/StudyDataRow.h"
#include "Foundations/DataModule/Values/DateTime.h"

namespace Lumivale::DataModule {

// Apply the test mode's row changes (any row may be nullptr). Does not look at the environment.
void ApplyTestModeToRows(PatientDataRow* patient, StudyDataRow* study, InstanceDataRow* instance,
                         const date_time& run_stamp);

// When the test mode is on, apply the row changes with the run's stamp (RunTimeStamp) and return true.
bool ApplyTestModeIfOn(PatientDataRow* patient, StudyDataRow* study, InstanceDataRow* instance);

}  // namespace Lumivale::DataModule
