#include "Foundations/DataModule/metadata/ElementTextCheck.h"

#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueRepresentation.h"
#include "Foundations/DataModule/Values/DateTime.h"
#include "Foundations/DataModule/Values/UIDDataType.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace Lumivale::DataModule::DataConverterModule {

namespace {

// How a VR's values are checked.
enum class Check { Text, CodeString, Age, Date, Time, DateTime, Decimal, Integer, Uid, PersonName, Binary, Binary64 };

namespace Codec = DataAdapterModule::DicomCodecModule;

// The text VRs: whether "\" separates values, and whether control characters TAB CR LF FF are
// allowed. Their maximum lengths come from the codec's VR table.
struct TextVr {
    std::string_view vr;
    bool multi_valued;
    bool free_text;
    Check check;
    double min = 0;  // range of the binary numeric VRs
    double max = 0;
};

constexpr TextVr kTextVrs[] = {
    {"AE", true, false, Check::Text},
    {"AS", true, false, Check::Age},
    {"CS", true, false, Check::CodeString},
    {"DA", true, false, Check::Date},
    {"DS", true, false, Check::Decimal},
    {"DT", true, false, Check::DateTime},
    {"IS", true, false, Check::Integer},
    {"LO", true, false, Check::Text},
    {"LT", false, true, Check::Text},
    {"PN", true, false, Check::PersonName},
    {"SH", true, false, Check::Text},
    {"ST", false, true, Check::Text},
    {"TM", true, false, Check::Time},
    {"UC", true, false, Check::Text},
    {"UI", true, false, Check::Uid},
    {"UR", false, false, Check::Text},
    {"UT", false, true, Check::Text},
    {"US", true, false, Check::Binary, 0, 65535},
    {"SS", true, false, Check::Binary, -32768, 32767},
    {"UL", true, false, Check::Binary, 0, 4294967295.0},
    {"SL", true, false, Check::Binary, -2147483648.0, 2147483647},
    {"FL", true, false, Check::Binary, -std::numeric_limits<float>::max(), std::numeric_limits<float>::max()},
    {"FD", true, false, Check::Binary, -std::numeric_limits<double>::max(), std::numeric_limits<double>::max()},
    // 64-bit integers: checked exactly, beyond the precision of a double.
    {"SV", true, false, Check::Binary64, -1, 0},
    {"UV", true, false, Check::Binary64, 0, 0},
};

// Characters a value of the VR may hold, 0 for no limit. A person name's limit is per component
// group and is checked there.
std::size_t MaxCharacters(std::string_view vr) {
    const Codec::ValueRepresentation code = Codec::VRFromCode(vr);
    const std::uint32_t max = Codec::VRMaxLength(code);
    if (code == Codec::ValueRepresentation::PN || max == Codec::kUnlimitedLength) return 0;
    return max;
}

const TextVr* FindTextVr(std::string_view vr) {
    const auto found = std::find_if(std::begin(kTextVrs), std::end(kTextVrs), [vr](const TextVr& row) { return row.vr == vr; });
    return found == std::end(kTextVrs) ? nullptr : &*found;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t CountCharacters(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::count_if(utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

bool HasForbiddenControl(std::string_view text, bool free_text) {
    return std::any_of(text.begin(), text.end(), [free_text](char c) {
        const auto byte = static_cast<unsigned char>(c);
        const bool allowed = free_text && (c == '\t' || c == '\n' || c == '\r' || c == '\f');
        return (byte < 0x20 || byte == 0x7F) && !allowed;
    });
}

bool IsSignedDigits(std::string_view text) {
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) text.remove_prefix(1);
    return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

// [+-] digits [. digits] or [+-] . digits, then an optional exponent with at least one digit.
bool IsDecimalSyntax(std::string_view text) {
    std::size_t position = 0;
    if (position < text.size() && (text[position] == '+' || text[position] == '-')) ++position;
    std::size_t digits = 0;
    for (; position < text.size() && IsDigit(text[position]); ++position) ++digits;
    if (position < text.size() && text[position] == '.') {
        for (++position; position < text.size() && IsDigit(text[position]); ++position) ++digits;
    }
    if (digits == 0) return false;
    if (position == text.size()) return true;
    if (text[position] != 'e' && text[position] != 'E') return false;
    return IsSignedDigits(text.substr(position + 1));
}

bool IsInRange(std::string_view text, double min, double max) {
    if (!IsDecimalSyntax(text)) return false;
    double value = 0;
    const char* begin = text.data() + (text.front() == '+' ? 1 : 0);
    const auto result = std::from_chars(begin, text.data() + text.size(), value);
    if (result.ec != std::errc{} || !std::isfinite(value) || value < min || value > max) return false;
    // Integer VRs take whole numbers only.
    return max > 4294967295.0 || std::floor(value) == value;
}

// A whole number that fits a signed or unsigned 64-bit integer.
bool IsInteger64(std::string_view text, bool is_signed) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    const char* end = text.data() + text.size();
    std::from_chars_result result{};
    if (is_signed) {
        std::int64_t value = 0;
        result = std::from_chars(text.data(), end, value);
    } else {
        std::uint64_t value = 0;
        result = std::from_chars(text.data(), end, value);
    }
    return !text.empty() && result.ec == std::errc{} && result.ptr == end;
}

bool IsValidPersonName(std::string_view value) {
    const std::vector<std::string> groups = SplitKeepingEmpty(value, '=');
    if (groups.size() > 3) return false;
    return std::all_of(groups.begin(), groups.end(), [](const std::string& group) {
        return CountCharacters(group) <= Codec::VRMaxLength(Codec::ValueRepresentation::PN) &&
               std::count(group.begin(), group.end(), '^') <= 4;
    });
}

bool IsValidValue(const TextVr& rule, std::string_view value) {
    if (rule.check == Check::Binary) return IsInRange(TrimBlanks(value), rule.min, rule.max);
    if (rule.check == Check::Binary64) return IsInteger64(TrimBlanks(value), rule.min < 0);
    if (HasForbiddenControl(value, rule.free_text)) return false;
    const std::size_t max_characters = MaxCharacters(rule.vr);
    if (max_characters != 0 && CountCharacters(value) > max_characters) return false;
    const std::string_view trimmed = TrimBlanks(value);
    if (trimmed.empty()) return true;  // an empty value of a multi-valued element
    date_time parsed;
    switch (rule.check) {
        case Check::Text: return true;
        case Check::CodeString:
            return std::all_of(trimmed.begin(), trimmed.end(),
                               [](char c) { return (c >= 'A' && c <= 'Z') || IsDigit(c) || c == ' ' || c == '_'; });
        case Check::Age:
            return trimmed.size() == 4 && std::all_of(trimmed.begin(), trimmed.begin() + 3, IsDigit) &&
                   std::string_view("DWMY").find(trimmed[3]) != std::string_view::npos;
        case Check::Date: return ParseDicomDate(trimmed, parsed);
        case Check::Time: return ParseDicomTime(trimmed, parsed);
        case Check::DateTime: return ParseDicomDateTime(trimmed, parsed);
        case Check::Decimal: return IsDecimalSyntax(trimmed) && IsInRange(trimmed, -1.7976931348623157e308, 1.7976931348623157e308);
        case Check::Integer: return IsSignedDigits(trimmed) && IsInRange(trimmed, -2147483648.0, 2147483647.0);
        case Check::Uid: return IsValidUid(trimmed);
        case Check::PersonName: return IsValidPersonName(value);
        case Check::Binary:
        case Check::Binary64: break;
    }
    return false;
}

}  // namespace

bool IsTextualVr(std::string_view vr) noexcept { return FindTextVr(vr) != nullptr; }

bool IsBinaryNumberVr(std::string_view vr) noexcept {
    const TextVr* rule = FindTextVr(vr);
    return rule != nullptr && (rule->check == Check::Binary || rule->check == Check::Binary64);
}

bool IsValidElementText(std::string_view vr, std::string_view text) {
    const TextVr* rule = FindTextVr(vr);
    if (rule == nullptr || !IsValidUtf8(text)) return false;
    if (!rule->multi_valued) return IsValidValue(*rule, text);
    const std::vector<std::string> values = SplitKeepingEmpty(text, '\\');
    return std::all_of(values.begin(), values.end(), [rule](const std::string& value) { return IsValidValue(*rule, value); });
}

}  // namespace Lumivale::DataModule::DataConverterModule
