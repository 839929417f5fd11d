#pragma once
// The members that only some instance kinds have: the image attributes of image instance rows and
// the document attributes of Encapsulated PDF rows, as elements and back.

#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/Rows/InstanceDataRow.h"

namespace Lumivale::DataModule::DataAdapterModule {

// Insert the set class members of the instance (nothing for other kinds); false when a value
// cannot be written.
bool InsertInstanceClassElements(DicomCodecModule::DicomDataSet& dataSet, const InstanceDataRow& instance,
                                 const MultiCharSetDataType& charset);
// Set the class members of the instance from the data set.
void ReadInstanceClassElements(const DicomCodecModule::DicomDataSet& dataSet, InstanceDataRow& instance,
                               const MultiCharSetDataType& charset);

}  // namespace Lumivale::DataModule::DataAdapterModule
