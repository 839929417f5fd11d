// Reads arbitrary bytes as a packed file through the payload reader, with and without the content
// (unpack and info). The two reads must agree on the name, command line and references.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "app/Payload.h"
#include "fuzz/FuzzInputFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DicapsuleFuzz::FuzzInputFile input(data, size, "payload", ".dcm");
    if (!input.Written()) return 0;
    Dicapsule::PayloadFacts withContent;
    Dicapsule::PayloadFacts withoutContent;
    const auto unpacked = Dicapsule::read_payload(input.Path(), true, withContent);
    const auto described = Dicapsule::read_payload(input.Path(), false, withoutContent);
    if (unpacked == Dicapsule::PayloadReadResult::success && described == Dicapsule::PayloadReadResult::success &&
        (withContent.name != withoutContent.name || withContent.command_line != withoutContent.command_line ||
         withContent.references.size() != withoutContent.references.size())) {
        std::abort();
    }
    return 0;
}
