#pragma once
// A text form of a data set tree for comparisons: one line per element, items indented.

#include <string>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"

namespace DicomTestTree {

// "(gggg,eeee) VR value" lines; text values as text (trailing pad dropped), numbers as numbers,
// other values as hex; meta group elements left out when withMeta is false.
std::string TreeText(const Lumivale::DataModule::DataAdapterModule::DicomCodecModule::DicomDataSet& dataSet,
                     bool withMeta = true, int depth = 0);

}  // namespace DicomTestTree
