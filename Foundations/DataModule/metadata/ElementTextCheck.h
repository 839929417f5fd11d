#pragma once
// Checks the DICOM text of an element that no row member holds, before it is stored by tag.

#include <string_view>

#include "Foundations/DataModule/DataAdapter/Dicom/Core/ValueRepresentation.h"

namespace Lumivale::DataModule::DataConverterModule {

// True when text (UTF-8, values separated by "\") is a valid value of the VR: each value within the VR's length and character rules, dates, times and
// numbers well-formed, UIDs dotted digits. The binary numeric VRs (US, SS, UL, SL, FL, FD, SV,
// UV) take decimal numbers in their range. VRs that text cannot carry (OB, OW, SQ, UN, AT...) are refused.
// The VR table says how each VR's text is checked (VRTakesText, VRIsBinaryNumber).
bool IsValidElementText(DataAdapterModule::DicomCodecModule::ValueRepresentation vr, std::string_view text);

}  // namespace Lumivale::DataModule::DataConverterModule
