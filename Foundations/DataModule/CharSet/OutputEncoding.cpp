#include "Foundations/DataModule/CharSet/OutputEncoding.h"

#include "Foundations/DataModule/Common/TextUtils.h"

#include <array>

namespace Lumivale::DataModule {

namespace {
constexpr std::array<std::string_view, 8> kWords = {
    "unknown", "ascii", "chinese", "hebrew", "japanese", "korean", "unicode", "western",
};
}  // namespace

OutputEncoding::Enum OutputEncodingFromWord(std::string_view word) {
    const std::string folded = ToLowerAscii(TrimBlanks(word));
    for (std::size_t i = 0; i < kWords.size(); ++i) {
        if (folded == kWords[i]) return static_cast<OutputEncoding::Enum>(i);
    }
    return OutputEncoding::unknown;
}

}  // namespace Lumivale::DataModule
