#pragma once
// The study row: the General Study and Patient Study modules.

#include "Foundations/DataModule/Rows/DataRow.h"
#include "Foundations/DataModule/Values/NumberDataType.h"
#include "Foundations/DataModule/Values/PersonNameDataType.h"
#include "Foundations/DataModule/Values/UIDDataType.h"

namespace Lumivale::DataModule {

// One study.
class StudyDataRow : public DataRow {
public:
    UIDDataType study_instance_uid;            // (0020,000D) Study Instance UID, type 1
    DateTimeDataType study_date_time;          // (0008,0020) Study Date + (0008,0030) Study Time, type 2
    PersonNameDataType referring_physician_name;  // (0008,0090) Referring Physician's Name, type 2
    WStringDataType study_id;                  // (0020,0010) Study ID, type 2
    WStringDataType accession_number;          // (0008,0050) Accession Number, type 2
    WStringDataType study_description;         // (0008,1030) Study Description, type 3
    WStringDataType patient_age;               // (0010,1010) Patient's Age, type 3
    DecimalDataType patient_size;              // (0010,1020) Patient's Size in metres, type 3
    DecimalDataType patient_weight;            // (0010,1030) Patient's Weight in kilograms, type 3
};

}  // namespace Lumivale::DataModule
