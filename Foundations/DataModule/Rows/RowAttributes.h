#pragma once
// Which DICOM tag is which named member of a row: one constant table per row kind, each entry
// giving the tag, its VR and accessors that move the member's value as UTF-8 DICOM text.
//
// Text forms: strings as they are; person names "Family^Given^Middle^Prefix^Suffix=ideographic=phonetic";
// DA "YYYYMMDD", TM "HHMMSS[.FFFFFF]", DT "YYYYMMDDHHMMSS[.FFFFFF]"; IS and DS decimal text; coded
// strings their defined term; UIDs dotted digits; multi-valued attributes joined with "\".
// A date/time member held as one date_time (Study Date + Study Time...) has two entries, the date
// tag reading and writing the date fields and the time tag the time fields of the same member.
//
// Not in the tables: SOP Class UID and the file meta attributes (the controllers set them), the
// Acquisition Context Sequence, the icon image, the custom data and Specific Character Set.

#include "Foundations/DataModule/Rows/DataRow.h"
#include "Foundations/DataModule/Rows/ExtraElements.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// The five row kinds of a patient data set.
enum class RowKind { Patient, Study, Series, Equipment, Instance };

// The row kinds in hierarchy order, for loops over all of them.
inline constexpr RowKind kAllRowKinds[] = {RowKind::Patient, RowKind::Study, RowKind::Series, RowKind::Equipment,
                                           RowKind::Instance};

// "Patient", "Study", "Series", "Equipment" or "Instance".
std::string_view RowKindName(RowKind kind) noexcept;

// One named attribute of a row kind.
struct RowAttribute {
    // True when the row (of this entry's row class) holds a value for the tag.
    using IsSetFunction = bool (*)(const DataRow& row);
    // The value as UTF-8 DICOM text; nullopt when not set or the row is not of the entry's class.
    using GetFunction = std::optional<std::string> (*)(const DataRow& row);
    // Store the value from UTF-8 DICOM text; "" empties it. False (row unchanged) when the text is
    // not valid for the attribute or the row is not of the entry's class.
    using SetFunction = bool (*)(DataRow& row, std::string_view text);

    Tag tag;            // the attribute's tag
    ValueRepresentation vr;    // its VR
    std::string_view keyword;  // its DICOM keyword, e.g. "PatientName"
    IsSetFunction is_set;      // set test
    GetFunction get;           // reader
    SetFunction set;           // writer with validation
};

// The entries of a row kind in ascending tag order.
std::span<const RowAttribute> RowAttributesOf(RowKind kind) noexcept;

// The entry of a tag in a row kind, or nullptr when the row kind has no member for it.
const RowAttribute* FindRowAttribute(RowKind kind, Tag tag) noexcept;

// The row kind whose table holds the tag, or nullopt when no table does.
std::optional<RowKind> RowKindOfTag(Tag tag) noexcept;

}  // namespace Lumivale::DataModule
