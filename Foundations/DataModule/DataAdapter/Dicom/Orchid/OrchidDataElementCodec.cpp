#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/OrchidDataElementCodec.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

#include "Foundations/DataModule/CharSet/EncodedText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr const char* kModule = "OrchidDataElementCodec";

template <typename T>
void AppendUnit(std::vector<std::uint8_t>& out, T value) {
    std::uint8_t bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof(T));
    out.insert(out.end(), bytes, bytes + sizeof(T));
}

template <typename T>
void ReadUnits(const std::vector<std::uint8_t>& bytes, std::vector<T>& out) {
    for (std::size_t at = 0; at + sizeof(T) <= bytes.size(); at += sizeof(T)) {
        T value;
        std::memcpy(&value, bytes.data() + at, sizeof(T));
        out.push_back(value);
    }
}

std::vector<std::string> Split(std::string_view text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t at = 0; at <= text.size(); ++at) {
        if (at == text.size() || text[at] == '\\') {
            parts.emplace_back(text.substr(start, at - start));
            start = at + 1;
        }
    }
    return parts;
}

std::string Trimmed(std::string text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
    const auto first = text.find_first_not_of(' ');
    return first == std::string::npos ? std::string() : text.substr(first);
}

std::string JoinDecimal(std::span<const double> values) {
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i != 0) text += '\\';
        // %.10g stays within the 16 characters of a DS value for every magnitude it prints.
        text += Portability::TraceFormat("%.10g", values[i]);
    }
    return text;
}

}  // namespace

void OrchidDataElementCodec::Replace(std::vector<std::uint8_t> bytes) {
    if (bytes.size() % 2 != 0 && VRPadsToEven(target_->vr)) bytes.push_back(VRPadByte(target_->vr));
    target_->SetValue(std::move(bytes));
}

bool OrchidDataElementCodec::AcceptsMultiValuedNumbers() const noexcept {
    return VRIsNumeric(element_->vr) && VMIsMultiValued(EntryByTag(element_->tag).vm);
}

bool OrchidDataElementCodec::StoreCharacters(std::string_view bytes) {
    if (!target_) return false;
    Replace(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    return true;
}

bool OrchidDataElementCodec::FetchCharacters(std::string& bytes) const {
    std::vector<std::uint8_t> raw;
    if (!element_ || !element_->value.Load(raw)) return false;
    bytes.assign(raw.begin(), raw.end());
    while (!bytes.empty() && (bytes.back() == ' ' || bytes.back() == '\0')) bytes.pop_back();
    return true;
}

bool OrchidDataElementCodec::StoreText(std::u16string_view text, const MultiCharSetDataType& charset) {
    if (!target_) return false;
    if (!VRCharacterSetApplies(element_->vr)) {
        std::string ascii(text.begin(), text.end());
        return StoreCharacters(ascii);
    }
    const TextValueKind kind = element_->vr == VR::PN ? TextValueKind::PersonName
                               : (element_->vr == VR::LT || element_->vr == VR::ST || element_->vr == VR::UT)
                                   ? TextValueKind::SingleValued
                                   : TextValueKind::MultiValued;
    std::string bytes;
    return EncodeText(text, charset, kind, bytes) && StoreCharacters(bytes);
}

bool OrchidDataElementCodec::FetchText(std::u16string& text, const MultiCharSetDataType& charset) const {
    std::string bytes;
    if (!FetchCharacters(bytes)) return false;
    if (!VRCharacterSetApplies(element_->vr)) {
        text.assign(bytes.begin(), bytes.end());
        return true;
    }
    const TextValueKind kind = element_->vr == VR::PN ? TextValueKind::PersonName
                               : (element_->vr == VR::LT || element_->vr == VR::ST || element_->vr == VR::UT)
                                   ? TextValueKind::SingleValued
                                   : TextValueKind::MultiValued;
    // Text is never dropped: what the declared sets cannot read is read the way other readers do,
    // and the trace says which attribute needed it.
    const DecodeFallback fallback = DecodeTextLeniently(bytes, charset, kind, text);
    if (fallback != DecodeFallback::None) {
        const DictionaryEntry& entry = EntryByTag(element_->tag);
        LV_TRACE(kModule, "TAG(%04X,%04X) %s: %s", element_->tag.group, element_->tag.element, std::string(entry.keyword).c_str(),
                 fallback == DecodeFallback::UndeclaredAsLatin1
                     ? "bytes above 0x7F without a declared character set, read as ISO_IR 100"
                     : Portability::TraceFormat("bytes invalid in '%s', read as U+FFFD", charset.ToText().c_str()).c_str());
    }
    return true;
}

bool OrchidDataElementCodec::StoreTexts(const std::vector<std::string>& values) {
    std::string joined;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i != 0) joined += VRValueDelimiter(element_ ? element_->vr : VR::Unknown);
        joined += values[i];
    }
    return StoreCharacters(joined);
}

bool OrchidDataElementCodec::FetchTexts(std::vector<std::string>& values) const {
    std::string bytes;
    if (!FetchCharacters(bytes)) return false;
    values = bytes.empty() ? std::vector<std::string>{} : Split(bytes);
    return true;
}

bool OrchidDataElementCodec::StoreIntegers(std::span<const std::int64_t> values) {
    if (!target_ || !AcceptsMultiValuedNumbers()) return false;
    std::vector<std::uint8_t> bytes;
    switch (element_->vr) {
        case VR::IS: {
            std::vector<std::string> texts;
            for (std::int64_t v : values) texts.push_back(std::to_string(v));
            return StoreTexts(texts);
        }
        case VR::SL:
            for (std::int64_t v : values) AppendUnit(bytes, static_cast<std::int32_t>(v));
            break;
        case VR::SS:
        case VR::US:
        case VR::XS:
            for (std::int64_t v : values) AppendUnit(bytes, static_cast<std::uint16_t>(v));
            break;
        default:
            LV_TRACE(kModule, "Missing implementation for VR %s", std::string(VRDisplayName(element_->vr)).c_str());
            return true;
    }
    Replace(std::move(bytes));
    return true;
}

bool OrchidDataElementCodec::FetchIntegers(std::vector<std::int64_t>& values) const {
    std::vector<std::uint8_t> bytes;
    if (!element_ || !element_->value.Load(bytes)) return false;
    values.clear();
    switch (element_->vr) {
        case VR::IS:
            for (const std::string& text : Split(std::string(bytes.begin(), bytes.end()))) {
                values.push_back(std::strtoll(Trimmed(text).c_str(), nullptr, 10));
            }
            return true;
        case VR::SL: { std::vector<std::int32_t> v; ReadUnits(bytes, v); values.assign(v.begin(), v.end()); return true; }
        case VR::SS: { std::vector<std::int16_t> v; ReadUnits(bytes, v); values.assign(v.begin(), v.end()); return true; }
        case VR::US:
        case VR::XS: { std::vector<std::uint16_t> v; ReadUnits(bytes, v); values.assign(v.begin(), v.end()); return true; }
        case VR::UL: { std::vector<std::uint32_t> v; ReadUnits(bytes, v); values.assign(v.begin(), v.end()); return true; }
        default: return false;
    }
}

bool OrchidDataElementCodec::StoreDoubles(std::span<const double> values) {
    if (!target_ || !AcceptsMultiValuedNumbers()) return false;
    std::vector<std::uint8_t> bytes;
    switch (element_->vr) {
        case VR::DS: return StoreCharacters(JoinDecimal(values));
        case VR::FL:
            for (double v : values) AppendUnit(bytes, static_cast<float>(v));
            break;
        case VR::FD:
            for (double v : values) AppendUnit(bytes, v);
            break;
        default: return false;  // other VRs take no doubles, and that is not worth a trace line
    }
    Replace(std::move(bytes));
    return true;
}

bool OrchidDataElementCodec::FetchDoubles(std::vector<double>& values) const {
    std::vector<std::uint8_t> bytes;
    if (!element_ || !element_->value.Load(bytes)) return false;
    values.clear();
    switch (element_->vr) {
        case VR::DS:
            for (const std::string& text : Split(std::string(bytes.begin(), bytes.end()))) {
                values.push_back(std::strtod(Trimmed(text).c_str(), nullptr));
            }
            return true;
        case VR::FL: { std::vector<float> v; ReadUnits(bytes, v); values.assign(v.begin(), v.end()); return true; }
        case VR::FD: ReadUnits(bytes, values); return true;
        default: return false;
    }
}

bool OrchidDataElementCodec::StoreUID(std::string_view uid) { return StoreCharacters(uid); }

bool OrchidDataElementCodec::FetchUID(std::string& uid) const { return FetchCharacters(uid); }

bool OrchidDataElementCodec::StoreBinary(std::span<const std::uint8_t> bytes) {
    if (!target_) return false;
    Replace(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    return true;
}

bool OrchidDataElementCodec::FetchBinary(std::vector<std::uint8_t>& bytes) const {
    return element_ && element_->value.Load(bytes);
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
