#pragma once
// Where `unpack` writes the payload.

#include "app/OptionRecords.h"

#include <boost/filesystem/path.hpp>

#include <string>
#include <string_view>

namespace Dicapsule {

// True when `name` can only name a file inside a directory: not empty, not "." or "..", and
// without "/", "\" or NUL.
bool IsPlainFileName(std::string_view name);

// The output file: --output as given; else the --Output directory joined with the original name
// (use-original-name) or with the input's stem followed by the last extension of the original
// name's last component (a name stored with "/" or "\" lends only its extension).
// Throws std::runtime_error when a directory target would need an original name, or would derive a
// name, that is not a plain file name, so the output can never lead outside the chosen directory.
boost::filesystem::path ResolveUnpackOutput(const std::variant<OutputFile, OutputDirectory>& target,
                                            const boost::filesystem::path& input, const std::string& original_name);

}  // namespace Dicapsule
