#include "Foundations/DataModule/Values/DateTime.h"

#include "Foundations/DataModule/Common/TextUtils.h"

#include <cstdio>
#include <ctime>

namespace Lumivale::DataModule {

namespace {

constexpr bool IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

constexpr int DaysInMonth(int year, int month) {
    constexpr int days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : days[month - 1];
}

// Reads exactly `digits` decimal digits at position; advances position on success.
bool ReadDigits(std::string_view text, std::size_t& position, std::size_t digits, int& out) {
    if (text.size() - position < digits) return false;
    int value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        const char c = text[position + i];
        if (c < '0' || c > '9') return false;
        value = value * 10 + (c - '0');
    }
    out = value;
    position += digits;
    return true;
}

// ".F{1,6}" at position: the fraction scaled to microseconds.
bool ReadFraction(std::string_view text, std::size_t& position, std::uint32_t& out) {
    if (position == text.size() || text[position] != '.') return true;
    ++position;
    std::size_t digits = 0;
    std::uint32_t value = 0;
    while (position < text.size() && text[position] >= '0' && text[position] <= '9') {
        if (++digits > 6) return false;
        value = value * 10 + static_cast<std::uint32_t>(text[position++] - '0');
    }
    if (digits == 0) return false;
    for (; digits < 6; ++digits) value *= 10;
    out = value;
    return true;
}

bool ValidDate(int year, int month, int day) {
    return month >= 1 && month <= 12 && day >= 1 && day <= DaysInMonth(year, month);
}

bool ValidTime(int hour, int minute, int second) {
    return hour <= 23 && minute <= 59 && second <= 60;
}

// Time fields "HH[MM[SS[.F]]]" from position, into a copy the caller commits.
bool ReadTimeFields(std::string_view text, std::size_t& position, date_time& value) {
    if (!ReadDigits(text, position, 2, value.hour)) return false;
    if (position < text.size() && text[position] != '.' && text[position] != '&' && text[position] != '+' &&
        text[position] != '-') {
        if (!ReadDigits(text, position, 2, value.minute)) return false;
        if (position < text.size() && text[position] >= '0' && text[position] <= '9') {
            if (!ReadDigits(text, position, 2, value.second)) return false;
            if (!ReadFraction(text, position, value.fraction)) return false;
        }
    }
    return ValidTime(value.hour, value.minute, value.second);
}

// The DT offset suffix "&ZZXX" ('&' being '+' or '-'), hours 0..14, minutes 0..59.
bool ValidOffset(std::string_view offset) {
    if (offset.empty()) return true;
    if (offset.size() != 5 || (offset[0] != '+' && offset[0] != '-')) return false;
    std::size_t position = 1;
    int hours = 0;
    int minutes = 0;
    return ReadDigits(offset, position, 2, hours) && ReadDigits(offset, position, 2, minutes) && hours <= 14 &&
           minutes <= 59;
}

}  // namespace

date_time CurrentLocalDateTime() {
    std::tm local{};
#ifdef _WIN32
    const __time64_t now = _time64(nullptr);
    _localtime64_s(&local, &now);
#else
    const std::time_t now = std::time(nullptr);
    localtime_r(&now, &local);
#endif
    return date_time{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                     local.tm_sec, 0};
}

std::string FormatDateTime(const date_time& value, int format) {
    char text[64];
    if (format == 0) {
        std::snprintf(text, sizeof text, "%04d%02d%02d", value.year, value.month, value.day);
        return text;
    }
    if (format != 1 && format != 2) return {};
    std::snprintf(text, sizeof text, "%04d%02d%02d%02d%02d%02d", value.year, value.month, value.day, value.hour,
                  value.minute, value.second);
    std::string result = text;
    if (value.fraction != 0) {
        std::snprintf(text, sizeof text, ".%06u", static_cast<unsigned>(value.fraction));
        result += text;
    }
    return result;
}

std::string DicomDateValue(const date_time& value) {
    // A value read from a TM alone has no date part; "00000000" would not be a valid DA.
    return value.month == 0 ? std::string{} : FormatDateTime(value, 0);
}

std::string DicomTimeValue(const date_time& value) {
    if (IsZeroDateTime(value)) return {};
    // The time part of the 14-digit form, with its fraction.
    return FormatDateTime(value, 1).substr(8);
}

std::string DicomDateTimeValue(const date_time& value) {
    return IsZeroDateTime(value) ? std::string{} : FormatDateTime(value, 1);
}

bool ParseDicomDate(std::string_view text, date_time& out) {
    const std::string_view trimmed = TrimBlanks(text);
    if (trimmed.size() != 8) return false;
    std::size_t position = 0;
    date_time value = out;
    if (!ReadDigits(trimmed, position, 4, value.year) || !ReadDigits(trimmed, position, 2, value.month) ||
        !ReadDigits(trimmed, position, 2, value.day) || !ValidDate(value.year, value.month, value.day)) {
        return false;
    }
    out = value;
    return true;
}

bool ParseDicomTime(std::string_view text, date_time& out) {
    const std::string_view trimmed = TrimBlanks(text);
    std::size_t position = 0;
    date_time value = out;
    value.minute = value.second = 0;
    value.fraction = 0;
    if (!ReadTimeFields(trimmed, position, value) || position != trimmed.size()) return false;
    out = value;
    return true;
}

bool ParseDicomDateTime(std::string_view text, date_time& out) {
    const std::string_view trimmed = TrimBlanks(text);
    std::size_t position = 0;
    date_time value{0, 1, 1, 0, 0, 0, 0};
    if (!ReadDigits(trimmed, position, 4, value.year)) return false;
    const auto more_digits = [&] { return position < trimmed.size() && trimmed[position] >= '0' && trimmed[position] <= '9'; };
    if (more_digits() && !ReadDigits(trimmed, position, 2, value.month)) return false;
    if (more_digits() && !ReadDigits(trimmed, position, 2, value.day)) return false;
    if (!ValidDate(value.year, value.month, value.day)) return false;
    if (more_digits() && !ReadTimeFields(trimmed, position, value)) return false;
    if (!ValidOffset(trimmed.substr(position))) return false;
    out = value;
    return true;
}

}  // namespace Lumivale::DataModule
