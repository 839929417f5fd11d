// Decoding of element bytes under a Specific Character Set (DecodeText of EncodedText.h).

#include "Foundations/DataModule/CharSet/CharSetRepertoires.h"
#include "Foundations/DataModule/CharSet/EncodedText.h"
#include "Foundations/DataModule/CharSet/TextDelimiters.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule {

namespace {

constexpr const char* kModule = "Module CharSet";
constexpr char kEscape = '\x1B';
constexpr char16_t kReplacement = u'\uFFFD';
// The longest character of the whole-value sets (UTF-8 and GB18030) in bytes.
constexpr std::size_t kLongestWholeValueCharacter = 4;

class Iso2022Decoder {
public:
    // A lenient decoder replaces what a strict one refuses (see DecodeTextLeniently).
    Iso2022Decoder(const ResolvedCharSets& resolved, TextValueKind kind, bool lenient = false)
        : resolved_(resolved),
          lenient_(lenient),
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
            if (used != 0) {
                offset += used;
                continue;
            }
            if (!lenient_) return false;
            text += kReplacement;
            fallback_ = DecodeFallback::Replaced;
            ++offset;
        }
        return true;
    }

    // The strongest fallback a lenient decoding used.
    DecodeFallback Fallback() const { return fallback_; }

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
        if (g1_ == nullptr && lenient_ && !DeclaresG1()) {
            // No set was declared for these bytes: they are most likely ISO 8859-1.
            text += static_cast<char16_t>(static_cast<std::uint8_t>(bytes[offset]));
            if (fallback_ == DecodeFallback::None) fallback_ = DecodeFallback::UndeclaredAsLatin1;
            return 1;
        }
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

    bool DeclaresG1() const {
        for (const Repertoire& repertoire : resolved_.repertoires) {
            if (repertoire.g1 != nullptr) return true;
        }
        return false;
    }

    bool IsDeclared(const CodeElement* element) const {
        for (const Repertoire& repertoire : resolved_.repertoires) {
            if (repertoire.g0 == element || repertoire.g1 == element) return true;
        }
        return false;
    }

    const ResolvedCharSets& resolved_;
    bool lenient_;
    DecodeFallback fallback_ = DecodeFallback::None;
    TextValueKind kind_;
    const CodeElement* initialG0_;
    const CodeElement* initialG1_;
    const CodeElement* g0_;
    const CodeElement* g1_;
    IconvConverters converters_;
};

// A whole-value set's bytes, character by character: each character is the shortest run of bytes
// that converts; a byte that starts none becomes U+FFFD.
DecodeFallback DecodeWholeValueLeniently(std::string_view bytes, const char* iconvName, std::u16string& text) {
    IconvConverters converters;
    IconvConverter* converter = converters.Get(NativeUtf16IconvName(), iconvName);
    DecodeFallback fallback = DecodeFallback::None;
    std::string converted;
    for (std::size_t offset = 0; offset < bytes.size();) {
        std::size_t used = 0;
        for (std::size_t size = 1; size <= kLongestWholeValueCharacter && offset + size <= bytes.size(); ++size) {
            if (converter != nullptr && converter->Convert(bytes.substr(offset, size), converted) &&
                AppendUtf16Bytes(converted, text)) {
                used = size;
                break;
            }
        }
        if (used == 0) {
            text += kReplacement;
            fallback = DecodeFallback::Replaced;
            used = 1;
        }
        offset += used;
    }
    return fallback;
}

}  // namespace

DecodeFallback DecodeTextLeniently(std::string_view bytes, const MultiCharSetDataType& charset, TextValueKind kind,
                                   std::u16string& text) {
    if (DecodeText(bytes, charset, kind, text)) return DecodeFallback::None;
    text.clear();
    ResolvedCharSets resolved;
    ResolveCharSets(charset, true, resolved);  // never fails when decoding
    if (resolved.wholeValueIconvName != nullptr) return DecodeWholeValueLeniently(bytes, resolved.wholeValueIconvName, text);
    Iso2022Decoder decoder(resolved, kind, true);
    decoder.Decode(bytes, text);
    return decoder.Fallback();
}

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
