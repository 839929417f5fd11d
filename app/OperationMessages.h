#pragma once
// The user's messages for the outcomes of the library calls of the operations: the conversion
// engine's result (pack) and the payload reader's (unpack, info).

#include "app/ConversionEngine.h"
#include "app/Payload.h"
#include "Portability/Misc/AtomicFileWriter.h"

#include <boost/filesystem/path.hpp>

#include <string>

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

// "\"OUTPUT\" already exists. Use the --force option to overwrite it."
std::string AlreadyExists(const boost::filesystem::path& output);

}  // namespace Dicapsule
