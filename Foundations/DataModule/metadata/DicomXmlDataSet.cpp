#include "Foundations/DataModule/metadata/DicomXmlDataSet.h"

#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataStream.h"
#include "Foundations/DataModule/metadata/ElementTextCheck.h"
#include "Portability/Misc/DebugTrace.h"

#include <pugixml.hpp>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <initializer_list>

namespace Lumivale::DataModule::DataConverterModule {

namespace {

namespace Codec = DataAdapterModule::DicomCodecModule;
using VR = Codec::ValueRepresentation;

constexpr const char* kTraceModule = "Module DicomXmlDataSet";

// Sequences may nest as deep as the DICOM reader accepts, so that every document we take gives a
// file we can read back; the limit also bounds the reader's recursion on hostile documents.
using Codec::kMaxSequenceDepth;

// The scope elements and the rows they edit.
struct ScopeName {
    std::string_view element;
    RowKind kind;
};
constexpr ScopeName kScopeNames[] = {
    {"Patient", RowKind::Patient}, {"Study", RowKind::Study},         {"Series", RowKind::Series},
    {"Equipment", RowKind::Equipment}, {"Instance", RowKind::Instance},
};

// The person-name component attributes in DICOM order.
constexpr std::string_view kNameComponents[] = {"Family", "Given", "Middle", "Prefix", "Suffix"};

// The items of a code sequence: Code Value, Coding Scheme Designator, Coding Scheme Version, Code Meaning.
struct CodeItemAttribute {
    std::string_view attribute;
    Tag tag;
    VR vr;
    std::string_view keyword;
    bool required;
};
constexpr CodeItemAttribute kCodeItemAttributes[] = {
    {"Code", Codec::Tags::CodeValue, VR::SH, "CodeValue", true},
    {"Scheme", Codec::Tags::CodingSchemeDesignator, VR::SH, "CodingSchemeDesignator", true},
    {"Version", Codec::Tags::CodingSchemeVersion, VR::SH, "CodingSchemeVersion", false},
    {"Meaning", Codec::Tags::CodeMeaning, VR::LO, "CodeMeaning", true},
};

bool IsOneOf(VR vr, std::initializer_list<VR> vrs) {
    return std::find(vrs.begin(), vrs.end(), vr) != vrs.end();
}

bool IsHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'); }

// "(gggg,eeee)" with four hex digits each.
bool ParseTagText(std::string_view text, Tag& tag) {
    if (text.size() != 11 || text[0] != '(' || text[5] != ',' || text[10] != ')') return false;
    const std::string_view group = text.substr(1, 4);
    const std::string_view element = text.substr(6, 4);
    if (!std::all_of(group.begin(), group.end(), IsHexDigit) || !std::all_of(element.begin(), element.end(), IsHexDigit)) {
        return false;
    }
    std::from_chars(group.data(), group.data() + 4, tag.group, 16);
    std::from_chars(element.data(), element.data() + 4, tag.element, 16);
    return true;
}

// The dictionary VR as written for a value: the ambiguous ones take their usual form.
VR WrittenVr(VR vr) {
    switch (vr) {
        case VR::XS: return VR::US;
        case VR::OX: return VR::OB;
        case VR::SW: return VR::SS;
        default: return vr;
    }
}

std::string Code(VR vr) { return std::string(Codec::VRCode(vr)); }

// Reads scopes and value elements, keeping the first failure's reason.
class Reader {
public:
    explicit Reader(std::string& error) : error_(error) {}

    bool ReadOperation(const pugi::xml_node& operation, std::vector<DicomXmlScope>& scopes) {
        for (const pugi::xml_node& child : operation.children()) {
            if (child.type() != pugi::node_element) continue;
            const auto scope = std::find_if(std::begin(kScopeNames), std::end(kScopeNames),
                                            [&](const ScopeName& s) { return s.element == child.name(); });
            if (scope == std::end(kScopeNames)) return Fail(child, "is not a row scope");
            if (!AllowOnly(child, {})) return false;
            DicomXmlScope read{scope->kind, {}};
            if (!ReadContent(child, read.content)) return false;
            scopes.push_back(std::move(read));
        }
        return true;
    }

private:
    bool Fail(const pugi::xml_node& node, const std::string& reason) {
        error_ = "<" + std::string(node.name()) + "> at offset " + std::to_string(node.offset_debug()) + ": " + reason;
        LV_TRACE(kTraceModule, "Edition refused: %s", error_.c_str());
        return false;
    }

    bool AllowOnly(const pugi::xml_node& node, std::initializer_list<std::string_view> names) {
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            if (std::find(names.begin(), names.end(), attribute.name()) == names.end()) {
                return Fail(node, "unexpected attribute \"" + std::string(attribute.name()) + "\"");
            }
        }
        return true;
    }

    // The tag and VR of a Name attribute: a keyword or "(gggg,eeee)", known to the dictionary.
    bool Resolve(const pugi::xml_node& node, Tag& tag, VR& vr) {
        const std::string_view name = node.attribute("Name").value();
        const Codec::DictionaryEntry* entry = nullptr;
        if (ParseTagText(name, tag)) {
            entry = &Codec::EntryByTag(tag);
        } else {
            entry = &Codec::EntryByKeyword(name);
            tag = entry->tag;
        }
        if (name.empty() || entry->value == 0) return Fail(node, "unknown attribute name \"" + std::string(name) + "\"");
        vr = WrittenVr(entry->vr);
        return true;
    }

    bool ReadContent(const pugi::xml_node& parent, DicomXmlItem& item) {
        for (const pugi::xml_node& node : parent.children()) {
            if (node.type() == pugi::node_pcdata && !std::string_view(node.value()).empty()) {
                return Fail(parent, "text is not allowed here");
            }
            if (node.type() != pugi::node_element) continue;
            if (!ReadValueElement(node, item)) return false;
        }
        return true;
    }

    bool ReadValueElement(const pugi::xml_node& node, DicomXmlItem& item) {
        const std::string_view kind = node.name();
        if (kind == "Element") return ReadElement(node, item);
        if (kind == "Sequence") return ReadSequence(node, item);
        DicomXmlElement element;
        element.name = node.attribute("Name").value();
        if (!Resolve(node, element.tag, element.vr)) return false;
        bool read = false;
        if (kind == "String") read = ReadString(node, element);
        else if (kind == "Number") read = ReadNumber(node, element);
        else if (kind == "Boolean") read = ReadBoolean(node, element);
        else if (kind == "Code") return ReadCode(node, element, item);
        else if (kind == "Date") read = ReadDate(node, element);
        else if (kind == "Time") read = ReadTime(node, element);
        else if (kind == "DateTime") read = ReadDateTime(node, element);
        else if (kind == "Name") read = ReadName(node, element);
        else return Fail(node, "is not a value element");
        if (read) item.elements.push_back(std::move(element));
        return read;
    }

    bool RequireVr(const pugi::xml_node& node, const DicomXmlElement& element, std::initializer_list<VR> vrs) {
        if (IsOneOf(element.vr, vrs)) return true;
        return Fail(node, element.name + " has VR " + Code(element.vr) + ", which this element kind cannot set");
    }

    bool RequireValue(const pugi::xml_node& node, DicomXmlElement& element) {
        const pugi::xml_attribute value = node.attribute("Value");
        if (!value) return Fail(node, "needs a Value attribute");
        element.value = value.value();
        return true;
    }

    bool ReadString(const pugi::xml_node& node, DicomXmlElement& element) {
        return AllowOnly(node, {"Name", "Value"}) &&
               RequireVr(node, element, {VR::AE, VR::AS, VR::CS, VR::DA, VR::DS, VR::DT, VR::IS, VR::LO, VR::LT, VR::PN,
                                         VR::SH, VR::ST, VR::TM, VR::UC, VR::UI, VR::UR, VR::UT}) &&
               RequireValue(node, element);
    }

    bool ReadNumber(const pugi::xml_node& node, DicomXmlElement& element) {
        return AllowOnly(node, {"Name", "Value"}) &&
               RequireVr(node, element, {VR::IS, VR::DS, VR::US, VR::SS, VR::UL, VR::SL, VR::FL, VR::FD}) && RequireValue(node, element);
    }

    bool ReadBoolean(const pugi::xml_node& node, DicomXmlElement& element) {
        if (!AllowOnly(node, {"Name", "Value"}) || !RequireVr(node, element, {VR::CS, VR::IS, VR::US, VR::SS, VR::UL, VR::SL}) ||
            !RequireValue(node, element)) {
            return false;
        }
        const std::string word = ToLowerAscii(TrimBlanks(element.value));
        const bool is_true = word == "true" || word == "1" || word == "yes";
        if (!is_true && word != "false" && word != "0" && word != "no") return Fail(node, "Value is not a boolean");
        element.value = element.vr == VR::CS ? (is_true ? "YES" : "NO") : (is_true ? "1" : "0");
        return true;
    }

    // A coded string value, or with Code/Scheme/Meaning an item of a code sequence.
    bool ReadCode(const pugi::xml_node& node, DicomXmlElement& element, DicomXmlItem& item) {
        if (node.attribute("Value")) {
            if (!AllowOnly(node, {"Name", "Value"}) || !RequireVr(node, element, {VR::CS})) return false;
            element.value = node.attribute("Value").value();
            item.elements.push_back(std::move(element));
            return true;
        }
        if (!AllowOnly(node, {"Name", "Code", "Scheme", "Meaning", "Version"}) || !RequireVr(node, element, {VR::SQ})) {
            return false;
        }
        DicomXmlItem code_item;
        for (const CodeItemAttribute& attribute : kCodeItemAttributes) {
            const pugi::xml_attribute value = node.attribute(std::string(attribute.attribute).c_str());
            if (!value) {
                if (attribute.required) return Fail(node, "a code needs Code, Scheme and Meaning");
                continue;
            }
            code_item.elements.push_back(
                {attribute.tag, attribute.vr, value.value(), std::string(attribute.keyword)});
        }
        SequenceOf(item, element.tag, element.name).items.push_back(std::move(code_item));
        return true;
    }

    // The sequence of this tag in the item, appended when it is not there yet.
    static DicomXmlSequenceElement& SequenceOf(DicomXmlItem& item, Tag tag, const std::string& name) {
        const auto found = std::find_if(item.sequences.begin(), item.sequences.end(),
                                        [tag](const DicomXmlSequenceElement& s) { return s.tag == tag; });
        if (found != item.sequences.end()) return *found;
        item.sequences.push_back({tag, name, {}});
        return item.sequences.back();
    }

    // A decimal attribute of 1 to width digits within [min, max], written zero-padded to width.
    bool Part(const pugi::xml_node& node, const char* name, int min, int max, int width, std::string& out) {
        const std::string_view text = TrimBlanks(node.attribute(name).value());
        int value = -1;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
        if (!node.attribute(name) || text.empty() || text.size() > static_cast<std::size_t>(width) ||
            result.ec != std::errc{} || result.ptr != text.data() + text.size() || value < min || value > max) {
            return Fail(node, std::string(name) + " is missing or out of range");
        }
        char padded[8];
        std::snprintf(padded, sizeof padded, "%0*d", width, value);
        out += padded;
        return true;
    }

    bool DateParts(const pugi::xml_node& node, std::string& out) {
        return Part(node, "Year", 1, 9999, 4, out) && Part(node, "Month", 1, 12, 2, out) && Part(node, "Day", 1, 31, 2, out);
    }

    // Hour, then Minute and Second when given (Second may carry a fraction "SS.ffffff").
    bool TimeParts(const pugi::xml_node& node, std::string& out) {
        if (!Part(node, "Hour", 0, 23, 2, out)) return false;
        if (!node.attribute("Minute")) return !node.attribute("Second") || Fail(node, "Second needs Minute");
        if (!Part(node, "Minute", 0, 59, 2, out)) return false;
        if (!node.attribute("Second")) return true;
        const std::string_view second = TrimBlanks(node.attribute("Second").value());
        const std::size_t dot = second.find('.');
        const std::string_view whole = second.substr(0, dot);
        const std::string_view fraction = dot == std::string_view::npos ? std::string_view{} : second.substr(dot + 1);
        const auto digits = [](std::string_view t) { return std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; }); };
        if (whole.empty() || whole.size() > 2 || !digits(whole) || !digits(fraction) || fraction.size() > 6 ||
            (dot != std::string_view::npos && fraction.empty())) {
            return Fail(node, "Second is not seconds with an optional fraction");
        }
        out += whole.size() == 1 ? "0" + std::string(whole) : std::string(whole);
        if (!fraction.empty()) out += "." + std::string(fraction);
        return true;
    }

    bool ReadDate(const pugi::xml_node& node, DicomXmlElement& element) {
        if (!AllowOnly(node, {"Name", "Value", "Year", "Month", "Day"}) || !RequireVr(node, element, {VR::DA, VR::DT})) return false;
        if (node.attribute("Value")) return RequireValue(node, element);
        return DateParts(node, element.value);
    }

    bool ReadTime(const pugi::xml_node& node, DicomXmlElement& element) {
        if (!AllowOnly(node, {"Name", "Value", "Hour", "Minute", "Second"}) || !RequireVr(node, element, {VR::TM})) return false;
        if (node.attribute("Value")) return RequireValue(node, element);
        return TimeParts(node, element.value);
    }

    bool ReadDateTime(const pugi::xml_node& node, DicomXmlElement& element) {
        if (!AllowOnly(node, {"Name", "Value", "Year", "Month", "Day", "Hour", "Minute", "Second"}) ||
            !RequireVr(node, element, {VR::DT})) {
            return false;
        }
        if (node.attribute("Value")) return RequireValue(node, element);
        if (!DateParts(node, element.value)) return false;
        return !node.attribute("Hour") || TimeParts(node, element.value);
    }

    // One "=" group from the component attributes; components may not hold the PN delimiters.
    bool NameGroup(const pugi::xml_node& node, std::string& out) {
        std::string components[5];
        std::size_t used = 0;
        for (std::size_t i = 0; i < 5; ++i) {
            components[i] = node.attribute(std::string(kNameComponents[i]).c_str()).value();
            if (components[i].find_first_of("^=\\") != std::string::npos) {
                return Fail(node, std::string(kNameComponents[i]) + " holds a ^, = or \\");
            }
            if (!components[i].empty()) used = i + 1;
        }
        for (std::size_t i = 0; i < used; ++i) out += (i ? "^" : "") + components[i];
        return true;
    }

    bool ReadName(const pugi::xml_node& node, DicomXmlElement& element) {
        if (!RequireVr(node, element, {VR::PN})) return false;
        if (node.attribute("Value")) return AllowOnly(node, {"Name", "Value"}) && RequireValue(node, element);
        if (!AllowOnly(node, {"Name", "Family", "Given", "Middle", "Prefix", "Suffix"})) return false;
        std::string groups[3];
        if (!NameGroup(node, groups[0])) return false;
        for (const pugi::xml_node& child : node.children()) {
            if (child.type() != pugi::node_element) continue;
            const std::string_view kind = child.name();
            const std::size_t index = kind == "IdeographicName" ? 1 : kind == "PhoneticName" ? 2 : 0;
            if (index == 0) return Fail(child, "is not a name group (IdeographicName or PhoneticName)");
            if (!AllowOnly(child, {"Family", "Given", "Middle", "Prefix", "Suffix"}) || !NameGroup(child, groups[index])) {
                return false;
            }
        }
        const std::size_t used = !groups[2].empty() ? 3 : !groups[1].empty() ? 2 : 1;
        for (std::size_t i = 0; i < used; ++i) element.value += (i ? "=" : "") + groups[i];
        return true;
    }

    // <Element Tag="(gggg,eeee)" VR="XX" Value="..."/>: the VR must fit the dictionary's when the tag is known.
    bool ReadElement(const pugi::xml_node& node, DicomXmlItem& item) {
        if (!AllowOnly(node, {"Tag", "VR", "Value"})) return false;
        DicomXmlElement element;
        element.name = node.attribute("Tag").value();
        if (!ParseTagText(element.name, element.tag)) return Fail(node, "Tag \"" + element.name + "\" is not (gggg,eeee)");
        const std::string given = node.attribute("VR").value();
        element.vr = Codec::VRFromCode(given);
        if (!Codec::VRTakesText(element.vr)) return Fail(node, "VR \"" + given + "\" cannot be given as text");
        const Codec::DictionaryEntry& entry = Codec::EntryByTag(element.tag);
        if (entry.value != 0 && !VrFitsDictionary(element.vr, entry.vr)) {
            return Fail(node, element.name + " has VR " + Code(entry.vr) + ", not " + given);
        }
        if (!RequireValue(node, element)) return false;
        item.elements.push_back(std::move(element));
        return true;
    }

    static bool VrFitsDictionary(VR given, VR dictionary) {
        switch (dictionary) {
            case VR::XS: return given == VR::US || given == VR::SS;
            case VR::SW: return given == VR::SS;
            default: return given == dictionary;
        }
    }

    bool ReadSequence(const pugi::xml_node& node, DicomXmlItem& item) {
        if (!AllowOnly(node, {"Name"})) return false;
        DicomXmlElement named;
        named.name = node.attribute("Name").value();
        if (!Resolve(node, named.tag, named.vr) || !RequireVr(node, named, {VR::SQ})) return false;
        if (depth_ >= kMaxSequenceDepth) {
            return Fail(node, "sequences nest deeper than " + std::to_string(kMaxSequenceDepth) + " levels");
        }
        ++depth_;
        const bool read = ReadItems(node, SequenceOf(item, named.tag, named.name));
        --depth_;
        return read;
    }

    bool ReadItems(const pugi::xml_node& node, DicomXmlSequenceElement& sequence) {
        for (const pugi::xml_node& child : node.children()) {
            if (child.type() != pugi::node_element) continue;
            if (std::string_view(child.name()) != "Item") return Fail(child, "a Sequence holds Item elements only");
            if (!AllowOnly(child, {})) return false;
            DicomXmlItem read;
            if (!ReadContent(child, read)) return false;
            sequence.items.push_back(std::move(read));
        }
        return true;
    }

    std::string& error_;
    unsigned depth_ = 0;  // sequences open around the element being read
};

}  // namespace

bool DicomXmlDataSet::Parse(std::string_view edition_text) {
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(edition_text.data(), edition_text.size());
    if (!parsed) {
        error_ = std::string("XML error at offset ") + std::to_string(parsed.offset) + ": " + parsed.description();
        LV_TRACE(kTraceModule, "Edition refused: %s", error_.c_str());
        scopes_.clear();
        return false;
    }
    return Read(document.document_element());
}

bool DicomXmlDataSet::Read(const pugi::xml_node& operation) {
    scopes_.clear();
    error_.clear();
    Reader reader(error_);
    if (reader.ReadOperation(operation, scopes_)) return true;
    scopes_.clear();
    return false;
}

}  // namespace Lumivale::DataModule::DataConverterModule
