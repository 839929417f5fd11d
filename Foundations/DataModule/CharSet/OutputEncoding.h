#pragma once
// The tool's choice of output character set, named by the --encoding word.

#include <cstdint>
#include <string_view>

namespace Lumivale::DataModule {

struct OutputEncoding {
    enum Enum : std::uint32_t {
        unknown = 0,  // not given (or not recognised): keep the metadata's character set
        ascii = 1,
        chinese = 2,
        hebrew = 3,
        japanese = 4,
        korean = 5,
        unicode = 6,
        western = 7,
    };
};

// Trim " \t\r\n", lower-case, and compare with the encoding words; any other word gives unknown.
OutputEncoding::Enum OutputEncodingFromWord(std::string_view word);

}  // namespace Lumivale::DataModule
