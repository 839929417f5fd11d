// Encoding of wide text under a Specific Character Set (EncodeText of EncodedText.h).

#include "Foundations/DataModule/CharSet/CharSetRepertoires.h"
#include "Foundations/DataModule/CharSet/EncodedText.h"
#include "Foundations/DataModule/CharSet/TextDelimiters.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule {

namespace {

constexpr const char* kModule = "Module CharSet";

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// The code units of the character at `offset`: one unit, or a surrogate pair; empty when the
// text holds an unpaired surrogate there.
std::u16string_view CharacterAt(std::u16string_view text, std::size_t offset) {
    const char16_t unit = text[offset];
    if (IsHighSurrogate(unit)) {
        if (offset + 1 < text.size() && IsLowSurrogate(text[offset + 1])) return text.substr(offset, 2);
        return {};
    }
    if (IsLowSurrogate(unit)) return {};
    return text.substr(offset, 1);
}

// The G0 and G1 elements in effect while a value is written.
struct Designations {
    const CodeElement* g0;
    const CodeElement* g1;
};

class Iso2022Encoder {
public:
    Iso2022Encoder(const ResolvedCharSets& resolved, TextValueKind kind)
        : resolved_(resolved),
          kind_(kind),
          initial_{resolved.repertoires.front().g0, resolved.repertoires.front().g1},
          active_(initial_) {}

    bool Encode(std::u16string_view text, std::string& bytes) {
        for (std::size_t offset = 0; offset < text.size();) {
            const std::u16string_view character = CharacterAt(text, offset);
            if (character.empty()) {
                LV_TRACE(kModule, "Unpaired surrogate U+%04X at position %zu", unsigned{text[offset]}, offset);
                return false;
            }
            if (character.size() == 1 && IsTextDelimiter(character[0], kind_)) {
                ReturnToInitial(bytes);
                bytes += static_cast<char>(character[0]);
            } else if (!EncodeCharacter(character, bytes)) {
                LV_TRACE(kModule, "Character U+%04X at position %zu is in no declared character set",
                         static_cast<unsigned>(character.size() == 2 ? SupplementaryCodePoint(character) : character[0]),
                         offset);
                return false;
            }
            offset += character.size();
        }
        ReturnToInitial(bytes);
        return true;
    }

private:
    static char32_t SupplementaryCodePoint(std::u16string_view pair) {
        return 0x10000 + ((char32_t{pair[0]} - 0xD800) << 10) + (char32_t{pair[1]} - 0xDC00);
    }

    // Try the declared sets in order and switch to the first element that holds the character.
    bool EncodeCharacter(std::u16string_view character, std::string& bytes) {
        std::string encoded;
        for (const Repertoire& repertoire : resolved_.repertoires) {
            for (const CodeElement* element : {repertoire.g0, repertoire.g1}) {
                encoded.clear();
                if (element == nullptr || !element->Encode(character, converters_, encoded)) continue;
                Designate(element, bytes);
                bytes += encoded;
                return true;
            }
        }
        return false;
    }

    void Designate(const CodeElement* element, std::string& bytes) {
        const CodeElement*& slot = element->set == GraphicSet::G0 ? active_.g0 : active_.g1;
        if (slot == element) return;
        bytes.append(element->Escape());
        slot = element;
    }

    // Make the first declared set active again. G0 is designated back explicitly; G1 only when the
    // first set has a G1 element to name (otherwise the next use designates it again).
    void ReturnToInitial(std::string& bytes) {
        if (active_.g0 != initial_.g0) bytes.append(initial_.g0->Escape());
        if (active_.g1 != initial_.g1 && initial_.g1 != nullptr) bytes.append(initial_.g1->Escape());
        active_ = initial_;
    }

    const ResolvedCharSets& resolved_;
    TextValueKind kind_;
    Designations initial_;
    Designations active_;
    IconvConverters converters_;
};

}  // namespace

bool EncodeText(std::u16string_view text, const MultiCharSetDataType& charset, TextValueKind kind,
                std::string& bytes) {
    bytes.clear();
    ResolvedCharSets resolved;
    if (!ResolveCharSets(charset, false, resolved)) return false;

    if (resolved.wholeValueIconvName != nullptr) {
        IconvConverters converters;
        IconvConverter* converter = converters.Get(resolved.wholeValueIconvName, NativeUtf16IconvName());
        if (converter != nullptr && converter->Convert(Utf16Bytes(text), bytes)) return true;
        LV_TRACE(kModule, "Text cannot be written in %s", resolved.wholeValueIconvName);
        bytes.clear();
        return false;
    }
    Iso2022Encoder encoder(resolved, kind);
    if (encoder.Encode(text, bytes)) return true;
    bytes.clear();
    return false;
}

}  // namespace Lumivale::DataModule
