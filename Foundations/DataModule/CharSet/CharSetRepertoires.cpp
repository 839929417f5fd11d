#include "Foundations/DataModule/CharSet/CharSetRepertoires.h"

#include "Portability/Misc/DebugTrace.h"

#include <array>

namespace Lumivale::DataModule {

namespace {

constexpr const char* kModule = "Module CharSet";

// JIS X 0201 Romaji differs from ISO 646 only at 0x5C (yen) and 0x7E (overline). It is read as
// ASCII because 0x5C must stay the backslash that separates values, as other DICOM readers do.
constexpr std::array<CodeElement, 16> kCodeElements = {{
    {CharSet::ISO_2022_IR_6, GraphicSet::G0, "ASCII", "", 1, 0x00, 0x7F},
    {CharSet::ISO_2022_IR_13, GraphicSet::G0, "ASCII", "", 1, 0x00, 0x7F},
    {CharSet::ISO_2022_IR_13, GraphicSet::G1, "EUC-JP", "\x8E", 1, 0xA1, 0xDF},
    {CharSet::ISO_2022_IR_100, GraphicSet::G1, "ISO-8859-1", "", 1, 0xA0, 0xFF},
    {CharSet::ISO_2022_IR_101, GraphicSet::G1, "ISO-8859-2", "", 1, 0xA0, 0xFF},
    {CharSet::ISO_2022_IR_109, GraphicSet::G1, "ISO-8859-3", "", 1, 0xA0, 0xFF},
    {CharSet::ISO_2022_IR_110, GraphicSet::G1, "ISO-8859-4", "", 1, 0xA0, 0xFF},
    {CharSet::ISO_2022_IR_126, GraphicSet::G1, "ISO-8859-7", "", 1, 0xA0, 0xFF},
    {CharSet::ISO_2022_IR_127, GraphicSet::G1, "ISO-8859-6", "", 1, 0xA0, 0xFF},
    {CharSet::ISO_2022_IR_138, GraphicSet::G1, "ISO-8859-8", "", 1, 0xA0, 0xFF},
    {CharSet::ISO_2022_IR_144, GraphicSet::G1, "ISO-8859-5", "", 1, 0xA0, 0xFF},
    {CharSet::ISO_2022_IR_148, GraphicSet::G1, "ISO-8859-9", "", 1, 0xA0, 0xFF},
    {CharSet::ISO_2022_IR_166, GraphicSet::G1, "TIS-620", "", 1, 0xA0, 0xFF},
    {CharSet::ISO_2022_IR_87, GraphicSet::G0, "EUC-JP", "", 2, 0xA1, 0xFE},
    {CharSet::ISO_2022_IR_149, GraphicSet::G1, "EUC-KR", "", 2, 0xA1, 0xFE},
    // JIS X 0212 is the third set of EUC-JP, reached through single shift 3 (0x8F).
    {CharSet::ISO_2022_IR_159, GraphicSet::G0, "EUC-JP", "\x8F", 2, 0xA1, 0xFE},
}};

Repertoire RepertoireOf(CharSet::Enum term) {
    const CharSet::Enum iso2022 = Iso2022Counterpart(term);
    Repertoire repertoire{term};
    // Go through the escape sequences so that the shared ESC ( B finds the one ISO 646 element.
    repertoire.g0 = FindCodeElement(DesignationFromEscapeSequence(G0EscapeSequence(iso2022)));
    repertoire.g1 = FindCodeElement(DesignationFromEscapeSequence(G1EscapeSequence(iso2022)));
    return repertoire;
}

bool IsWholeValueSet(CharSet::Enum term) { return term == CharSet::ISO_IR_192 || term == CharSet::GB18030; }

bool IsMultiByteOnly(CharSet::Enum term) {
    return term == CharSet::ISO_2022_IR_87 || term == CharSet::ISO_2022_IR_149 || term == CharSet::ISO_2022_IR_159;
}

}  // namespace

std::string_view CodeElement::Escape() const {
    return set == GraphicSet::G0 ? G0EscapeSequence(term) : G1EscapeSequence(term);
}

bool CodeElement::Encode(std::u16string_view character, IconvConverters& converters, std::string& bytes) const {
    if (IsAscii()) {
        // ESC never stands for itself: a reader would take it for a designation.
        if (character.size() != 1 || character[0] > 0x7F || character[0] == 0x1B) return false;
        bytes += static_cast<char>(character[0]);
        return true;
    }
    IconvConverter* converter = converters.Get(iconvName, NativeUtf16IconvName());
    std::string converted;
    if (converter == nullptr || !converter->Convert(Utf16Bytes(character), converted)) return false;
    if (converted.size() != prefix.size() + bytesPerChar || !std::string_view(converted).starts_with(prefix)) {
        return false;
    }
    for (std::size_t i = prefix.size(); i < converted.size(); ++i) {
        const auto byte = static_cast<std::uint8_t>(converted[i]);
        if (byte < lowest || byte > highest) return false;
        bytes += static_cast<char>(set == GraphicSet::G0 ? byte & 0x7F : byte);
    }
    return true;
}

bool CodeElement::Decode(std::string_view bytes, IconvConverters& converters, std::u16string& text) const {
    if (bytes.size() != bytesPerChar) return false;
    if (IsAscii()) {
        text += static_cast<char16_t>(static_cast<std::uint8_t>(bytes[0]) & 0x7F);
        return true;
    }
    std::string iconvForm(prefix);
    for (const char c : bytes) {
        const auto byte = static_cast<std::uint8_t>(static_cast<std::uint8_t>(c) | 0x80);
        if (byte < lowest || byte > highest) return false;
        iconvForm += static_cast<char>(byte);
    }
    IconvConverter* converter = converters.Get(NativeUtf16IconvName(), iconvName);
    std::string converted;
    return converter != nullptr && converter->Convert(iconvForm, converted) && AppendUtf16Bytes(converted, text);
}

const CodeElement* FindCodeElement(const EscapeDesignation& designation) {
    for (const CodeElement& element : kCodeElements) {
        if (element.term == designation.term && element.set == designation.set) return &element;
    }
    return nullptr;
}

bool ResolveCharSets(const MultiCharSetDataType& charset, bool forDecoding, ResolvedCharSets& resolved) {
    resolved = ResolvedCharSets{};
    const CharSet::Enum first = charset.IsEmpty(0) ? CharSet::DefaultRepertoire : charset.Get(0);
    if (IsWholeValueSet(first)) {
        resolved.wholeValueIconvName = first == CharSet::ISO_IR_192 ? "UTF-8" : "GB18030";
        if (charset.Count() > 1) LV_TRACE(kModule, "Values after '%s' ignored", CharSetTerm(first).data());
        return true;
    }
    for (std::size_t position = 0; position < charset.Count(); ++position) {
        CharSet::Enum term = position == 0 ? first : charset.Get(position);
        if (position > 0 && charset.IsEmpty(position)) continue;
        if (term == CharSet::Unknown || term >= CharSet::Count || IsWholeValueSet(term)) {
            LV_TRACE(kModule, "Character set value %zu (%s) cannot be used%s", position,
                     CharSetDescription(term).c_str(), forDecoding ? ", read as the default repertoire" : "");
            if (!forDecoding) return false;
            if (position > 0) continue;
            term = CharSet::DefaultRepertoire;
        }
        // A two-byte set cannot start a value: ISO 646 stays in G0 before it.
        if (position == 0 && IsMultiByteOnly(term)) resolved.repertoires.push_back(RepertoireOf(CharSet::ISO_2022_IR_6));
        resolved.repertoires.push_back(RepertoireOf(term));
    }
    if (resolved.repertoires.empty()) resolved.repertoires.push_back(RepertoireOf(CharSet::DefaultRepertoire));
    resolved.codeExtensions = resolved.repertoires.size() > 1 || IsIso2022CharSet(first);
    return true;
}

}  // namespace Lumivale::DataModule
