#pragma once
// The data dictionary: every attribute the codec knows, named by its tag enumeration value,
// with its tag, display name, keyword, VR and VM. The rows are constant data generated from the
// DICOM standard's dictionary plus the private group 0009 (creator "IvraDentalPrivate").

#include <cstdint>
#include <string_view>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueMultiplicity.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueRepresentation.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Tag enumeration values: Unknown = 0, standard keywords, GroupLength_gggg, Orchid_* privates.
enum class Tag : std::uint32_t {
#define DICAPSULE_DICTIONARY_ENUMERATORS
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionaryTable.inc"
#undef DICAPSULE_DICTIONARY_ENUMERATORS
};

// One dictionary row.
struct DictionaryEntry {
    std::uint32_t value;       // tag enumeration value, the row's index
    std::uint32_t tag;         // group in the high half, element in the low half
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
const DictionaryEntry& EntryByValue(Tag value) noexcept;
// The row of a tag number; unknown tags yield the Unknown row. Overlay groups 60xx fold onto 6000.
const DictionaryEntry& EntryByTag(std::uint32_t tag) noexcept;
// The row with this keyword; an unknown keyword yields the Unknown row.
const DictionaryEntry& EntryByKeyword(std::string_view keyword) noexcept;

// The tag number (gggg,eeee) of an enumeration value.
std::uint32_t TagNumber(Tag value) noexcept;
// The dictionary VR of an enumeration value.
ValueRepresentation TagVR(Tag value) noexcept;

// The tag number made of a group and an element number.
constexpr std::uint32_t MakeTagNumber(std::uint16_t group, std::uint16_t element) noexcept {
    return (std::uint32_t{group} << 16) | element;
}
// The group of a tag number.
constexpr std::uint16_t TagGroup(std::uint32_t tag) noexcept { return static_cast<std::uint16_t>(tag >> 16); }
// The element number of a tag number.
constexpr std::uint16_t TagElement(std::uint32_t tag) noexcept { return static_cast<std::uint16_t>(tag & 0xFFFF); }

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
