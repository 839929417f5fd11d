// Decoding of element bytes under a Specific Character Set (DecodeText of EncodedText.h).

#include "Foundations/DataModule/CharSet/CharSetRepertoires.h"
#include "Foundations/DataModule/CharSet/EncodedText.h"
#include "Foundations/DataModule/CharSet/TextDelimiters.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule {

namespace {

constexpr const char* kModule = "Module CharSet";
constexpr char kEscape = '\x1B';

class Iso2022Decoder {
public:
    Iso2022Decoder(const ResolvedCharSets& resolved, TextValueKind kind)
        : resolved_(resolved),
          kind_(kind),
          initialG0_(resolved.repertoires.front().g0),
          initialG1_(resolved.repertoires.front().g1),
          g0_(initialG0_),
          g1_(initialG1_) {}

    bool Decode(std::string_view bytes, std::u16string& text) {
        for (std::size_t offset = 0; offset < bytes.size();) {
            const auto byte = static_cast<std::uint8_t>(bytes[offset]);
            const std::size_t used = byte == static_cast<std::uint8_t>(kEscape) ? ReadEscape(bytes, offset)
                                     : byte < 0x80                              ? ReadLow(bytes, offset, text)
                                                                                : ReadHigh(bytes, offset, text);
            if (used == 0) return false;
            offset += used;
        }
        return true;
    }

private:
    // Each Read* returns the bytes it used, or 0 (after a trace line) when they are malformed.

    std::size_t ReadEscape(std::string_view bytes, std::size_t offset) {
        if (!resolved_.codeExtensions) {
            LV_TRACE(kModule, "Escape sequence at offset %zu in a character set without code extensions", offset);
            return 0;
        }
        const EscapeDesignation designation = DesignationFromEscapeSequence(bytes.substr(offset));
        const CodeElement* element = FindCodeElement(designation);
        if (element == nullptr) {
            LV_TRACE(kModule, "Unknown escape sequence at offset %zu", offset);
            return 0;
        }
        if (!IsDeclared(element)) {
            LV_TRACE(kModule, "Escape sequence at offset %zu designates undeclared '%s'", offset,
                     CharSetTerm(element->term).data());
        }
        (element->set == GraphicSet::G0 ? g0_ : g1_) = element;
        return designation.length;
    }

    // Bytes below 0x80: a character of G0, or a control or space, which every G0 leaves as ASCII.
    std::size_t ReadLow(std::string_view bytes, std::size_t offset, std::u16string& text) {
        const auto byte = static_cast<std::uint8_t>(bytes[offset]);
        if (g0_->bytesPerChar == 2 && byte > 0x20 && byte < 0x7F) return ReadCharacter(g0_, bytes, offset, text);
        if (IsTextDelimiter(byte, kind_)) {
            g0_ = initialG0_;
            g1_ = initialG1_;
        }
        text += static_cast<char16_t>(byte);
        return 1;
    }

    std::size_t ReadHigh(std::string_view bytes, std::size_t offset, std::u16string& text) {
        if (g1_ == nullptr) {
            LV_TRACE(kModule, "Byte 0x%02X at offset %zu with no character set in G1",
                     unsigned{static_cast<std::uint8_t>(bytes[offset])}, offset);
            return 0;
        }
        return ReadCharacter(g1_, bytes, offset, text);
    }

    std::size_t ReadCharacter(const CodeElement* element, std::string_view bytes, std::size_t offset,
                              std::u16string& text) {
        const std::size_t size = element->bytesPerChar;
        if (size > bytes.size() - offset || !element->Decode(bytes.substr(offset, size), converters_, text)) {
            LV_TRACE(kModule, "Bytes at offset %zu are no character of '%s'", offset, CharSetTerm(element->term).data());
            return 0;
        }
        return size;
    }

    bool IsDeclared(const CodeElement* element) const {
        for (const Repertoire& repertoire : resolved_.repertoires) {
            if (repertoire.g0 == element || repertoire.g1 == element) return true;
        }
        return false;
    }

    const ResolvedCharSets& resolved_;
    TextValueKind kind_;
    const CodeElement* initialG0_;
    const CodeElement* initialG1_;
    const CodeElement* g0_;
    const CodeElement* g1_;
    IconvConverters converters_;
};

}  // namespace

bool DecodeText(std::string_view bytes, const MultiCharSetDataType& charset, TextValueKind kind,
                std::u16string& text) {
    text.clear();
    ResolvedCharSets resolved;
    if (!ResolveCharSets(charset, true, resolved)) return false;

    if (resolved.wholeValueIconvName != nullptr) {
        IconvConverters converters;
        IconvConverter* converter = converters.Get(NativeUtf16IconvName(), resolved.wholeValueIconvName);
        std::string converted;
        if (converter != nullptr && converter->Convert(bytes, converted) && AppendUtf16Bytes(converted, text)) {
            return true;
        }
        LV_TRACE(kModule, "Bytes are not valid %s", resolved.wholeValueIconvName);
        text.clear();
        return false;
    }
    Iso2022Decoder decoder(resolved, kind);
    if (decoder.Decode(bytes, text)) return true;
    text.clear();
    return false;
}

}  // namespace Lumivale::DataModule
