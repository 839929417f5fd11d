#pragma once
// The Acquisition Context Sequence (0040,0555) of an instance: type 2, so written empty when the
// instance has no item.

#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/Rows/AcquisitionContext.h"

#include <vector>

namespace Lumivale::DataModule::DataAdapterModule {

// Insert the sequence with one item per entry; false when a text cannot be encoded in charset.
bool InsertAcquisitionContext(DicomCodecModule::DicomDataSet& dataSet, const std::vector<AcquisitionContextItem>& items,
                              const MultiCharSetDataType& charset);

}  // namespace Lumivale::DataModule::DataAdapterModule
