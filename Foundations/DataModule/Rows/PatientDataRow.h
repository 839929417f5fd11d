#pragma once
// The patient row: the Patient module and the patient facts of the study.

#include "Foundations/DataModule/Enumerations/Sex.h"
#include "Foundations/DataModule/Rows/DataRow.h"
#include "Foundations/DataModule/Values/PersonNameDataType.h"

namespace Lumivale::DataModule {

// One patient.
class PatientDataRow : public DataRow {
public:
    PersonNameDataType patient_name;        // (0010,0010) Patient's Name, type 2
    WStringDataType patient_id;             // (0010,0020) Patient ID, type 2
    WStringDataType issuer_of_patient_id;   // (0010,0021) Issuer of Patient ID, type 3
    DateTimeDataType patient_birth_date;    // (0010,0030) Patient's Birth Date, type 2 (date fields)
    SexDataType patient_sex;                // (0010,0040) Patient's Sex, type 2
    MultiCodedWStringDataType<unsigned int> other_patient_ids;  // (0010,1000) Other Patient IDs, type 3
    WStringDataType patient_comments;       // (0010,4000) Patient Comments, type 3
};

}  // namespace Lumivale::DataModule
