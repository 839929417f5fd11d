#pragma once
// Every message the operations give the user, each written once: the command line's usage errors,
// the outcomes of the library calls (the conversion engine's for pack, the payload reader's for
// unpack and info) and the operations' own checks.

#include "app/ConversionEngine.h"
#include "app/Payload.h"
#include "app/PayloadParts.h"
#include "Portability/Misc/AtomicFileWriter.h"
#include "Portability/Misc/InputFile.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <string>
#include <string_view>
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

// Pack: "Could not read \"INPUT\"."
std::string InputUnreadable(const std::string& input);
// Pack of a payload of size bytes, split into parts files, to the standard output (output empty)
// or to an output written through, such as a device, that gives the parts no names.
std::string PartsWithoutFileNames(const std::string& input, std::uint64_t size, std::size_t parts,
                                  const std::string& output);

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

// ---- the command line

// "\"VALUE\" is not a valid WHAT." (an operation, a modality, a UID, an encoding, ...).
std::string NotValid(std::string_view value, std::string_view what);

// "The --OPTION option is required."
std::string OptionRequired(std::string_view option);

// "The operation is missing."
std::string OperationMissing();

// "The --use-original-name and --output options are incompatible."
std::string OriginalNameWithOutput();

// "The --thumbnail option must be used when using the --hackforbmpacs option."
std::string HackWithoutThumbnail();

// ---- pack

// The message for an input that could not be opened for packing (status other than opened):
// size is the input's size and limit the largest payload, for an input too large.
std::string PackInputFailure(Portability::InputFile::Status status, const std::string& input, std::uint64_t size,
                             std::uint64_t limit);

// "The input file "INPUT" is not a PDF, CDA, STL, OBJ or MTL document."
std::string NotADocument(const std::string& input);

// "The UID root "ROOT" in VARIABLE is not valid."
std::string InvalidUidRoot(const std::string& root, std::string_view variable);

// "The input file "INPUT" changed while it was being packed."
std::string InputChanged(const std::string& input);

// ---- unpack and info

// "The input file "INPUT" stores a name longer than 65536 bytes." and the other stored texts
// beyond their limits; empty for the other results.
std::string StoredTextTooLong(PayloadReadResult result, const std::string& input);

// "The packed file of the input file "INPUT" does not match its SHA-256 digest."
std::string DigestMismatch(const std::string& input);

// "Could not write to the standard output."
std::string StandardOutputFailure();

// "The original file name "NAME" stored in the input file "INPUT" is not a plain file name; use the
// --output option."
std::string StoredNameNotPlain(const std::string& name, const std::string& input);

// The same for "The output file name "NAME" derived from the input file "INPUT" ...".
std::string DerivedNameNotPlain(const std::string& name, const std::string& input);

}  // namespace Dicapsule
