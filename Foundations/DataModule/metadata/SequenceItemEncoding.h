#pragma once
// The stored form of a sequence that no row member holds: its items as explicit VR little endian
// bytes, kept in the row's extra elements with the VR "SQ".
//
// Layout: for each item, the item tag (FFFE,E000) and its defined length, then its elements in
// ascending tag order, each with its explicit VR header and defined length (nested sequences the
// same way). Text values are UTF-8 (the writer re-encodes them in the output character set),
// padded to even length with a space (UI: with a NUL). US, SS, UL, SL, FL, FD, SV and UV values
// are binary little endian.

#include "Foundations/DataModule/metadata/DicomXmlDataSet.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Lumivale::DataModule::DataConverterModule {

// Encode the items of a top-level sequence; false (reason in error) when a value is not valid for
// its VR, an element does not fit its length field, or sequences nest deeper than the file reader
// accepts (kMaxSequenceDepth levels, this one included).
bool EncodeSequenceItems(const std::vector<DicomXmlItem>& items, std::vector<std::uint8_t>& out, std::string& error);

}  // namespace Lumivale::DataModule::DataConverterModule
