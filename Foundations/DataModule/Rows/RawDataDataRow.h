#pragma once
// The instance row of a Raw Data Storage instance: the Raw Data module and the custom data store.

#include "Foundations/DataModule/Rows/CustomDataStore.h"
#include "Foundations/DataModule/Rows/InstanceDataRow.h"

namespace Lumivale::DataModule {

// A Raw Data Storage instance; the packed file travels in its custom data.
class RawDataDataRow : public InstanceDataRow {
public:
    RawDataDataRow() : InstanceDataRow(SOPClass::RawData) {}

    UIDDataType creator_version_uid;  // (0008,9123) Creator-Version UID, type 1
    CustomDataStore custom_data;      // written as the private custom data sequence
};

}  // namespace Lumivale::DataModule
