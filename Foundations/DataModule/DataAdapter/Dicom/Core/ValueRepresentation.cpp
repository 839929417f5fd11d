#include "Foundations/DataModule/DataAdapter/Dicom/Core/ValueRepresentation.h"

#include <array>
#include <limits>

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

constexpr auto kNone = TextCheck::None;
constexpr auto kText = TextCheck::Text;
constexpr auto kCodeString = TextCheck::CodeString;
constexpr auto kAge = TextCheck::Age;
constexpr auto kDate = TextCheck::Date;
constexpr auto kTime = TextCheck::Time;
constexpr auto kDateTime = TextCheck::DateTime;
constexpr auto kDecimal = TextCheck::Decimal;
constexpr auto kInteger = TextCheck::Integer;
constexpr auto kUid = TextCheck::Uid;
constexpr auto kPersonName = TextCheck::PersonName;
constexpr auto kBinary = TextCheck::Binary;
constexpr auto kBinary64 = TextCheck::Binary64;
constexpr double kFloatMax = std::numeric_limits<float>::max();
constexpr double kDoubleMax = std::numeric_limits<double>::max();

// Columns: code, name, max length, fixed, pad to even, pad byte, text, charset, numeric, unit,
// explicit-VR length form (PS3.5 Table 7.1-1: OB OD OF OL OV OW SQ SV UC UN UR UT UV take the long form),
// check of the value as text, several values, free text, and the range of a binary number (SV and UV:
// a negative minimum for the signed one, as their range is checked exactly).
constexpr std::array<ValueRepresentationRow, kValueRepresentationCount> kRows{{
    {"", "Unknown", 0, true, false, 0x00, false, false, false, 1, kTolerant, kNone, true, false, 0, 0},
    {"AE", "Application Entity", 16, false, true, kSpace, true, false, false, 1, kShort, kText, true, false, 0, 0},
    {"AS", "Age String", 4, true, false, kHash, true, false, false, 1, kShort, kAge, true, false, 0, 0},
    {"AT", "Attribute Tag", 4, true, false, kHash, false, false, false, 2, kShort, kNone, true, false, 0, 0},
    {"CS", "Code String", 16, false, true, kSpace, true, false, false, 1, kShort, kCodeString, true, false, 0, 0},
    {"DA", "Date", 8, true, true, kSpace, true, false, false, 1, kShort, kDate, true, false, 0, 0},
    {"DS", "Decimal String", 16, false, true, kSpace, true, false, true, 1, kShort, kDecimal, true, false, 0, 0},
    {"DT", "Date Time", 26, false, true, kSpace, true, false, false, 1, kShort, kDateTime, true, false, 0, 0},
    {"FL", "Floating Point Single", 4, true, false, kHash, false, false, true, 4, kShort, kBinary, true, false, -kFloatMax, kFloatMax},
    {"FD", "Floating Point Double", 8, true, false, kHash, false, false, true, 8, kShort, kBinary, true, false, -kDoubleMax, kDoubleMax},
    {"IS", "Integer String", 12, false, true, kSpace, true, false, true, 1, kShort, kInteger, true, false, 0, 0},
    {"LO", "Long String", 64, false, true, kSpace, true, true, false, 1, kShort, kText, true, false, 0, 0},
    {"LT", "Long Text", 10240, false, true, kSpace, true, true, false, 1, kShort, kText, false, true, 0, 0},
    {"OB", "Other Byte", kNoLimit, false, true, 0x00, false, false, false, 1, kLong, kNone, true, false, 0, 0},
    {"OD", "Other Double", kNoLimit, false, false, kHash, false, false, false, 8, kTolerant, kNone, true, false, 0, 0},
    {"OF", "Other Float", kNoLimit, false, false, kHash, false, false, false, 4, kLong, kNone, true, false, 0, 0},
    {"OL", "Other Long", kNoLimit, false, false, kHash, false, false, false, 4, kTolerant, kNone, true, false, 0, 0},
    {"OW", "Other Word", kNoLimit, false, false, kHash, false, false, false, 2, kLong, kNone, true, false, 0, 0},
    {"PN", "Person Name", 64, false, true, kSpace, true, true, false, 1, kShort, kPersonName, true, false, 0, 0},
    {"SH", "Short String", 16, false, true, kSpace, true, true, false, 1, kShort, kText, true, false, 0, 0},
    {"SL", "Signed Long", 4, true, false, kHash, false, false, true, 4, kShort, kBinary, true, false, -2147483648.0, 2147483647},
    {"SQ", "Sequence of Items", kNoLimit, false, false, kHash, false, false, false, 1, kLong, kNone, true, false, 0, 0},
    {"SS", "Signed Short", 2, true, false, kHash, false, false, true, 2, kShort, kBinary, true, false, -32768, 32767},
    {"ST", "Short Text", 1024, false, true, kSpace, true, true, false, 1, kShort, kText, false, true, 0, 0},
    {"TM", "Time", 16, false, true, kSpace, true, false, false, 1, kShort, kTime, true, false, 0, 0},
    {"UC", "Unlimited Characters", kNoLimit, false, true, kSpace, true, true, false, 1, kTolerant, kText, true, false, 0, 0},
    {"UI", "Unique Identifier", 64, false, true, 0x00, true, false, false, 1, kShort, kUid, true, false, 0, 0},
    {"UL", "Unsigned Long", 4, true, false, kHash, false, false, true, 4, kShort, kBinary, true, false, 0, 4294967295.0},
    {"UN", "Unknown", kNoLimit, false, true, 0x00, false, false, false, 1, kLong, kNone, true, false, 0, 0},
    {"UR", "Universal Resource URI/URL", kNoLimit, false, true, kSpace, true, false, false, 1, kTolerant, kText, false, false, 0, 0},
    {"US", "Unsigned Short", 2, true, false, kHash, false, false, true, 2, kShort, kBinary, true, false, 0, 65535},
    {"UT", "Unlimited Text", kNoLimit, false, true, kSpace, true, true, false, 1, kTolerant, kText, false, true, 0, 0},
    {"XS", "US or SS", 2, true, false, kHash, false, false, true, 2, kShort, kNone, true, false, 0, 0},
    {"OX", "OB o OW", kNoLimit, false, true, 0x00, false, false, false, 1, kLong, kNone, true, false, 0, 0},
    {"SW", "US or SS or OW", 2, true, false, kHash, false, false, true, 2, kShort, kNone, true, false, 0, 0},
    {"OV", "Other 64-bit Very Long", kNoLimit, false, false, kHash, false, false, false, 8, kTolerant, kNone, true, false, 0, 0},
    {"SV", "Signed 64-bit Very Long", 8, true, false, kHash, false, false, true, 8, kTolerant, kBinary64, true, false, -1, 0},
    {"UV", "Unsigned 64-bit Very Long", 8, true, false, kHash, false, false, true, 8, kTolerant, kBinary64, true, false, 0, 0},
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

bool VRTakesText(ValueRepresentation vr) noexcept { return VRRow(vr).textCheck != TextCheck::None; }

bool VRIsBinaryNumber(ValueRepresentation vr) noexcept {
    const TextCheck check = VRRow(vr).textCheck;
    return check == TextCheck::Binary || check == TextCheck::Binary64;
}

ValueRepresentation VRFromCode(std::string_view code) noexcept {
    if (code.size() != 2) return ValueRepresentation::Unknown;
    for (std::size_t i = 1; i < kRows.size(); ++i) {
        if (kRows[i].code == code) return static_cast<ValueRepresentation>(i);
    }
    return ValueRepresentation::Unknown;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
