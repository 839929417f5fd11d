#pragma once
// The equipment row: the General Equipment module.

#include "Foundations/DataModule/Rows/DataRow.h"
#include "Foundations/DataModule/Values/WStringDataType.h"

namespace Lumivale::DataModule {

// The equipment that made a series.
class EquipmentDataRow : public DataRow {
public:
    WStringDataType manufacturer;                   // (0008,0070) Manufacturer, type 2
    WStringDataType institution_name;               // (0008,0080) Institution Name, type 3
    WStringDataType institution_address;            // (0008,0081) Institution Address, type 3
    WStringDataType station_name;                   // (0008,1010) Station Name, type 3
    WStringDataType institutional_department_name;  // (0008,1040) Institutional Department Name, type 3
    WStringDataType manufacturer_model_name;        // (0008,1090) Manufacturer's Model Name, type 3
    WStringDataType device_serial_number;           // (0018,1000) Device Serial Number, type 3
    MultiCodedWStringDataType<unsigned int> software_versions;  // (0018,1020) Software Versions, type 3
};

}  // namespace Lumivale::DataModule
