#pragma once
// Checks the DICOM text of an element that no row member holds, before it is stored by tag.

#include <string_view>

namespace Lumivale::DataModule::DataConverterModule {

// True when text (UTF-8, values separated by "\") is a valid value of the VR given by its
// two-letter code: each value within the VR's length and character rules, dates, times and
// numbers well-formed, UIDs dotted digits. The binary numeric VRs (US, SS, UL, SL, FL, FD, SV,
// UV) take decimal numbers in their range. VRs that text cannot carry (OB, OW, SQ, UN, AT...) are refused.
bool IsValidElementText(std::string_view vr, std::string_view text);

// True for the VRs IsValidElementText accepts.
bool IsTextualVr(std::string_view vr) noexcept;

// True for the binary numeric VRs, whose text is written as binary numbers.
bool IsBinaryNumberVr(std::string_view vr) noexcept;

}  // namespace Lumivale::DataModule::DataConverterModule
