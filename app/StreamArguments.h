#pragma once
// "-" as a file name: the standard input for --input, the standard output for --output. A file
// that is really named "-" is still reached as "./-".

#include "Foundations/DataModule/Values/ByteBuffer.h"
#include "Portability/Misc/InputFile.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <string_view>

namespace Dicapsule {

// The name that stands for a standard stream.
inline constexpr std::string_view kStandardStreamArgument = "-";

// The name a payload read from the standard input is stored under unless --name gives one.
inline constexpr std::string_view kStandardInputName = "stdin";

// True when the path given on the command line is "-".
bool IsStandardStream(const boost::filesystem::path& path);

// Open the input of the command line: the standard input for "-", else the path (a pipe or a
// device copied to a scratch file as it arrives, up to max_size bytes).
Portability::InputFile::Status OpenInput(const boost::filesystem::path& path, Portability::InputFile& input,
                                         std::uint64_t max_size);

// Write the whole content to the standard output, in steps reported as progress; false when the
// content cannot be read or the standard output takes it no more.
bool WriteStandardOutput(const Lumivale::DataModule::ByteBuffer& content);

}  // namespace Dicapsule
