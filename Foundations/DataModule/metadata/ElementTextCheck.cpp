#include "Foundations/DataModule/metadata/ElementTextCheck.h"

#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Common/TextUtils.h"
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

namespace Codec = DataAdapterModule::DicomCodecModule;
using VR = Codec::ValueRepresentation;
using Check = Codec::TextCheck;
using Rule = Codec::ValueRepresentationRow;

// Characters a value of the VR may hold, 0 for no limit. A person name's limit is per component
// group and is checked there.
std::size_t MaxCharacters(const Rule& rule) {
    if (rule.textCheck == Check::PersonName || rule.maxLength == Codec::kUnlimitedLength) return 0;
    return rule.maxLength;
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

bool IsValidValue(const Rule& rule, std::string_view value) {
    if (rule.textCheck == Check::Binary) return IsInRange(TrimBlanks(value), rule.minValue, rule.maxValue);
    if (rule.textCheck == Check::Binary64) return IsInteger64(TrimBlanks(value), rule.minValue < 0);
    if (HasForbiddenControl(value, rule.freeText)) return false;
    const std::size_t max_characters = MaxCharacters(rule);
    if (max_characters != 0 && CountCharacters(value) > max_characters) return false;
    const std::string_view trimmed = TrimBlanks(value);
    if (trimmed.empty()) return true;  // an empty value of a multi-valued element
    date_time parsed;
    switch (rule.textCheck) {
        case Check::None: break;
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

bool IsValidElementText(VR vr, std::string_view text) {
    const Rule& rule = Codec::VRRow(vr);
    if (rule.textCheck == Check::None || !IsValidUtf8(text)) return false;
    if (!rule.multipleValues) return IsValidValue(rule, text);
    const std::vector<std::string> values = SplitKeepingEmpty(text, '\\');
    return std::all_of(values.begin(), values.end(), [&rule](const std::string& value) { return IsValidValue(rule, value); });
}

}  // namespace Lumivale::DataModule::DataConverterModule
