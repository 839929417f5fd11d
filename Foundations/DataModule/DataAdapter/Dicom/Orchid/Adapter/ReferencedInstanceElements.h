#pragma once
// The Referenced Instance Sequence (0008,114A): the instances a packed file refers to, so that a
// PACS can follow the references without reading the payload.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/Rows/ReferencedInstance.h"

#include <vector>

namespace Lumivale::DataModule::DataAdapterModule {

// Insert one item per reference whose SOP class is known; nothing when there is none. False when a
// UID cannot be stored.
bool InsertReferencedInstances(DicomCodecModule::DicomDataSet& dataSet, const std::vector<ReferencedInstance>& references);

}  // namespace Lumivale::DataModule::DataAdapterModule
