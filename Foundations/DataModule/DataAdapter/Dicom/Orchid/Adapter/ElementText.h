#pragma once
// Moving UTF-8 DICOM text (values separated by "\") into and out of data set elements: through
// the Specific Character Set for the VRs it applies to, as binary numbers for US, SS, UL, SL, FL,
// FD, SV and UV, as ASCII for the rest.

#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Lumivale::DataModule::DataAdapterModule {

namespace dcm = DicomCodecModule;

// A new element holding text; nullptr when the text cannot be written in the character set or
// is not a number list for a binary numeric VR. Empty text gives an element with an empty value.
std::unique_ptr<dcm::DicomDataSetElement> MakeTextElement(dcm::Tag tag, dcm::ValueRepresentation vr,
                                                          std::string_view utf8, const MultiCharSetDataType& charset);
// Insert into target a sequence of one coded entry (Code Value, Coding Scheme Designator, Code
// Meaning, all ASCII) under sequenceTag; false when an element cannot be made or inserted.
bool InsertCodeSequence(dcm::DicomDataSet& target, dcm::Tag sequenceTag, std::string_view value,
                        std::string_view scheme, std::string_view meaning);
// A new element of a 16-bit unsigned value (VR US).
std::unique_ptr<dcm::DicomDataSetElement> MakeUnsignedShortElement(dcm::Tag tag, std::uint16_t value);
// A new element of a 32-bit unsigned value (VR UL).
std::unique_ptr<dcm::DicomDataSetElement> MakeUnsignedLongElement(dcm::Tag tag, std::uint32_t value);

// The element's value as UTF-8 text (decoded through charset where it applies, numbers of binary
// VRs as decimal text); false when the value cannot be loaded or decoded.
bool FetchElementText(const dcm::DicomDataSetElement& element, const MultiCharSetDataType& charset, std::string& utf8);
// The first 16-bit unsigned value of an element (US, or the first unit of any value); false when shorter.
bool FetchUnsignedShort(const dcm::DicomDataSetElement& element, std::uint16_t& value);
// The first 32-bit unsigned value of a UL element; false when shorter.
bool FetchUnsignedLong(const dcm::DicomDataSetElement& element, std::uint32_t& value);

}  // namespace Lumivale::DataModule::DataAdapterModule
