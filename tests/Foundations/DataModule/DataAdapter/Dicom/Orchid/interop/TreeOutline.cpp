#include "TreeOutline.h"

#include <charconv>
#include <cstring>
#include <sstream>
#include <vector>

#include "Foundations/DataModule/Common/TextUtils.h"

namespace DicomInterop {
namespace {

using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;
using Bytes = std::vector<std::uint8_t>;

struct OutlineLine {
    int number;          // 1-based line number, for messages
    std::size_t indent;  // leading spaces
    std::string text;    // the line without its indentation
};

template <typename T>
void AppendLittleEndian(Bytes& out, T value) {
    std::uint8_t raw[sizeof(T)];
    std::memcpy(raw, &value, sizeof(T));
    out.insert(out.end(), raw, raw + sizeof(T));  // the host is little endian, as the value holder expects
}

bool ParseHex(std::string_view text, Bytes& out) {
    if (text.size() % 2 != 0) return false;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        unsigned byte = 0;
        const auto [end, error] = std::from_chars(text.data() + i, text.data() + i + 2, byte, 16);
        if (error != std::errc() || end != text.data() + i + 2) return false;
        out.push_back(static_cast<std::uint8_t>(byte));
    }
    return true;
}

template <typename T>
bool ParseNumber(std::string_view text, Bytes& out, int base = 10) {
    T value{};
    const char* end = text.data() + text.size();
    std::from_chars_result result{};
    if constexpr (std::is_floating_point_v<T>) {
        result = std::from_chars(text.data(), end, value);
    } else {
        result = std::from_chars(text.data(), end, value, base);
    }
    if (result.ec != std::errc() || result.ptr != end) return false;
    AppendLittleEndian(out, value);
    return true;
}

// Each "\"-separated number in the VR's binary form.
bool ParseNumbers(ValueRepresentation vr, const std::string& text, Bytes& out) {
    for (const std::string& part : Lumivale::DataModule::SplitKeepingEmpty(text, '\\')) {
        bool parsed = false;
        switch (vr) {
            case VR::US: parsed = ParseNumber<std::uint16_t>(part, out); break;
            case VR::SS: parsed = ParseNumber<std::int16_t>(part, out); break;
            case VR::UL: parsed = ParseNumber<std::uint32_t>(part, out); break;
            case VR::SL: parsed = ParseNumber<std::int32_t>(part, out); break;
            case VR::FL: parsed = ParseNumber<float>(part, out); break;
            case VR::FD: parsed = ParseNumber<double>(part, out); break;
            case VR::AT:
                parsed = part.size() == 8 && ParseNumber<std::uint16_t>(std::string_view(part).substr(0, 4), out, 16) &&
                         ParseNumber<std::uint16_t>(std::string_view(part).substr(4), out, 16);
                break;
            default: return false;
        }
        if (!parsed) return false;
    }
    return true;
}

bool ParseValue(ValueRepresentation vr, const std::string& text, Bytes& out) {
    if (text.rfind("hex:", 0) == 0) return ParseHex(std::string_view(text).substr(4), out);
    if (VRIsCharacterData(vr)) {
        out.assign(text.begin(), text.end());
        return true;
    }
    return !text.empty() && ParseNumbers(vr, text, out);
}

class OutlineParser {
public:
    explicit OutlineParser(std::vector<OutlineLine> lines) : lines_(std::move(lines)) {}

    bool Parse(DicomDataSet& root, std::string& error) {
        if (!ParseSet(root, 0)) {
            error = error_;
            return false;
        }
        if (next_ < lines_.size()) {
            error = Where() + "unexpected indentation";
            return false;
        }
        return true;
    }

private:
    std::string Where() const {
        return "line " + std::to_string(next_ < lines_.size() ? lines_[next_].number : 0) + ": ";
    }

    bool Fail(const std::string& message) {
        error_ = Where() + message;
        return false;
    }

    // Elements at exactly this indentation belong to dataSet.
    bool ParseSet(DicomDataSet& dataSet, std::size_t indent) {
        while (next_ < lines_.size() && lines_[next_].indent == indent) {
            if (!ParseElement(dataSet, indent)) return false;
        }
        return true;
    }

    bool ParseElement(DicomDataSet& dataSet, std::size_t indent) {
        const std::string& text = lines_[next_].text;
        unsigned group = 0;
        unsigned element = 0;
        char vrCode[3] = {};
        int consumed = 0;
        if (std::sscanf(text.c_str(), "(%4x,%4x) %2c%n", &group, &element, vrCode, &consumed) != 3) {
            return Fail("expected \"(gggg,eeee) VR value\"");
        }
        const ValueRepresentation vr = VRFromCode(vrCode);
        if (vr == VR::Unknown) return Fail("unknown VR");
        const auto g = static_cast<std::uint16_t>(group);
        const auto e = static_cast<std::uint16_t>(element);
        if (vr == VR::SQ) {
            auto sequence = std::make_unique<DicomDataSetSequenceElement>(g, e);
            DicomDataSetSequenceElement& items = *sequence;
            dataSet.Insert(std::move(sequence));
            ++next_;
            return ParseItems(items, indent + 2);
        }
        const std::size_t start = text.size() > static_cast<std::size_t>(consumed) ? consumed + 1 : text.size();
        Bytes bytes;
        if (!ParseValue(vr, text.substr(start), bytes)) return Fail("value does not fit the VR");
        dataSet.Insert(std::make_unique<DicomDataSetElement>(g, e, vr, std::move(bytes)));
        ++next_;
        return true;
    }

    bool ParseItems(DicomDataSetSequenceElement& sequence, std::size_t indent) {
        while (next_ < lines_.size() && lines_[next_].indent == indent) {
            if (lines_[next_].text != "item") return Fail("expected \"item\"");
            ++next_;
            if (!ParseSet(sequence.AppendItem(), indent + 2)) return false;
        }
        return true;
    }

    std::vector<OutlineLine> lines_;
    std::size_t next_ = 0;
    std::string error_;
};

}  // namespace

bool ParseTreeOutline(const std::string& text, DicomDataSet& dataSet, std::string& error) {
    std::vector<OutlineLine> lines;
    std::istringstream input(text);
    std::string line;
    for (int number = 1; std::getline(input, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const std::size_t indent = line.find_first_not_of(' ');
        if (indent == std::string::npos || line[indent] == '#') continue;
        lines.push_back({number, indent, line.substr(indent)});
    }
    dataSet = DicomDataSet();
    return OutlineParser(std::move(lines)).Parse(dataSet, error);
}

}  // namespace DicomInterop
