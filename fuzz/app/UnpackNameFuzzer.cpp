// Output names of unpack from hostile stored names: the first byte chooses the mode, the rest is
// "<input file name>\n<stored original name>". Whatever the names, a directory target must give a
// file directly inside that directory, or a refusal.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "app/UnpackOutputName.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const bool useOriginalName = (data[0] & 1) != 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t split = text.find('\n');
    const std::string inputName = split == std::string::npos ? std::string("packed.dcm") : text.substr(0, split);
    const std::string storedName = split == std::string::npos ? text : text.substr(split + 1);
    // The input names an existing file that was read, so it is a plain file name in some directory.
    if (!Dicapsule::IsPlainFileName(inputName)) return 0;

    const boost::filesystem::path directory = "/chosen/dir";
    boost::filesystem::path output;
    try {
        output = Dicapsule::ResolveUnpackOutput(Dicapsule::OutputDirectory{directory, useOriginalName},
                                                boost::filesystem::path("/input") / inputName, storedName);
    } catch (const std::runtime_error&) {
        return 0;
    }
    const std::string leaf = output.filename().string();
    if (output.parent_path() != directory || !Dicapsule::IsPlainFileName(leaf) ||
        output.lexically_normal().parent_path() != directory) {
        std::abort();
    }
    return 0;
}
