#pragma once
// The user's messages for the outcomes of the library calls of the operations: the conversion
// engine's result (pack) and the payload reader's (unpack, info).

#include "app/ConversionEngine.h"
#include "app/Payload.h"
#include "app/PayloadParts.h"
#include "Portability/Misc/AtomicFileWriter.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace Dicapsule {

// The message of a conversion that did not write the instance ("" for ConversionResult::written).
std::string ConversionFailure(ConversionResult result, const ConversionRequest& request);

// Which operation read the payload: they differ only in the message of an unexpected failure.
enum class PayloadReader { unpack, info };

// The message for a reader outcome other than success; input is the path as the user gave it (UTF-8).
std::string PayloadReadFailure(PayloadReadResult result, const std::string& input, PayloadReader reader);

// The message of an unpack whose output could not be written, by the writer's failure; the trace
// has the system's reason and the path.
std::string UnpackWriteFailure(Portability::WriteFailure failure, const std::string& input,
                               const boost::filesystem::path& output);

// Pack: "Could not read \"INPUT\"."; "The input file \"INPUT\" changed while it was being packed."
std::string InputUnreadable(const std::string& input);
std::string InputChanged(const std::string& input);
// Pack of a payload of size bytes, split into parts files, to the standard output.
std::string PartsToStandardOutput(const std::string& input, std::uint64_t size, std::size_t parts);

// Unpack: the payload as written does not match the whole digest recorded for it.
std::string PayloadMismatch(const std::string& input);
// Unpack: the part of index held by path does not match its own digest.
std::string PartMismatch(const std::string& input, unsigned index, const std::string& path);
// Unpack: why the parts found for the input's set do not make the whole payload.
std::string PartSetFailure(const PartSetCheck& check, const std::vector<FoundPart>& parts, unsigned count,
                           const std::string& input);
// Unpack: an input given beside the first that is no part of its set.
std::string ForeignPart(const std::string& other, const std::string& input);
// Unpack: several inputs of which the first holds a whole payload.
std::string WholeWithOthers(const std::string& input);

// "\"OUTPUT\" already exists. Use the --force option to overwrite it."
std::string AlreadyExists(const boost::filesystem::path& output);

}  // namespace Dicapsule
