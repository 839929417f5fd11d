#include "Foundations/DataModule/metadata/SequenceItemEncoding.h"

#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataStream.h"
#include "Foundations/DataModule/metadata/ElementTextCheck.h"

#include <charconv>
#include <cstring>
#include <map>

namespace Lumivale::DataModule::DataConverterModule {

namespace {

namespace Codec = DataAdapterModule::DicomCodecModule;

using VR = Codec::ValueRepresentation;

void PutU16(std::vector<std::uint8_t>& out, std::uint16_t value) {
    out.push_back(static_cast<std::uint8_t>(value & 0xFF));
    out.push_back(static_cast<std::uint8_t>(value >> 8));
}

void PutU32(std::vector<std::uint8_t>& out, std::uint32_t value) {
    PutU16(out, static_cast<std::uint16_t>(value & 0xFFFF));
    PutU16(out, static_cast<std::uint16_t>(value >> 16));
}

template <typename T>
void PutBinary(std::vector<std::uint8_t>& out, T value) {
    std::uint8_t bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof(T));  // the build targets little-endian machines only
    out.insert(out.end(), bytes, bytes + sizeof(T));
}

// The binary form of "\"-separated numbers already checked by IsValidElementText.
std::vector<std::uint8_t> BinaryNumbers(VR vr, std::string_view text) {
    std::vector<std::uint8_t> bytes;
    for (const std::string& field : SplitKeepingEmpty(text, '\\')) {
        std::string_view number = TrimBlanks(field);
        if (!number.empty() && number.front() == '+') number.remove_prefix(1);
        if (vr == VR::SV || vr == VR::UV) {  // exact: a double cannot hold every 64-bit integer
            const char* end = number.data() + number.size();
            if (vr == VR::SV) {
                std::int64_t exact = 0;
                std::from_chars(number.data(), end, exact);
                PutBinary(bytes, exact);
            } else {
                std::uint64_t exact = 0;
                std::from_chars(number.data(), end, exact);
                PutBinary(bytes, exact);
            }
            continue;
        }
        double value = 0;
        std::from_chars(number.data(), number.data() + number.size(), value);
        if (vr == VR::US) PutBinary(bytes, static_cast<std::uint16_t>(value));
        else if (vr == VR::SS) PutBinary(bytes, static_cast<std::int16_t>(value));
        else if (vr == VR::UL) PutBinary(bytes, static_cast<std::uint32_t>(value));
        else if (vr == VR::SL) PutBinary(bytes, static_cast<std::int32_t>(value));
        else if (vr == VR::FL) PutBinary(bytes, static_cast<float>(value));
        else PutBinary(bytes, value);
    }
    return bytes;
}

bool PutElement(std::vector<std::uint8_t>& out, Tag tag, VR vr,
                const std::vector<std::uint8_t>& value, std::string& error) {
    PutU16(out, tag.group);
    PutU16(out, tag.element);
    const std::string_view code = Codec::VRCode(vr);
    out.push_back(static_cast<std::uint8_t>(code[0]));
    out.push_back(static_cast<std::uint8_t>(code[1]));
    if (Codec::HasLongLengthField(vr)) {
        if (value.size() >= 0xFFFFFFFFull) {
            error = "a sequence value is too long";
            return false;
        }
        PutU16(out, 0);
        PutU32(out, static_cast<std::uint32_t>(value.size()));
    } else {
        if (value.size() > 0xFFFE) {
            error = "a " + std::string(code) + " value in a sequence is longer than 65534 bytes";
            return false;
        }
        PutU16(out, static_cast<std::uint16_t>(value.size()));
    }
    out.insert(out.end(), value.begin(), value.end());
    return true;
}

bool EncodeItems(const std::vector<DicomXmlItem>& items, unsigned depth, std::vector<std::uint8_t>& out,
                 std::string& error);

// One item of a sequence nested `depth` levels deep (1 for a top-level sequence).
bool EncodeItem(const DicomXmlItem& item, unsigned depth, std::vector<std::uint8_t>& out, std::string& error) {
    // Elements are written in tag order whatever the document order; a later one replaces an earlier one.
    std::map<Tag, std::pair<VR, std::vector<std::uint8_t>>> encoded;
    for (const DicomXmlElement& element : item.elements) {
        if (!IsValidElementText(element.vr, element.value)) {
            error = element.name + " \"" + element.value + "\" is not a valid " + std::string(Codec::VRCode(element.vr)) + " value";
            return false;
        }
        std::vector<std::uint8_t> value;
        if (Codec::VRIsBinaryNumber(element.vr)) {
            value = BinaryNumbers(element.vr, element.value);
        } else {
            value.assign(element.value.begin(), element.value.end());
            if (value.size() % 2 != 0) value.push_back(element.vr == VR::UI ? 0 : ' ');
        }
        encoded[element.tag] = {element.vr, std::move(value)};
    }
    for (const DicomXmlSequenceElement& sequence : item.sequences) {
        std::vector<std::uint8_t> value;
        if (!EncodeItems(sequence.items, depth + 1, value, error)) return false;
        encoded[sequence.tag] = {VR::SQ, std::move(value)};
    }
    std::vector<std::uint8_t> body;
    for (const auto& [tag, element] : encoded) {
        if (!PutElement(body, tag, element.first, element.second, error)) return false;
    }
    if (body.size() >= 0xFFFFFFFFull) {
        error = "a sequence item is too long";
        return false;
    }
    PutU16(out, 0xFFFE);
    PutU16(out, 0xE000);
    PutU32(out, static_cast<std::uint32_t>(body.size()));
    out.insert(out.end(), body.begin(), body.end());
    return true;
}

bool EncodeItems(const std::vector<DicomXmlItem>& items, unsigned depth, std::vector<std::uint8_t>& out,
                 std::string& error) {
    // Deeper sequences would make a file that no reader of ours (nor several others) accepts.
    if (depth > Codec::kMaxSequenceDepth) {
        error = "sequences are nested deeper than " + std::to_string(Codec::kMaxSequenceDepth) + " levels";
        return false;
    }
    for (const DicomXmlItem& item : items) {
        if (!EncodeItem(item, depth, out, error)) return false;
    }
    return true;
}

}  // namespace

bool EncodeSequenceItems(const std::vector<DicomXmlItem>& items, std::vector<std::uint8_t>& out, std::string& error) {
    return EncodeItems(items, 1, out, error);
}

}  // namespace Lumivale::DataModule::DataConverterModule
