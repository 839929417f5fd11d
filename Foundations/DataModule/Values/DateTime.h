#pragma once
// Dates and times: the date_time record, its text formats, the DICOM DA/TM/DT parsers and the
// date/time attribute value.
//
// A DICOM date and time pair (Study Date + Study Time, Content Date + Content Time...) is held as
// one date_time. The zero date_time (every field 0) means "no date": the DICOM value functions
// below write it as an empty value, never as "00000000", so that a zeroed attribute of type 2 or 3
// stays valid DICOM.

#include "Foundations/DataModule/Values/CoreDataType.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// Broken-down local date and time; fraction is in microseconds (0 to 999999).
struct date_time {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    std::uint32_t fraction = 0;

    // Equal when every field is equal.
    friend bool operator==(const date_time&, const date_time&) = default;
};

// The zero date_time: every field 0.
constexpr date_time ZeroDateTime() { return date_time{}; }

// True when every field is 0.
constexpr bool IsZeroDateTime(const date_time& value) { return value == ZeroDateTime(); }

// The current local time to the second, fraction 0.
date_time CurrentLocalDateTime();

// Text by format selector: 0 "%Y%m%d"; 1 and 2 "%Y%m%d%H%M%S" then "." and six fraction digits
// when the fraction is not 0. Other selectors give "". Fields are written as they are.
std::string FormatDateTime(const date_time& value, int format);

// DA value ("YYYYMMDD"), "" for the zero date_time and any value without a date part (month 0).
std::string DicomDateValue(const date_time& value);
// TM value ("HHMMSS", then ".FFFFFF" when the fraction is not 0), "" for the zero date_time.
std::string DicomTimeValue(const date_time& value);
// DT value (as format 1), "" for the zero date_time.
std::string DicomDateTimeValue(const date_time& value);

// Read a DA value "YYYYMMDD" (blanks trimmed) into the date fields; false when malformed or not a
// calendar date, leaving out untouched.
bool ParseDicomDate(std::string_view text, date_time& out);
// Read a TM value "HH[MM[SS[.F{1,6}]]]" (blanks trimmed) into the time fields; false when
// malformed or out of range (second 60 is accepted for leap seconds).
bool ParseDicomTime(std::string_view text, date_time& out);
// Read a DT value "YYYY[MM[DD[HH[MM[SS[.F{1,6}]]]]]][&ZZXX]" (blanks trimmed); missing month and
// day are 1, missing time fields 0; the UTC offset is checked and not kept.
bool ParseDicomDateTime(std::string_view text, date_time& out);

// A date/time attribute value.
class DateTimeDataType : public CoreDataType<date_time> {
public:
    using CoreDataType<date_time>::CoreDataType;

    // FormatDateTime of the value, "" while empty.
    std::string Text(int format) const { return IsEmpty() ? std::string{} : FormatDateTime(value_, format); }
};

}  // namespace Lumivale::DataModule
