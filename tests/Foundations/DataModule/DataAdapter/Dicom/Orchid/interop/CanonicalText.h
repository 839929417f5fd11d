#pragma once
// The canonical text of a data set tree: the same text for the same content whatever encoding,
// sequence lengths or item lengths the file was written with, so that dumps compare with diff.

#include <string>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"

namespace DicomInterop {

// One line per node, "<depth> (gggg,eeee) <VR> <length> <value>"; sequences are written
// "SQ items=<n>" followed by "<depth+1> item" lines (or "empty-slot"); values are lowercase hex
// of the little-endian bytes, or "fnv1a64=<digest>" beyond 64 bytes.
std::string CanonicalText(const Lumivale::DataModule::DataAdapterModule::DicomCodecModule::DicomDataSet& dataSet,
                          int depth = 0);

}  // namespace DicomInterop
