#pragma once
// The grammars of the structured option values and the rules that resolve output paths.
// Grammar violations throw LibCommandLineOperation::UsageError with the user's message.

#include "app/OptionRecords.h"

#include <boost/filesystem/path.hpp>

#include <optional>
#include <string>
#include <vector>

namespace Dicapsule {

// --Identifier "[Study]:[Series]:[Instance]:[InstanceNumber]": 1 to 4 fields; empty fields leave the
// value unset; the instance number is read like atoi (leading blanks, sign, digits; else 0).
IdentifierFields ParseIdentifier(const std::string& value);

// Every --reference occurrence, in command-line order; the first malformed one is reported.
std::vector<ReferenceRecord> ParseReferenceOptions(const std::vector<std::string>& values);

// --encoding word, or the Specific Character Set term of an encoding; "unknown" and anything
// unrecognised are rejected.
Lumivale::DataModule::OutputEncoding::Enum ParseEncodingOption(const std::string& value);

// --format of info: "xml" or "json"; anything else is rejected.
InfoFormat ParseFormatOption(const std::string& value);
// --class word: "raw", "document" or "auto"; other words are rejected.
PackClass ParsePackClassOption(const std::string& value);

// A text given on the command line, unchanged. Throws "Cannot decode UTF-8 string." when malformed.
std::string TextFromUtf8(const std::string& utf8);

// A path given on the command line (UTF-8). Throws "Cannot decode UTF-8 string." when malformed.
boost::filesystem::path PathFromUtf8(const std::string& utf8);

// The pack output file: --output as given, else the --Output directory joined with the input's
// file name whose last extension is replaced by ".dcm" (appended when there is none).
boost::filesystem::path ResolvePackOutput(const std::optional<std::string>& output, const std::string& directory,
                                          const boost::filesystem::path& input);

}  // namespace Dicapsule
