#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueRepresentation.h"

#include <array>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr std::uint32_t kNoLimit = kUnlimitedLength;
constexpr std::uint8_t kSpace = 0x20;
// Binary VRs carry '#' as pad byte; it is never used because they are not padded.
constexpr std::uint8_t kHash = 0x23;

// Columns: code, name, max length, fixed, pad to even, pad byte, text, charset, numeric, unit.
constexpr std::array<ValueRepresentationRow, kValueRepresentationCount> kRows{{
    {"", "Unknown", 0, true, false, 0x00, false, false, false, 1},
    {"AE", "Application Entity", 16, false, true, kSpace, true, false, false, 1},
    {"AS", "Age String", 4, true, false, kHash, true, false, false, 1},
    {"AT", "Attribute Tag", 4, true, false, kHash, false, false, false, 2},
    {"CS", "Code String", 16, false, true, kSpace, true, false, false, 1},
    {"DA", "Date", 8, true, true, kSpace, true, false, false, 1},
    {"DS", "Decimal String", 16, false, true, kSpace, true, false, true, 1},
    {"DT", "Date Time", 26, false, true, kSpace, true, false, false, 1},
    {"FL", "Floating Point Single", 4, true, false, kHash, false, false, true, 4},
    {"FD", "Floating Point Double", 8, true, false, kHash, false, false, true, 8},
    {"IS", "Integer String", 12, false, true, kSpace, true, false, true, 1},
    {"LO", "Long String", 64, false, true, kSpace, true, true, false, 1},
    {"LT", "Long Text", 10240, false, true, kSpace, true, true, false, 1},
    {"OB", "Other Byte", kNoLimit, false, true, 0x00, false, false, false, 1},
    {"OD", "Other Double", kNoLimit, false, false, kHash, false, false, false, 8},
    {"OF", "Other Float", kNoLimit, false, false, kHash, false, false, false, 4},
    {"OL", "Other Long", kNoLimit, false, false, kHash, false, false, false, 4},
    {"OW", "Other Word", kNoLimit, false, false, kHash, false, false, false, 2},
    {"PN", "Person Name", 64, false, true, kSpace, true, true, false, 1},
    {"SH", "Short String", 16, false, true, kSpace, true, true, false, 1},
    {"SL", "Signed Long", 4, true, false, kHash, false, false, true, 4},
    {"SQ", "Sequence of Items", kNoLimit, false, false, kHash, false, false, false, 1},
    {"SS", "Signed Short", 2, true, false, kHash, false, false, true, 2},
    {"ST", "Short Text", 1024, false, true, kSpace, true, true, false, 1},
    {"TM", "Time", 16, false, true, kSpace, true, false, false, 1},
    {"UC", "Unlimited Characters", kNoLimit, false, true, kSpace, true, true, false, 1},
    {"UI", "Unique Identifier", 64, false, true, 0x00, true, false, false, 1},
    {"UL", "Unsigned Long", 4, true, false, kHash, false, false, true, 4},
    {"UN", "Unknown", kNoLimit, false, true, 0x00, false, false, false, 1},
    {"UR", "Universal Resource URI/URL", kNoLimit, false, true, kSpace, true, false, false, 1},
    {"US", "Unsigned Short", 2, true, false, kHash, false, false, true, 2},
    {"UT", "Unlimited Text", kNoLimit, false, true, kSpace, true, true, false, 1},
    {"XS", "US or SS", 2, true, false, kHash, false, false, true, 2},
    {"OX", "OB o OW", kNoLimit, false, true, 0x00, false, false, false, 1},
    {"SW", "US or SS or OW", 2, true, false, kHash, false, false, true, 2},
}};

}  // namespace

const ValueRepresentationRow& VRRow(ValueRepresentation vr) noexcept {
    const auto index = static_cast<std::size_t>(vr);
    return index < kRows.size() ? kRows[index] : kRows[0];
}

std::string_view VRCode(ValueRepresentation vr) noexcept { return VRRow(vr).code; }
std::string_view VRDisplayName(ValueRepresentation vr) noexcept { return VRRow(vr).displayName; }
std::uint32_t VRMaxLength(ValueRepresentation vr) noexcept { return VRRow(vr).maxLength; }
bool VRIsFixedLength(ValueRepresentation vr) noexcept { return VRRow(vr).fixedLength; }
bool VRPadsToEven(ValueRepresentation vr) noexcept { return VRRow(vr).padToEven; }
std::uint8_t VRPadByte(ValueRepresentation vr) noexcept { return VRRow(vr).padByte; }
bool VRIsCharacterData(ValueRepresentation vr) noexcept { return VRRow(vr).characterData; }
bool VRCharacterSetApplies(ValueRepresentation vr) noexcept { return VRRow(vr).characterSetApplies; }
bool VRIsNumeric(ValueRepresentation vr) noexcept { return VRRow(vr).numeric; }

unsigned VRUnitSize(ValueRepresentation vr) noexcept {
    const unsigned unit = VRRow(vr).unitSize;
    return unit == 0 ? 1 : unit;
}

char VRValueDelimiter(ValueRepresentation) noexcept { return '\\'; }

ValueRepresentation VRFromCode(std::string_view code) noexcept {
    if (code.size() != 2) return ValueRepresentation::Unknown;
    for (std::size_t i = 1; i < kRows.size(); ++i) {
        if (kRows[i].code == code) return static_cast<ValueRepresentation>(i);
    }
    return ValueRepresentation::Unknown;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
