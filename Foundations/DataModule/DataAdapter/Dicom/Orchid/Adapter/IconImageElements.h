#pragma once
// The icon image record in a file: the Icon Image Sequence (0088,0200) with one item of image
// pixel attributes and Pixel Data, and optionally the same attributes at the top level of the
// data set. Planes kept apart in the record are interleaved pixel by pixel (planar configuration 0).

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/Rows/IconImageRecord.h"

namespace Lumivale::DataModule::DataAdapterModule {

// Put the icon into dataSet as the Icon Image Sequence and, with alsoAsImage, as top-level image
// pixel attributes. Nothing happens for a record that is not set. False when the record lacks an
// attribute or its pixel buffers are shorter than its description says.
bool InsertIconImage(DicomCodecModule::DicomDataSet& dataSet, const IconImageRecord& icon, bool alsoAsImage);

// Fill icon from the first item of the Icon Image Sequence (pixel data as one interleaved buffer,
// key 0); false when the data set has none or its attributes are incomplete.
bool ReadIconImage(const DicomCodecModule::DicomDataSet& dataSet, IconImageRecord& icon);

}  // namespace Lumivale::DataModule::DataAdapterModule
