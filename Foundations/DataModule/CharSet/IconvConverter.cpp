#include "Foundations/DataModule/CharSet/IconvConverter.h"

#include <bit>
#include <cerrno>
#include <cstring>

namespace Lumivale::DataModule {

const char* NativeUtf16IconvName() {
    // "UTF-16" alone would make iconv write a byte-order mark.
    return std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";
}

#ifndef _WIN32  // the Windows conversions are in win32/IconvConverterWin32.cpp
IconvConverter::IconvConverter(const char* toCode, const char* fromCode)
    : handle_(iconv_open(toCode, fromCode)), toCode_(toCode), fromCode_(fromCode) {}

IconvConverter::~IconvConverter() {
    if (IsOpen()) iconv_close(handle_);
}

bool IconvConverter::Convert(std::string_view in, std::string& out) {
    out.clear();
    if (!IsOpen()) return false;
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);  // back to the initial shift state

    // iconv's interface takes a non-const input pointer but never writes through it.
    char* inPtr = const_cast<char*>(in.data());
    std::size_t inLeft = in.size();
    std::string buffer(in.size() * 4 + 16, '\0');
    std::size_t written = 0;
    // One call with the input, then one without it, which writes what a stateful target needs to
    // end; each is repeated while the output buffer is too small.
    for (bool flushing : {false, true}) {
        while (true) {
            char* outPtr = buffer.data() + written;
            std::size_t outLeft = buffer.size() - written;
            const std::size_t result = flushing ? iconv(handle_, nullptr, nullptr, &outPtr, &outLeft)
                                                : iconv(handle_, &inPtr, &inLeft, &outPtr, &outLeft);
            written = static_cast<std::size_t>(outPtr - buffer.data());
            if (result != static_cast<std::size_t>(-1)) break;
            // EILSEQ: invalid input or a character the target cannot hold; EINVAL: truncated input.
            if (errno != E2BIG) return false;
            buffer.resize(buffer.size() * 2);
        }
    }
    buffer.resize(written);
    out = std::move(buffer);
    return true;
}
#endif

IconvConverter* IconvConverters::Get(const char* toCode, const char* fromCode) {
    for (const auto& converter : converters_) {
        if (converter->ToCode() == toCode && converter->FromCode() == fromCode) {
            return converter->IsOpen() ? converter.get() : nullptr;
        }
    }
    converters_.push_back(std::make_unique<IconvConverter>(toCode, fromCode));
    return converters_.back()->IsOpen() ? converters_.back().get() : nullptr;
}

std::string_view Utf16Bytes(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

bool AppendUtf16Bytes(std::string_view bytes, std::u16string& text) {
    if (bytes.size() % sizeof(char16_t) != 0) return false;
    const std::size_t start = text.size();
    text.resize(start + bytes.size() / sizeof(char16_t));
    std::memcpy(text.data() + start, bytes.data(), bytes.size());
    return true;
}

}  // namespace Lumivale::DataModule
