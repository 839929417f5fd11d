#pragma once
// Value representations (VRs) of DICOM data elements and the fixed table of their properties.

#include <cstdint>
#include <string_view>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// The VRs known to the codec, by table index. XS, OX and SW are the dictionary's ambiguous VRs;
// the 64-bit VRs OV, SV and UV come last so that the older indices keep their meaning.
enum class ValueRepresentation : std::uint8_t {
    Unknown, AE, AS, AT, CS, DA, DS, DT, FL, FD, IS, LO, LT, OB, OD, OF, OL, OW,
    PN, SH, SL, SQ, SS, ST, TM, UC, UI, UL, UN, UR, US, UT, XS, OX, SW, OV, SV, UV,
};
using VR = ValueRepresentation;

// Maximum length of a VR whose values have no length limit.
inline constexpr std::uint32_t kUnlimitedLength = 0xFFFFFFFFu;

// How an explicit-VR element header carries the value length.
enum class ExplicitLengthForm : std::uint8_t {
    Short,        // a 16-bit length
    Long,         // two reserved bytes, then a 32-bit length
    LongOrShort,  // written Long; read as Long when the 16-bit field is zero and as that field otherwise,
                  // since some writers gave these VRs a 16-bit length
};

// How a value of the VR written as text (in a metadata document) is checked.
enum class TextCheck : std::uint8_t {
    None,        // text cannot carry the VR (OB, OW, SQ, UN, AT...)
    Text,        // length and control characters only
    CodeString,  // upper-case letters, digits, space, underscore
    Age,         // nnnD, nnnW, nnnM or nnnY
    Date,
    Time,
    DateTime,
    Decimal,     // a decimal string
    Integer,     // an integer string, 32-bit
    Uid,         // dotted digits
    PersonName,  // at most three component groups of five components
    Binary,      // a binary number written as a decimal number within [minValue, maxValue]
    Binary64,    // a 64-bit integer, checked exactly (signed when minValue is negative)
};

// One row of the VR table.
struct ValueRepresentationRow {
    std::string_view code;         // two-letter code written in explicit-VR streams; empty for Unknown
    std::string_view displayName;  // name used in messages
    std::uint32_t maxLength;       // maximum value length in bytes, kUnlimitedLength for none
    bool fixedLength;              // values have exactly maxLength bytes
    bool padToEven;                // odd-length values get one pad byte
    std::uint8_t padByte;          // the pad byte
    bool characterData;            // the value is text
    bool characterSetApplies;      // the text is encoded in the Specific Character Set
    bool numeric;                  // the value holds numbers (binary or decimal text)
    std::uint8_t unitSize;         // bytes per unit, for byte swapping and value counting
    ExplicitLengthForm lengthForm; // header form in the explicit-VR encodings
    TextCheck textCheck;           // check of a value given as text
    bool multipleValues;           // "\" separates values (false for LT, ST, UR, UT)
    bool freeText;                 // TAB, CR, LF and FF belong to the value (LT, ST, UT)
    double minValue;               // range of a binary number given as text
    double maxValue;
};

// Number of rows in the VR table.
inline constexpr int kValueRepresentationCount = 38;

// The row of a VR; an index outside the table yields the Unknown row.
const ValueRepresentationRow& VRRow(ValueRepresentation vr) noexcept;
// Two-letter code ("" for Unknown).
std::string_view VRCode(ValueRepresentation vr) noexcept;
// Display name, e.g. "Floating Point Single".
std::string_view VRDisplayName(ValueRepresentation vr) noexcept;
// Maximum value length in bytes (kUnlimitedLength when unbounded).
std::uint32_t VRMaxLength(ValueRepresentation vr) noexcept;
// True when odd-length values are padded to even length.
bool VRPadsToEven(ValueRepresentation vr) noexcept;
// The pad byte.
std::uint8_t VRPadByte(ValueRepresentation vr) noexcept;
// True for text VRs.
bool VRIsCharacterData(ValueRepresentation vr) noexcept;
// True when the Specific Character Set applies to the text.
bool VRCharacterSetApplies(ValueRepresentation vr) noexcept;
// True for numeric VRs (binary numbers, DS and IS).
bool VRIsNumeric(ValueRepresentation vr) noexcept;
// Bytes per unit (at least 1).
unsigned VRUnitSize(ValueRepresentation vr) noexcept;
// The header form of the VR in the explicit-VR encodings.
ExplicitLengthForm VRLengthForm(ValueRepresentation vr) noexcept;
// The delimiter between values of a multi-valued element: backslash for every VR.
char VRValueDelimiter(ValueRepresentation vr) noexcept;
// True when a value of the VR can be given as text (its text check is not None).
bool VRTakesText(ValueRepresentation vr) noexcept;
// True for the binary numbers, whose text is written as binary values.
bool VRIsBinaryNumber(ValueRepresentation vr) noexcept;
// The VR with the given two-letter code, Unknown for any other text: parse VR text with this
// once, where it comes in, and test for Unknown.
ValueRepresentation VRFromCode(std::string_view code) noexcept;

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
