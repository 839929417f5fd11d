// The Windows conversions behind IconvConverter: the iconv names the codec uses are mapped to
// Windows code pages, and every conversion goes through UTF-16 with MultiByteToWideChar and
// WideCharToMultiByte. Some code pages accept no error flags, so each result is converted back and
// compared with the input: a character that was substituted or dropped makes the conversion fail,
// as iconv's EILSEQ does.

#include "Foundations/DataModule/CharSet/IconvConverter.h"

#include <windows.h>

#include <array>
#include <cstring>
#include <limits>
#include <string_view>

namespace Lumivale::DataModule {

namespace {

constexpr unsigned kUtf16CodePage = 1200;

struct CodePageName {
    std::string_view iconvName;
    unsigned codePage;
};

constexpr std::array<CodePageName, 18> kCodePages = {{
    {"UTF-16LE", kUtf16CodePage},
    {"UTF-8", CP_UTF8},
    {"ASCII", 20127},
    {"ISO-8859-1", 28591},
    {"ISO-8859-2", 28592},
    {"ISO-8859-3", 28593},
    {"ISO-8859-4", 28594},
    {"ISO-8859-5", 28595},
    {"ISO-8859-6", 28596},
    {"ISO-8859-7", 28597},
    {"ISO-8859-8", 28598},
    {"ISO-8859-9", 28599},
    {"TIS-620", 874},
    {"EUC-JP", 20932},
    {"EUC-KR", 51949},
    {"GB18030", 54936},
    // Systems without GB18030 (wine) still have GBK, its two-byte part: text outside it fails.
    {"GB18030", 936},
    {"EUC-KR", 20949},  // the same Wansung table, on systems without 51949
}};

// The first code page of that name the system has; 0 (cannot be opened, as iconv_open refuses an
// unknown set) when it has none.
unsigned CodePageOf(std::string_view iconvName) {
    for (const CodePageName& entry : kCodePages) {
        if (entry.iconvName != iconvName) continue;
        if (entry.codePage == kUtf16CodePage || ::IsValidCodePage(entry.codePage)) return entry.codePage;
    }
    return 0;
}

bool Decode(unsigned codePage, std::string_view bytes, std::wstring& text) {
    text.clear();
    if (bytes.empty()) return true;
    if (codePage == kUtf16CodePage) {
        if (bytes.size() % sizeof(wchar_t) != 0) return false;
        text.resize(bytes.size() / sizeof(wchar_t));
        std::memcpy(text.data(), bytes.data(), bytes.size());
        return true;
    }
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max() / 2)) return false;
    const int size = static_cast<int>(bytes.size());
    DWORD flags = MB_ERR_INVALID_CHARS;
    int needed = ::MultiByteToWideChar(codePage, flags, bytes.data(), size, nullptr, 0);
    if (needed == 0 && ::GetLastError() == ERROR_INVALID_FLAGS) {
        flags = 0;
        needed = ::MultiByteToWideChar(codePage, flags, bytes.data(), size, nullptr, 0);
    }
    if (needed <= 0) return false;
    text.resize(static_cast<std::size_t>(needed));
    return ::MultiByteToWideChar(codePage, flags, bytes.data(), size, text.data(), needed) == needed;
}

bool Encode(unsigned codePage, std::wstring_view text, std::string& bytes) {
    bytes.clear();
    if (text.empty()) return true;
    if (codePage == kUtf16CodePage) {
        bytes.assign(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
        return true;
    }
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max() / 4)) return false;
    const int size = static_cast<int>(text.size());
    // UTF-8 reports lone surrogates itself; the other pages are checked by the round trip.
    const DWORD flags = codePage == CP_UTF8 ? WC_ERR_INVALID_CHARS : 0;
    const int needed = ::WideCharToMultiByte(codePage, flags, text.data(), size, nullptr, 0, nullptr, nullptr);
    if (needed <= 0) return false;
    bytes.resize(static_cast<std::size_t>(needed));
    return ::WideCharToMultiByte(codePage, flags, text.data(), size, bytes.data(), needed, nullptr, nullptr) == needed;
}

}  // namespace

IconvConverter::IconvConverter(const char* toCode, const char* fromCode)
    : toCodePage_(CodePageOf(toCode)), fromCodePage_(CodePageOf(fromCode)), toCode_(toCode), fromCode_(fromCode) {}

IconvConverter::~IconvConverter() = default;

bool IconvConverter::Convert(std::string_view in, std::string& out) {
    out.clear();
    if (!IsOpen()) return false;
    std::wstring text;
    std::string converted;
    if (!Decode(fromCodePage_, in, text) || !Encode(toCodePage_, text, converted)) return false;
    // Both directions must give back what they were given, or a character was lost on the way.
    std::wstring textAgain;
    std::string inAgain;
    if (!Decode(toCodePage_, converted, textAgain) || textAgain != text) return false;
    if (!Encode(fromCodePage_, text, inAgain) || inAgain != in) return false;
    out = std::move(converted);
    return true;
}

}  // namespace Lumivale::DataModule
