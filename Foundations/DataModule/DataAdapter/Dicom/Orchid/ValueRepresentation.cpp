#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueRepresentation.h"

#include <array>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr std::uint32_t kNoLimit = kUnlimitedLength;
constexpr std::uint8_t kSpace = 0x20;
// Binary VRs carry '#' as pad byte; it is never used because they are not padded.
constexpr std::uint8_t kHash = 0x23;

constexpr auto kShort = ExplicitLengthForm::Short;
constexpr auto kLong = ExplicitLengthForm::Long;
// The VRs added to the standard after the first explicit-VR writers, and UT, which some of them
// wrote with a 16-bit length.
constexpr auto kTolerant = ExplicitLengthForm::LongOrShort;

// Columns: code, name, max length, fixed, pad to even, pad byte, text, charset, numeric, unit,
// explicit-VR length form (PS3.5 Table 7.1-1: OB OD OF OL OV OW SQ SV UC UN UR UT UV take the long form).
constexpr std::array<ValueRepresentationRow, kValueRepresentationCount> kRows{{
    {"", "Unknown", 0, true, false, 0x00, false, false, false, 1, kTolerant},
    {"AE", "Application Entity", 16, false, true, kSpace, true, false, false, 1, kShort},
    {"AS", "Age String", 4, true, false, kHash, true, false, false, 1, kShort},
    {"AT", "Attribute Tag", 4, true, false, kHash, false, false, false, 2, kShort},
    {"CS", "Code String", 16, false, true, kSpace, true, false, false, 1, kShort},
    {"DA", "Date", 8, true, true, kSpace, true, false, false, 1, kShort},
    {"DS", "Decimal String", 16, false, true, kSpace, true, false, true, 1, kShort},
    {"DT", "Date Time", 26, false, true, kSpace, true, false, false, 1, kShort},
    {"FL", "Floating Point Single", 4, true, false, kHash, false, false, true, 4, kShort},
    {"FD", "Floating Point Double", 8, true, false, kHash, false, false, true, 8, kShort},
    {"IS", "Integer String", 12, false, true, kSpace, true, false, true, 1, kShort},
    {"LO", "Long String", 64, false, true, kSpace, true, true, false, 1, kShort},
    {"LT", "Long Text", 10240, false, true, kSpace, true, true, false, 1, kShort},
    {"OB", "Other Byte", kNoLimit, false, true, 0x00, false, false, false, 1, kLong},
    {"OD", "Other Double", kNoLimit, false, false, kHash, false, false, false, 8, kTolerant},
    {"OF", "Other Float", kNoLimit, false, false, kHash, false, false, false, 4, kLong},
    {"OL", "Other Long", kNoLimit, false, false, kHash, false, false, false, 4, kTolerant},
    {"OW", "Other Word", kNoLimit, false, false, kHash, false, false, false, 2, kLong},
    {"PN", "Person Name", 64, false, true, kSpace, true, true, false, 1, kShort},
    {"SH", "Short String", 16, false, true, kSpace, true, true, false, 1, kShort},
    {"SL", "Signed Long", 4, true, false, kHash, false, false, true, 4, kShort},
    {"SQ", "Sequence of Items", kNoLimit, false, false, kHash, false, false, false, 1, kLong},
    {"SS", "Signed Short", 2, true, false, kHash, false, false, true, 2, kShort},
    {"ST", "Short Text", 1024, false, true, kSpace, true, true, false, 1, kShort},
    {"TM", "Time", 16, false, true, kSpace, true, false, false, 1, kShort},
    {"UC", "Unlimited Characters", kNoLimit, false, true, kSpace, true, true, false, 1, kTolerant},
    {"UI", "Unique Identifier", 64, false, true, 0x00, true, false, false, 1, kShort},
    {"UL", "Unsigned Long", 4, true, false, kHash, false, false, true, 4, kShort},
    {"UN", "Unknown", kNoLimit, false, true, 0x00, false, false, false, 1, kLong},
    {"UR", "Universal Resource URI/URL", kNoLimit, false, true, kSpace, true, false, false, 1, kTolerant},
    {"US", "Unsigned Short", 2, true, false, kHash, false, false, true, 2, kShort},
    {"UT", "Unlimited Text", kNoLimit, false, true, kSpace, true, true, false, 1, kTolerant},
    {"XS", "US or SS", 2, true, false, kHash, false, false, true, 2, kShort},
    {"OX", "OB o OW", kNoLimit, false, true, 0x00, false, false, false, 1, kLong},
    {"SW", "US or SS or OW", 2, true, false, kHash, false, false, true, 2, kShort},
    {"OV", "Other 64-bit Very Long", kNoLimit, false, false, kHash, false, false, false, 8, kTolerant},
    {"SV", "Signed 64-bit Very Long", 8, true, false, kHash, false, false, true, 8, kTolerant},
    {"UV", "Unsigned 64-bit Very Long", 8, true, false, kHash, false, false, true, 8, kTolerant},
}};

}  // namespace

const ValueRepresentationRow& VRRow(ValueRepresentation vr) noexcept {
    const auto index = static_cast<std::size_t>(vr);
    return index < kRows.size() ? kRows[index] : kRows[0];
}

std::string_view VRCode(ValueRepresentation vr) noexcept { return VRRow(vr).code; }
std::string_view VRDisplayName(ValueRepresentation vr) noexcept { return VRRow(vr).displayName; }
std::uint32_t VRMaxLength(ValueRepresentation vr) noexcept { return VRRow(vr).maxLength; }
bool VRPadsToEven(ValueRepresentation vr) noexcept { return VRRow(vr).padToEven; }
std::uint8_t VRPadByte(ValueRepresentation vr) noexcept { return VRRow(vr).padByte; }
bool VRIsCharacterData(ValueRepresentation vr) noexcept { return VRRow(vr).characterData; }
bool VRCharacterSetApplies(ValueRepresentation vr) noexcept { return VRRow(vr).characterSetApplies; }
bool VRIsNumeric(ValueRepresentation vr) noexcept { return VRRow(vr).numeric; }

unsigned VRUnitSize(ValueRepresentation vr) noexcept {
    const unsigned unit = VRRow(vr).unitSize;
    return unit == 0 ? 1 : unit;
}

ExplicitLengthForm VRLengthForm(ValueRepresentation vr) noexcept { return VRRow(vr).lengthForm; }

char VRValueDelimiter(ValueRepresentation) noexcept { return '\\'; }

ValueRepresentation VRFromCode(std::string_view code) noexcept {
    if (code.size() != 2) return ValueRepresentation::Unknown;
    for (std::size_t i = 1; i < kRows.size(); ++i) {
        if (kRows[i].code == code) return static_cast<ValueRepresentation>(i);
    }
    return ValueRepresentation::Unknown;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
