#pragma once
// Conversions between UTF-16 text and the byte forms of the DICOM character sets, through glibc iconv
// (on Windows, through the code-page functions, under the same iconv names).

#ifndef _WIN32
#include <iconv.h>
#endif

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Lumivale::DataModule {

// The iconv name of UTF-16 in the host's byte order, the form of std::u16string in memory.
const char* NativeUtf16IconvName();

// One conversion direction between two iconv character sets, opened once and reused.
class IconvConverter {
public:
    // Open the conversion from `fromCode` to `toCode`; IsOpen() tells whether iconv knows both.
    IconvConverter(const char* toCode, const char* fromCode);
    ~IconvConverter();
    IconvConverter(const IconvConverter&) = delete;
    IconvConverter& operator=(const IconvConverter&) = delete;

    // True when iconv accepted the pair of character sets.
#ifdef _WIN32
    bool IsOpen() const { return toCodePage_ != 0 && fromCodePage_ != 0; }
#else
    bool IsOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
#endif

    // Convert one complete text into `out` (replaced). False on an invalid or truncated input
    // sequence and on a character the target set cannot hold: nothing is ever substituted.
    bool Convert(std::string_view in, std::string& out);

    // The source and target names given at construction.
    std::string_view FromCode() const { return fromCode_; }
    std::string_view ToCode() const { return toCode_; }

private:
#ifdef _WIN32
    unsigned toCodePage_;
    unsigned fromCodePage_;
#else
    iconv_t handle_;
#endif
    std::string toCode_;
    std::string fromCode_;
};

// The converters one text conversion needs, opened on first use and closed with the set.
class IconvConverters {
public:
    // The converter from `fromCode` to `toCode`, or nullptr when iconv cannot open it.
    IconvConverter* Get(const char* toCode, const char* fromCode);

private:
    std::vector<std::unique_ptr<IconvConverter>> converters_;
};

// UTF-16 text as the bytes iconv reads (host byte order).
std::string_view Utf16Bytes(std::u16string_view text);

// Append bytes in host-order UTF-16 (from an iconv conversion) to wide text; false for an odd count.
bool AppendUtf16Bytes(std::string_view bytes, std::u16string& text);

}  // namespace Lumivale::DataModule
