#pragma once
// The file meta information group (0002) of the files this program writes.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/Rows/InstanceDataRow.h"

#include <string>
#include <string_view>

namespace Lumivale::DataModule::DataAdapterModule {

// Our Implementation Version Name (0002,0013).
inline constexpr std::string_view kImplementationVersionName = "DCAPS";
// The version text that ends our Implementation Class UID.
inline constexpr std::string_view kImplementationVersion = "7.0.0.0";

// The Implementation Class UID (0002,0012): organisation root, kind 50, then the version text.
std::string ImplementationClassUid();

// Put the meta group into dataSet: group length (its value is the byte count of the other meta
// elements), version 00 01, Media Storage SOP Class UID = the instance's SOP Class UID, Media
// Storage SOP Instance UID, Transfer Syntax UID and our implementation identification. False when
// the instance lacks its class, instance UID or transfer syntax.
bool InsertFileMetaInformation(DicomCodecModule::DicomDataSet& dataSet, const InstanceDataRow& instance);

}  // namespace Lumivale::DataModule::DataAdapterModule
