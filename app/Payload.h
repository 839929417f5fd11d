#pragma once
// The payload of a packed file: the wrapped file and the facts of its wrapping, kept in the raw
// data instance's custom data under fixed keys.

#include "app/ReferenceRecord.h"
#include "Foundations/DataModule/Rows/CustomDataStore.h"
#include "Foundations/DataModule/Values/ByteBuffer.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Dicapsule {

inline constexpr std::string_view kPackedFileNameKey = "Dicapsule.PackedFile.Name";
inline constexpr std::string_view kPackedFileContentKey = "Dicapsule.PackedFile.Content";
inline constexpr std::string_view kCommandLineKey = "Dicapsule.CommandLine";
inline constexpr std::string_view kInstanceReferencesKey = "Dicapsule.InstanceReferences";

// The largest payload a packed file can carry: its value, and the item and sequence around it,
// must keep 32-bit DICOM lengths (0xFFFFFFFE at most once padded); 16 MiB is left for the other
// custom data items (name, command line, references) and the element headers.
inline constexpr std::uint64_t kMaxPayloadBytes = 0xFFFFFFFEull - (16ull << 20);

// What a packed file says about its payload.
struct PayloadFacts {
    std::string name;                         // original file name, UTF-8
    std::string command_line;                 // the recorded pack command line
    std::vector<ReferenceRecord> references;  // in stored order
    Lumivale::DataModule::ByteBuffer content;  // the wrapped bytes (often a region of the packed file)
};

// The longest stored texts a packed file may hold; a longer one is refused before it is read.
// The command line and the references text hold up to 340 references of four 64-byte UIDs with room to spare.
inline constexpr std::uint64_t kMaxStoredNameBytes = 64 * 1024;
inline constexpr std::uint64_t kMaxCommandLineBytes = 1024 * 1024;
inline constexpr std::uint64_t kMaxReferencesBytes = 1024 * 1024;

// Outcomes of reading a payload.
// text_unreadable: a stored text (name, command line, references) could not be read from the file.
// *_too_long: that stored text is longer than its limit above.
enum class PayloadReadResult {
    success, load_failed, not_packed, bad_reference_text, text_unreadable,
    name_too_long, command_line_too_long, references_too_long
};

// The user's message for a stored text beyond its limit ("The input file "x" stores a name longer
// than 65536 bytes."); empty for the other results.
std::string StoredTextTooLongMessage(PayloadReadResult result, const std::string& input);

// The arguments from argv[1] on, joined by one space; an argument holding a space is put between
// double quotes, nothing else is escaped.
std::string RecordCommandLine(int argc, const char* const argv[]);

// Fill the store: name, content (shared, not copied), command line and, when there are any, the
// references text.
void store_payload(Lumivale::DataModule::CustomDataStore& store, const Lumivale::DataModule::ByteBuffer& content,
                   const std::string& name, const std::string& command_line,
                   const std::vector<ReferenceRecord>& references);

// Read the facts back from a store already loaded from a file: not_packed unless both the name and
// the content are present and not empty; bad_reference_text when a stored reference is malformed.
// The content is handed over only when want_content is set.
PayloadReadResult ExtractPayload(const Lumivale::DataModule::CustomDataStore& store, bool want_content,
                                 PayloadFacts& facts);

// Load a packed file (UTF-8 path) and extract its payload. Without want_content the content value
// is never read from the file.
PayloadReadResult read_payload(const std::string& path, bool want_content, PayloadFacts& facts);

}  // namespace Dicapsule
