#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"

#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/OrchidDataElementCodec.h"

#include <charconv>
#include <cstring>
#include <exception>
#include <tuple>
#include <vector>

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

using dcm::ValueRepresentation;
using VR = dcm::ValueRepresentation;

template <typename T>
void AppendLittleEndian(std::vector<std::uint8_t>& out, T value) {
    std::uint8_t bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof(T));  // the hosts we build for are little endian
    out.insert(out.end(), bytes, bytes + sizeof(T));
}

template <typename T>
bool ParseNumber(std::string_view text, T& value) {
    text = TrimBlanks(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return !text.empty() && result.ec == std::errc{} && result.ptr == text.data() + text.size();
}

template <typename T>
bool AppendParsed(std::vector<std::uint8_t>& out, std::string_view text) {
    T value{};
    if (!ParseNumber(text, value)) return false;
    AppendLittleEndian(out, value);
    return true;
}

// Decimal text "a\b\c" as the binary values of a numeric VR.
bool EncodeNumbers(VR vr, std::string_view text, std::vector<std::uint8_t>& out) {
    if (TrimBlanks(text).empty()) return true;
    for (const std::string& field : SplitKeepingEmpty(text, '\\')) {
        bool parsed = false;
        switch (vr) {
            case VR::US: parsed = AppendParsed<std::uint16_t>(out, field); break;
            case VR::SS: parsed = AppendParsed<std::int16_t>(out, field); break;
            case VR::UL: parsed = AppendParsed<std::uint32_t>(out, field); break;
            case VR::SL: parsed = AppendParsed<std::int32_t>(out, field); break;
            case VR::FL: parsed = AppendParsed<float>(out, field); break;
            case VR::FD: parsed = AppendParsed<double>(out, field); break;
            case VR::SV: parsed = AppendParsed<std::int64_t>(out, field); break;
            case VR::UV: parsed = AppendParsed<std::uint64_t>(out, field); break;
            default: break;
        }
        if (!parsed) return false;
    }
    return true;
}

template <typename T>
void AppendDecoded(std::string& text, const std::vector<std::uint8_t>& bytes) {
    for (std::size_t at = 0; at + sizeof(T) <= bytes.size(); at += sizeof(T)) {
        T value;
        std::memcpy(&value, bytes.data() + at, sizeof(T));
        if (at != 0) text += '\\';
        char buffer[64];
        const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
        text.append(buffer, result.ptr);
    }
}

bool DecodeNumbers(VR vr, const std::vector<std::uint8_t>& bytes, std::string& text) {
    text.clear();
    switch (vr) {
        case VR::US: AppendDecoded<std::uint16_t>(text, bytes); return true;
        case VR::SS: AppendDecoded<std::int16_t>(text, bytes); return true;
        case VR::UL: AppendDecoded<std::uint32_t>(text, bytes); return true;
        case VR::SL: AppendDecoded<std::int32_t>(text, bytes); return true;
        case VR::FL: AppendDecoded<float>(text, bytes); return true;
        case VR::FD: AppendDecoded<double>(text, bytes); return true;
        case VR::SV: AppendDecoded<std::int64_t>(text, bytes); return true;
        case VR::UV: AppendDecoded<std::uint64_t>(text, bytes); return true;
        default: return false;
    }
}

std::unique_ptr<dcm::DicomDataSetElement> NewElement(dcm::Tag tag, VR vr) {
    return std::make_unique<dcm::DicomDataSetElement>(tag, vr);
}

}  // namespace

std::unique_ptr<dcm::DicomDataSetElement> MakeTextElement(dcm::Tag tag, ValueRepresentation vr,
                                                          std::string_view utf8, const MultiCharSetDataType& charset) {
    auto element = NewElement(tag, vr);
    if (utf8.empty()) return element;
    dcm::OrchidDataElementCodec codec(element.get());
    if (dcm::VRIsBinaryNumber(vr)) {
        std::vector<std::uint8_t> bytes;
        if (!EncodeNumbers(vr, utf8, bytes)) return nullptr;
        element->SetValue(std::move(bytes));
        return element;
    }
    if (vr == VR::UI) return codec.StoreUID(utf8) ? std::move(element) : nullptr;
    if (!dcm::VRCharacterSetApplies(vr)) {
        // Without a character set the value must be plain ASCII (dates, codes, numbers as text).
        if (!IsAscii(utf8)) return nullptr;
        return codec.StoreCharacters(utf8) ? std::move(element) : nullptr;
    }
    if (!IsValidUtf8(utf8)) return nullptr;
    return codec.StoreText(FromUtf8(utf8), charset) ? std::move(element) : nullptr;
}

std::unique_ptr<dcm::DicomDataSetElement> MakeUnsignedShortElement(dcm::Tag tag, std::uint16_t value) {
    auto element = NewElement(tag, VR::US);
    std::vector<std::uint8_t> bytes;
    AppendLittleEndian(bytes, value);
    element->SetValue(std::move(bytes));
    return element;
}

std::unique_ptr<dcm::DicomDataSetElement> MakeUnsignedLongElement(dcm::Tag tag, std::uint32_t value) {
    auto element = NewElement(tag, VR::UL);
    std::vector<std::uint8_t> bytes;
    AppendLittleEndian(bytes, value);
    element->SetValue(std::move(bytes));
    return element;
}

bool FetchElementText(const dcm::DicomDataSetElement& element, const MultiCharSetDataType& charset, std::string& utf8) {
    utf8.clear();
    const dcm::OrchidDataElementCodec codec(&element);
    if (dcm::VRIsBinaryNumber(element.vr)) {
        std::vector<std::uint8_t> bytes;
        return element.value.Load(bytes) && DecodeNumbers(element.vr, bytes, utf8);
    }
    if (element.vr == VR::UI) return codec.FetchUID(utf8);
    if (!dcm::VRCharacterSetApplies(element.vr)) return codec.FetchCharacters(utf8);
    std::u16string wide;
    if (!codec.FetchText(wide, charset)) return false;
    std::optional<std::string> text = TryToUtf8(wide);
    if (!text) return false;
    utf8 = std::move(*text);
    return true;
}

bool FetchUnsignedShort(const dcm::DicomDataSetElement& element, std::uint16_t& value) {
    std::vector<std::uint8_t> bytes;
    if (!element.value.Load(bytes) || bytes.size() < sizeof value) return false;
    value = static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
    return true;
}

bool FetchUnsignedLong(const dcm::DicomDataSetElement& element, std::uint32_t& value) {
    std::vector<std::uint8_t> bytes;
    if (!element.value.Load(bytes) || bytes.size() < sizeof value) return false;
    value = std::uint32_t{bytes[0]} | (std::uint32_t{bytes[1]} << 8) | (std::uint32_t{bytes[2]} << 16) |
            (std::uint32_t{bytes[3]} << 24);
    return true;
}

bool InsertCodeSequence(dcm::DicomDataSet& target, dcm::Tag sequenceTag, std::string_view value,
                        std::string_view scheme, std::string_view meaning) {
    using VR = dcm::ValueRepresentation;
    auto sequence = std::make_unique<dcm::DicomDataSetSequenceElement>(sequenceTag);
    dcm::DicomDataSet& code = sequence->AppendItem();
    const MultiCharSetDataType ascii;
    for (const auto& [codeTag, vr, text] : {std::tuple{dcm::Tags::CodeValue, VR::SH, value},
                                            std::tuple{dcm::Tags::CodingSchemeDesignator, VR::SH, scheme},
                                            std::tuple{dcm::Tags::CodeMeaning, VR::LO, meaning}}) {
        auto element = MakeTextElement(codeTag, vr, text, ascii);
        if (!element || !code.Insert(std::move(element))) return false;
    }
    return target.Insert(std::move(sequence));
}

}  // namespace Lumivale::DataModule::DataAdapterModule
