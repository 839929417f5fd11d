#pragma once
// The data dictionary: every attribute the codec knows, by its tag enumeration value (the row's
// index), with its tag, display name, keyword, VR and VM. The rows are constant data generated from the
// DICOM standard's dictionary plus the private group 0009 (creator "IvraDentalPrivate").

#include <cstdint>
#include <string_view>

#include "Foundations/DataModule/DataAdapter/Dicom/Core/Tag.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Core/ValueRepresentation.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueMultiplicity.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// The tags of the dictionary's rows, named by keyword (GroupLength_gggg for group lengths, Orchid_*
// for the private attributes), e.g. Tags::PatientName.
namespace Tags {
#define DICAPSULE_DICTIONARY_TAGS
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionaryTable.inc"
#undef DICAPSULE_DICTIONARY_TAGS
}  // namespace Tags

// One dictionary row.
struct DictionaryEntry {
    std::uint32_t value;       // tag enumeration value, the row's index
    Tag tag;                   // the attribute's tag
    std::string_view keyword;  // e.g. "PatientName"; empty for the two unnamed private rows
    std::string_view name;     // display name, e.g. "Patient's Name"
    ValueRepresentation vr;    // dictionary VR (XS, OX, SW for the ambiguous ones)
    ValueMultiplicity vm;      // dictionary VM
    bool standard;             // defined by the DICOM standard (false for private rows)
};

// The private creator written at (0009,0011) for the private attributes of group 0009.
inline constexpr std::string_view kPrivateCreator = "IvraDentalPrivate";

// Number of dictionary rows (enumeration values 0 .. count-1).
std::uint32_t DictionaryEntryCount() noexcept;
// The row of an enumeration value; values past the table yield the Unknown row.
const DictionaryEntry& EntryByValue(std::uint32_t value) noexcept;
// The row of a tag; unknown tags yield the Unknown row. Overlay groups 60xx fold onto 6000.
const DictionaryEntry& EntryByTag(Tag tag) noexcept;
// The row with this keyword; an unknown keyword yields the Unknown row.
const DictionaryEntry& EntryByKeyword(std::string_view keyword) noexcept;
// The dictionary VR of a tag (Unknown for a tag the dictionary does not hold).
ValueRepresentation TagVR(Tag tag) noexcept;

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
