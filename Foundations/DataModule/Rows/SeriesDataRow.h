#pragma once
// The series row: the General Series module.

#include "Foundations/DataModule/Enumerations/BodyPart.h"
#include "Foundations/DataModule/Enumerations/Laterality.h"
#include "Foundations/DataModule/Enumerations/Modality.h"
#include "Foundations/DataModule/Rows/DataRow.h"
#include "Foundations/DataModule/Values/NumberDataType.h"
#include "Foundations/DataModule/Values/PersonNameDataType.h"
#include "Foundations/DataModule/Values/UIDDataType.h"

namespace Lumivale::DataModule {

// One series. A new series holds the modality "OT" until told otherwise.
class SeriesDataRow : public DataRow {
public:
    ModalityDataType modality{Modality::OT};   // (0008,0060) Modality, type 1
    UIDDataType series_instance_uid;           // (0020,000E) Series Instance UID, type 1
    IntegerDataType series_number;             // (0020,0011) Series Number, type 2
    LateralityDataType laterality;             // (0020,0060) Laterality, type 2C
    DateTimeDataType series_date_time;         // (0008,0021) Series Date + (0008,0031) Series Time, type 3
    WStringDataType series_description;        // (0008,103E) Series Description, type 3
    WStringDataType protocol_name;             // (0018,1030) Protocol Name, type 3
    BodyPartDataType body_part_examined;       // (0018,0015) Body Part Examined, type 3
    PersonNameDataType performing_physician_name;  // (0008,1050) Performing Physician's Name, type 3
    PersonNameDataType operators_name;         // (0008,1070) Operators' Name, type 3
};

}  // namespace Lumivale::DataModule
