#include "Foundations/DataModule/Common/StringConversionUtils.h"

#include <cstdint>
#include <optional>
#include <stdexcept>

namespace Lumivale::DataModule {

namespace {

constexpr char32_t kMaxCodePoint = 0x10FFFF;

bool IsSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

// Decode one code point starting at `pos`, advancing `pos`; nullopt when the sequence is ill-formed.
// The bounds of the second byte rule out overlong forms, surrogates and values above U+10FFFF
// (the well-formed byte sequences of the Unicode standard, table 3-7).
std::optional<char32_t> DecodeOne(std::string_view text, std::size_t& pos) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t lead = byte(pos);
    if (lead < 0x80) {
        ++pos;
        return lead;
    }
    std::size_t length = 0;
    char32_t value = 0;
    std::uint8_t low = 0x80, high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        value = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        value = lead & 0x0F;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        value = lead & 0x07;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return std::nullopt;
    }
    if (text.size() - pos < length) return std::nullopt;
    for (std::size_t i = 1; i < length; ++i) {
        const std::uint8_t next = byte(pos + i);
        if (next < low || next > high) return std::nullopt;
        value = (value << 6) | (next & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    pos += length;
    return value;
}

void AppendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

}  // namespace

std::optional<std::string> TryToUtf8(std::u16string_view wide) {
    std::string out;
    out.reserve(wide.size());
    for (std::size_t i = 0; i < wide.size(); ++i) {
        char32_t c = wide[i];
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < wide.size() && wide[i + 1] >= 0xDC00 && wide[i + 1] <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (wide[i + 1] - 0xDC00);
            ++i;
        } else if (IsSurrogate(c)) {
            return std::nullopt;
        }
        AppendUtf8(out, c);
    }
    return out;
}

std::optional<WString> TryFromUtf8(std::string_view utf8) {
    WString out;
    out.reserve(utf8.size());
    for (std::size_t pos = 0; pos < utf8.size();) {
        const std::optional<char32_t> c = DecodeOne(utf8, pos);
        if (!c || *c > kMaxCodePoint) return std::nullopt;
        if (*c < 0x10000) {
            out += static_cast<char16_t>(*c);
        } else {
            out += static_cast<char16_t>(0xD800 + ((*c - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((*c - 0x10000) & 0x3FF));
        }
    }
    return out;
}

std::string ToUtf8(std::u16string_view wide) {
    std::optional<std::string> utf8 = TryToUtf8(wide);
    if (!utf8) throw std::runtime_error("Cannot encode to UTF-8 string.");
    return std::move(*utf8);
}

WString FromUtf8(std::string_view utf8) {
    std::optional<WString> wide = TryFromUtf8(utf8);
    if (!wide) throw std::runtime_error("Cannot decode UTF-8 string.");
    return std::move(*wide);
}

bool IsValidUtf8(std::string_view utf8) noexcept {
    for (std::size_t pos = 0; pos < utf8.size();) {
        if (!DecodeOne(utf8, pos)) return false;
    }
    return true;
}

}  // namespace Lumivale::DataModule
