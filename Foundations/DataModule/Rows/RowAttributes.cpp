#include "Foundations/DataModule/Rows/RowAttributes.h"

#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/Rows/EquipmentDataRow.h"
#include "Foundations/DataModule/Rows/InstanceDataRow.h"
#include "Foundations/DataModule/Rows/PatientDataRow.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/Rows/SeriesDataRow.h"
#include "Foundations/DataModule/Rows/StudyDataRow.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <exception>
#include <vector>

namespace Lumivale::DataModule {

namespace {

// ---------------------------------------------------------------------------------------------
// Text checks shared by the value codecs.

using VR = ValueRepresentation;

// A text VR, whose limits come from the VR table: DICOM counts characters, so lengths are in code
// points; free text (ST/LT) keeps leading blanks, and "\" and TAB CR LF FF are part of the value.
struct TextRule {
    VR vr;
};

constexpr TextRule kLongString{VR::LO};
constexpr TextRule kShortString{VR::SH};
constexpr TextRule kShortText{VR::ST};
constexpr TextRule kLongText{VR::LT};

std::string_view TrimTrailingSpaces(std::string_view text) {
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

// Code points in well-formed UTF-8: every byte that is not a continuation byte starts one.
std::size_t CountCharacters(std::string_view utf8) {
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

bool IsAllowedControl(char c, bool free_text) {
    return free_text && (c == '\t' || c == '\n' || c == '\r' || c == '\f');
}

// One value of a text VR, already trimmed: well-formed UTF-8, no control characters (the text is
// held decoded, so an escape would be a stray byte), no "\" unless free text, within the length.
bool IsValidTextValue(std::string_view value, const TextRule& rule) {
    if (!IsValidUtf8(value)) return false;
    const bool freeText = VRRow(rule.vr).freeText;
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte < 0x20 || byte == 0x7F) && !IsAllowedControl(c, freeText)) return false;
        if (c == '\\' && !freeText) return false;
    }
    return CountCharacters(value) <= VRMaxLength(rule.vr);
}

std::string_view TrimForRule(std::string_view text, const TextRule& rule) {
    return VRRow(rule.vr).freeText ? TrimTrailingSpaces(text) : TrimBlanks(text);
}

bool IsAsciiDigit(char c) { return c >= '0' && c <= '9'; }

bool AllDigits(std::string_view text) { return !text.empty() && std::all_of(text.begin(), text.end(), IsAsciiDigit); }

// ---------------------------------------------------------------------------------------------
// Value codecs: each knows one value class, its VR, and how it reads and writes DICOM text.

// Single-valued wide text (LO, SH, ST, LT).
template <const TextRule& Rule>
struct TextCodec {
    static constexpr VR kVr = Rule.vr;
    static bool IsSet(const WStringDataType& value) { return value.IsSet(); }
    static std::optional<std::string> Get(const WStringDataType& value) { return TryToUtf8(value.Value()); }
    static bool Set(WStringDataType& value, std::string_view text) {
        text = TrimForRule(text, Rule);
        if (text.empty()) {
            value.Clear();
            return true;
        }
        return IsValidTextValue(text, Rule) && value.SetFromUtf8(text);
    }
};

// Multi-valued wide text (LO with VM 1-n): every value checked on its own.
template <const TextRule& Rule>
struct MultiTextCodec {
    using Value = MultiCodedWStringDataType<unsigned int>;
    static constexpr VR kVr = Rule.vr;
    static bool IsSet(const Value& value) { return !value.IsEmpty(); }
    static std::optional<std::string> Get(const Value& value) { return TryToUtf8(value.Text()); }
    static bool Set(Value& value, std::string_view text) {
        Value parsed;
        const std::vector<std::string> fields = SplitKeepingEmpty(TrimBlanks(text), '\\');
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const std::string_view field = TrimForRule(fields[i], Rule);
            if (field.empty()) continue;
            std::optional<WString> wide = IsValidTextValue(field, Rule) ? TryFromUtf8(field) : std::nullopt;
            if (!wide) return false;
            parsed.Set(static_cast<unsigned int>(i), std::move(*wide));
        }
        value = std::move(parsed);
        return true;
    }
};

// Age String: exactly three digits and one of D, W, M, Y.
struct AgeCodec {
    static constexpr VR kVr = VR::AS;
    static bool IsSet(const WStringDataType& value) { return value.IsSet(); }
    static std::optional<std::string> Get(const WStringDataType& value) { return TryToUtf8(value.Value()); }
    static bool Set(WStringDataType& value, std::string_view text) {
        text = TrimBlanks(text);
        if (text.empty()) {
            value.Clear();
            return true;
        }
        constexpr std::string_view kUnits = "DWMY";
        if (text.size() != 4 || !AllDigits(text.substr(0, 3)) || kUnits.find(text[3]) == std::string_view::npos) {
            return false;
        }
        return value.SetFromUtf8(text);
    }
};

// Person Name: at most three "=" groups of at most five "^" components, 64 characters per group.
struct PersonNameCodec {
    static constexpr VR kVr = VR::PN;
    static constexpr TextRule kGroupRule{VR::PN};
    static bool IsSet(const PersonNameDataType& value) { return value.IsSet(); }
    static std::optional<std::string> Get(const PersonNameDataType& value) { return TryToUtf8(value.Text()); }
    static bool Set(PersonNameDataType& value, std::string_view text) {
        text = TrimTrailingSpaces(text);
        const std::vector<std::string> groups = SplitKeepingEmpty(text, '=');
        if (groups.size() > PersonNameDataType::PersonNameRepresentation::count) return false;
        for (const std::string& group : groups) {
            if (!IsValidTextValue(group, kGroupRule)) return false;
            if (std::count(group.begin(), group.end(), '^') >= static_cast<long>(PersonNameComponent::count)) {
                return false;
            }
        }
        std::optional<WString> wide = TryFromUtf8(text);
        if (!wide) return false;
        value.SetFromText(*wide);
        return true;
    }
};

// Unique Identifier: dotted digits, at most 64 characters.
struct UidCodec {
    static constexpr VR kVr = VR::UI;
    static bool IsSet(const UIDDataType& value) { return value.IsSet(); }
    static std::optional<std::string> Get(const UIDDataType& value) { return value.Value(); }
    static bool Set(UIDDataType& value, std::string_view text) {
        text = TrimBlanks(text);
        if (text.empty()) {
            value.Clear();
            return true;
        }
        return value.Set(text);
    }
};

// Code String over an enumeration: only the enumeration's own terms are accepted, since any other
// term would be held as the unknown member and lost on the way out.
template <typename E>
struct CodedCodec {
    using Value = CodedStringDataType<E>;
    static constexpr VR kVr = VR::CS;
    static constexpr std::size_t kMaxLength = 16;
    static bool IsSet(const Value& value) { return value.IsSet() && !value.Term().empty(); }
    static std::optional<std::string> Get(const Value& value) { return value.Term(); }
    static bool Set(Value& value, std::string_view text) {
        text = TrimBlanks(text);
        if (text.empty()) {
            value.Clear();
            return true;
        }
        const bool code_string_characters = std::all_of(text.begin(), text.end(), [](char c) {
            return (c >= 'A' && c <= 'Z') || IsAsciiDigit(c) || c == ' ' || c == '_';
        });
        if (!code_string_characters || text.size() > kMaxLength) return false;
        const E member = CodedStringTraits<E>::FromTerm(text);
        if (static_cast<std::uint32_t>(member) == 0) return false;
        value.Set(member);
        return true;
    }
};

// Integer String: optional sign and digits, at most 12 characters, within 32 bits.
struct IntegerCodec {
    static constexpr VR kVr = VR::IS;
    static bool IsSet(const IntegerDataType& value) { return value.IsSet(); }
    static std::optional<std::string> Get(const IntegerDataType& value) { return value.Text(); }
    static bool Set(IntegerDataType& value, std::string_view text) {
        text = TrimBlanks(text);
        if (text.empty()) {
            value.Clear();
            return true;
        }
        const std::string_view digits = text.front() == '+' || text.front() == '-' ? text.substr(1) : text;
        if (text.size() > 12 || !AllDigits(digits)) return false;
        return value.SetFromText(text);
    }
};

// Decimal String grammar: [+-] digits [. digits] or [+-] . digits, then an optional exponent.
bool IsDecimalStringSyntax(std::string_view text) {
    std::size_t position = 0;
    if (position < text.size() && (text[position] == '+' || text[position] == '-')) ++position;
    std::size_t mantissa_digits = 0;
    while (position < text.size() && IsAsciiDigit(text[position])) ++position, ++mantissa_digits;
    if (position < text.size() && text[position] == '.') {
        ++position;
        while (position < text.size() && IsAsciiDigit(text[position])) ++position, ++mantissa_digits;
    }
    if (mantissa_digits == 0) return false;
    if (position < text.size() && (text[position] == 'e' || text[position] == 'E')) {
        ++position;
        if (position < text.size() && (text[position] == '+' || text[position] == '-')) ++position;
        if (!AllDigits(text.substr(position))) return false;
        return true;
    }
    return position == text.size();
}

// Decimal String: at most 16 characters; written in the shortest form that fits.
struct DecimalCodec {
    static constexpr VR kVr = VR::DS;
    static constexpr std::size_t kMaxLength = 16;
    static bool IsSet(const DecimalDataType& value) { return value.IsSet() && std::isfinite(value.Value()); }
    static std::optional<std::string> Get(const DecimalDataType& value) {
        char text[64];
        auto result = std::to_chars(text, text + sizeof text, value.Value());
        // Fewer significant digits until the text fits the VR's 16 characters.
        for (int precision = 15; result.ptr - text > static_cast<long>(kMaxLength) && precision > 0; --precision) {
            result = std::to_chars(text, text + sizeof text, value.Value(), std::chars_format::general, precision);
        }
        return std::string(text, result.ptr);
    }
    static bool Set(DecimalDataType& value, std::string_view text) {
        text = TrimBlanks(text);
        if (text.empty()) {
            value.Clear();
            return true;
        }
        if (text.size() > kMaxLength || !IsDecimalStringSyntax(text)) return false;
        DecimalDataType parsed;
        if (!parsed.SetFromText(text) || !std::isfinite(parsed.Value())) return false;
        value = parsed;
        return true;
    }
};

// The date/time member as a record to edit: the held value, or the zero date_time while empty.
date_time EditableDateTime(const DateTimeDataType& value) { return value.IsSet() ? value.Value() : ZeroDateTime(); }

// Store an edited record; a record left all zero empties the member.
void StoreDateTime(DateTimeDataType& value, const date_time& edited) {
    if (IsZeroDateTime(edited)) {
        value.Clear();
    } else {
        value.Set(edited);
    }
}

// The date fields of a date/time member (DA).
struct DatePartCodec {
    static constexpr VR kVr = VR::DA;
    static bool IsSet(const DateTimeDataType& value) { return value.IsSet() && !DicomDateValue(value.Value()).empty(); }
    static std::optional<std::string> Get(const DateTimeDataType& value) { return DicomDateValue(value.Value()); }
    static bool Set(DateTimeDataType& value, std::string_view text) {
        date_time edited = EditableDateTime(value);
        if (TrimBlanks(text).empty()) {
            edited.year = edited.month = edited.day = 0;
        } else if (!ParseDicomDate(text, edited)) {
            return false;
        }
        StoreDateTime(value, edited);
        return true;
    }
};

// The time fields of a date/time member (TM).
struct TimePartCodec {
    static constexpr VR kVr = VR::TM;
    static bool IsSet(const DateTimeDataType& value) { return value.IsSet() && !DicomTimeValue(value.Value()).empty(); }
    static std::optional<std::string> Get(const DateTimeDataType& value) { return DicomTimeValue(value.Value()); }
    static bool Set(DateTimeDataType& value, std::string_view text) {
        date_time edited = EditableDateTime(value);
        if (TrimBlanks(text).empty()) {
            edited.hour = edited.minute = edited.second = 0;
            edited.fraction = 0;
        } else {
            // The parser writes only the fields the text has: start from midnight.
            edited.hour = edited.minute = edited.second = 0;
            edited.fraction = 0;
            if (!ParseDicomTime(text, edited)) return false;
        }
        StoreDateTime(value, edited);
        return true;
    }
};

// A whole date/time member (DT).
struct DateTimeCodec {
    static constexpr VR kVr = VR::DT;
    static bool IsSet(const DateTimeDataType& value) {
        return value.IsSet() && !DicomDateTimeValue(value.Value()).empty();
    }
    static std::optional<std::string> Get(const DateTimeDataType& value) { return DicomDateTimeValue(value.Value()); }
    static bool Set(DateTimeDataType& value, std::string_view text) {
        if (TrimBlanks(text).empty()) {
            value.Clear();
            return true;
        }
        date_time parsed;
        if (!ParseDicomDateTime(text, parsed)) return false;
        StoreDateTime(value, parsed);
        return true;
    }
};

// ---------------------------------------------------------------------------------------------
// Entries: a member pointer of a row class bound to a codec.

template <typename Row, auto Member, typename Codec>
struct MemberAccess {
    static const Row* AsRow(const DataRow& row) { return dynamic_cast<const Row*>(&row); }

    static bool IsSet(const DataRow& row) {
        const Row* typed = AsRow(row);
        return typed != nullptr && Codec::IsSet(typed->*Member);
    }
    static std::optional<std::string> Get(const DataRow& row) {
        const Row* typed = AsRow(row);
        if (typed == nullptr || !Codec::IsSet(typed->*Member)) return std::nullopt;
        return Codec::Get(typed->*Member);
    }
    static bool Set(DataRow& row, std::string_view text) {
        Row* typed = dynamic_cast<Row*>(&row);
        return typed != nullptr && Codec::Set(typed->*Member, text);
    }
};

template <typename Row, auto Member, typename Codec>
constexpr RowAttribute Entry(std::uint16_t group, std::uint16_t element, std::string_view keyword) {
    using Access = MemberAccess<Row, Member, Codec>;
    return RowAttribute{Tag{group, element}, Codec::kVr, keyword, &Access::IsSet, &Access::Get, &Access::Set};
}

using LO = TextCodec<kLongString>;
using SH = TextCodec<kShortString>;
using ST = TextCodec<kShortText>;
using LT = TextCodec<kLongText>;
using LOs = MultiTextCodec<kLongString>;

using PatientRow = PatientDataRow;
constexpr RowAttribute kPatientAttributes[] = {
    Entry<PatientRow, &PatientRow::patient_name, PersonNameCodec>(0x0010, 0x0010, "PatientName"),
    Entry<PatientRow, &PatientRow::patient_id, LO>(0x0010, 0x0020, "PatientID"),
    Entry<PatientRow, &PatientRow::issuer_of_patient_id, LO>(0x0010, 0x0021, "IssuerOfPatientID"),
    Entry<PatientRow, &PatientRow::patient_birth_date, DatePartCodec>(0x0010, 0x0030, "PatientBirthDate"),
    Entry<PatientRow, &PatientRow::patient_sex, CodedCodec<Sex::Enum>>(0x0010, 0x0040, "PatientSex"),
    Entry<PatientRow, &PatientRow::other_patient_ids, LOs>(0x0010, 0x1000, "OtherPatientIDs"),
    Entry<PatientRow, &PatientRow::patient_comments, LT>(0x0010, 0x4000, "PatientComments"),
};

using StudyRow = StudyDataRow;
constexpr RowAttribute kStudyAttributes[] = {
    Entry<StudyRow, &StudyRow::study_date_time, DatePartCodec>(0x0008, 0x0020, "StudyDate"),
    Entry<StudyRow, &StudyRow::study_date_time, TimePartCodec>(0x0008, 0x0030, "StudyTime"),
    Entry<StudyRow, &StudyRow::accession_number, SH>(0x0008, 0x0050, "AccessionNumber"),
    Entry<StudyRow, &StudyRow::referring_physician_name, PersonNameCodec>(0x0008, 0x0090, "ReferringPhysicianName"),
    Entry<StudyRow, &StudyRow::study_description, LO>(0x0008, 0x1030, "StudyDescription"),
    Entry<StudyRow, &StudyRow::patient_age, AgeCodec>(0x0010, 0x1010, "PatientAge"),
    Entry<StudyRow, &StudyRow::patient_size, DecimalCodec>(0x0010, 0x1020, "PatientSize"),
    Entry<StudyRow, &StudyRow::patient_weight, DecimalCodec>(0x0010, 0x1030, "PatientWeight"),
    Entry<StudyRow, &StudyRow::study_instance_uid, UidCodec>(0x0020, 0x000D, "StudyInstanceUID"),
    Entry<StudyRow, &StudyRow::study_id, SH>(0x0020, 0x0010, "StudyID"),
};

using SeriesRow = SeriesDataRow;
constexpr RowAttribute kSeriesAttributes[] = {
    Entry<SeriesRow, &SeriesRow::series_date_time, DatePartCodec>(0x0008, 0x0021, "SeriesDate"),
    Entry<SeriesRow, &SeriesRow::series_date_time, TimePartCodec>(0x0008, 0x0031, "SeriesTime"),
    Entry<SeriesRow, &SeriesRow::modality, CodedCodec<Modality::Enum>>(0x0008, 0x0060, "Modality"),
    Entry<SeriesRow, &SeriesRow::series_description, LO>(0x0008, 0x103E, "SeriesDescription"),
    Entry<SeriesRow, &SeriesRow::performing_physician_name, PersonNameCodec>(0x0008, 0x1050, "PerformingPhysicianName"),
    Entry<SeriesRow, &SeriesRow::operators_name, PersonNameCodec>(0x0008, 0x1070, "OperatorsName"),
    Entry<SeriesRow, &SeriesRow::body_part_examined, CodedCodec<BodyPart::Enum>>(0x0018, 0x0015, "BodyPartExamined"),
    Entry<SeriesRow, &SeriesRow::protocol_name, LO>(0x0018, 0x1030, "ProtocolName"),
    Entry<SeriesRow, &SeriesRow::series_instance_uid, UidCodec>(0x0020, 0x000E, "SeriesInstanceUID"),
    Entry<SeriesRow, &SeriesRow::series_number, IntegerCodec>(0x0020, 0x0011, "SeriesNumber"),
    Entry<SeriesRow, &SeriesRow::laterality, CodedCodec<Laterality::Enum>>(0x0020, 0x0060, "Laterality"),
};

using EquipmentRow = EquipmentDataRow;
constexpr RowAttribute kEquipmentAttributes[] = {
    Entry<EquipmentRow, &EquipmentRow::manufacturer, LO>(0x0008, 0x0070, "Manufacturer"),
    Entry<EquipmentRow, &EquipmentRow::institution_name, LO>(0x0008, 0x0080, "InstitutionName"),
    Entry<EquipmentRow, &EquipmentRow::institution_address, ST>(0x0008, 0x0081, "InstitutionAddress"),
    Entry<EquipmentRow, &EquipmentRow::station_name, SH>(0x0008, 0x1010, "StationName"),
    Entry<EquipmentRow, &EquipmentRow::institutional_department_name, LO>(0x0008, 0x1040, "InstitutionalDepartmentName"),
    Entry<EquipmentRow, &EquipmentRow::manufacturer_model_name, LO>(0x0008, 0x1090, "ManufacturerModelName"),
    Entry<EquipmentRow, &EquipmentRow::device_serial_number, LO>(0x0018, 0x1000, "DeviceSerialNumber"),
    Entry<EquipmentRow, &EquipmentRow::software_versions, LOs>(0x0018, 0x1020, "SoftwareVersions"),
};

using InstanceRow = InstanceDataRow;
constexpr RowAttribute kInstanceAttributes[] = {
    Entry<InstanceRow, &InstanceRow::instance_creation_date_time, DatePartCodec>(0x0008, 0x0012, "InstanceCreationDate"),
    Entry<InstanceRow, &InstanceRow::instance_creation_date_time, TimePartCodec>(0x0008, 0x0013, "InstanceCreationTime"),
    Entry<InstanceRow, &InstanceRow::instance_creator_uid, UidCodec>(0x0008, 0x0014, "InstanceCreatorUID"),
    Entry<InstanceRow, &InstanceRow::sop_instance_uid, UidCodec>(0x0008, 0x0018, "SOPInstanceUID"),
    Entry<InstanceRow, &InstanceRow::content_date_time, DatePartCodec>(0x0008, 0x0023, "ContentDate"),
    Entry<InstanceRow, &InstanceRow::acquisition_date_time, DateTimeCodec>(0x0008, 0x002A, "AcquisitionDateTime"),
    Entry<InstanceRow, &InstanceRow::content_date_time, TimePartCodec>(0x0008, 0x0033, "ContentTime"),
    Entry<RawDataDataRow, &RawDataDataRow::creator_version_uid, UidCodec>(0x0008, 0x9123, "CreatorVersionUID"),
    Entry<InstanceRow, &InstanceRow::instance_number, IntegerCodec>(0x0020, 0x0013, "InstanceNumber"),
};

constexpr bool IsInTagOrder(std::span<const RowAttribute> table) {
    for (std::size_t i = 1; i < table.size(); ++i) {
        if (!(table[i - 1].tag < table[i].tag)) return false;
    }
    return true;
}
static_assert(IsInTagOrder(kPatientAttributes), "patient entries must be in ascending tag order");
static_assert(IsInTagOrder(kStudyAttributes), "study entries must be in ascending tag order");
static_assert(IsInTagOrder(kSeriesAttributes), "series entries must be in ascending tag order");
static_assert(IsInTagOrder(kEquipmentAttributes), "equipment entries must be in ascending tag order");
static_assert(IsInTagOrder(kInstanceAttributes), "instance entries must be in ascending tag order");

}  // namespace

std::string_view RowKindName(RowKind kind) noexcept {
    switch (kind) {
        case RowKind::Patient: return "Patient";
        case RowKind::Study: return "Study";
        case RowKind::Series: return "Series";
        case RowKind::Equipment: return "Equipment";
        case RowKind::Instance: return "Instance";
    }
    return {};
}

std::span<const RowAttribute> RowAttributesOf(RowKind kind) noexcept {
    switch (kind) {
        case RowKind::Patient: return kPatientAttributes;
        case RowKind::Study: return kStudyAttributes;
        case RowKind::Series: return kSeriesAttributes;
        case RowKind::Equipment: return kEquipmentAttributes;
        case RowKind::Instance: return kInstanceAttributes;
    }
    return {};
}

const RowAttribute* FindRowAttribute(RowKind kind, Tag tag) noexcept {
    const std::span<const RowAttribute> table = RowAttributesOf(kind);
    const auto found = std::lower_bound(table.begin(), table.end(), tag,
                                        [](const RowAttribute& entry, Tag wanted) { return entry.tag < wanted; });
    return found != table.end() && found->tag == tag ? &*found : nullptr;
}

std::optional<RowKind> RowKindOfTag(Tag tag) noexcept {
    for (const RowKind kind : kAllRowKinds) {
        if (FindRowAttribute(kind, tag) != nullptr) return kind;
    }
    return std::nullopt;
}

}  // namespace Lumivale::DataModule
