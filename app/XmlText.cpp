#include "app/XmlText.h"

#include <cstdint>

namespace Dicapsule {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool IsXmlChar(std::uint32_t c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

// The length of the well-formed UTF-8 sequence at the start of text (its code point in c), or 0.
std::size_t DecodeOne(std::string_view text, std::uint32_t& c) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t lead = byte(0);
    std::size_t length = 0;
    std::uint32_t min = 0;
    if (lead < 0x80) return c = lead, 1;
    if (lead >= 0xC2 && lead <= 0xDF) length = 2, min = 0x80, c = lead & 0x1F;
    else if (lead >= 0xE0 && lead <= 0xEF) length = 3, min = 0x800, c = lead & 0x0F;
    else if (lead >= 0xF0 && lead <= 0xF4) length = 4, min = 0x10000, c = lead & 0x07;
    else return 0;
    if (text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
        c = (c << 6) | (byte(i) & 0x3F);
    }
    // Overlong forms, surrogates and code points beyond U+10FFFF are not well-formed.
    if (c < min || (c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) return 0;
    return length;
}

}  // namespace

std::string XmlSafeText(std::string_view text) {
    std::string safe;
    safe.reserve(text.size());
    while (!text.empty()) {
        std::uint32_t c = 0;
        const std::size_t length = DecodeOne(text, c);
        if (length == 0) {
            safe += kReplacement;
            text.remove_prefix(1);
            continue;
        }
        if (IsXmlChar(c)) safe.append(text.substr(0, length));
        else safe += kReplacement;
        text.remove_prefix(length);
    }
    return safe;
}

}  // namespace Dicapsule
