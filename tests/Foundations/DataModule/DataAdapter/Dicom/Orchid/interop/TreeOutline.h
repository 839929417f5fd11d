#pragma once
// A small text form for building data sets in tests of the writer.
//
//   (0010,0010) PN Doe^John         text VRs: the rest of the line, written unpadded
//   (0028,0010) US 512\256          US SS UL SL FL FD: numbers separated by "\"
//   (0020,5000) AT 00100010         AT: gggg eeee as 8 hex digits, separated by "\"
//   (0029,1012) OB hex:0102ab       any VR: raw little-endian bytes (the only form for OB OW UN ...)
//   (0008,1115) SQ                  a sequence; its items follow two spaces deeper:
//     item                          one item, its elements two more spaces deeper
//       (0020,000E) UI 1.2.3
//
// Blank lines and lines starting with "#" are ignored.

#include <string>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"

namespace DicomInterop {

// Parse outline text into dataSet; false with a message naming the line when the text is malformed.
bool ParseTreeOutline(const std::string& text,
                   Lumivale::DataModule::DataAdapterModule::DicomCodecModule::DicomDataSet& dataSet,
                   std::string& error);

}  // namespace DicomInterop
