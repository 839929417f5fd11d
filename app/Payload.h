#pragma once
// The payload of a packed file: the wrapped file and the facts of its wrapping, kept in the raw
// data instance's custom data under fixed keys.

#include "app/ReferenceRecord.h"
#include "Foundations/DataModule/Rows/CustomDataStore.h"
#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
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
    // An Encapsulated Document: the extension its MIME type gives, which names the output when no
    // name is stored (documents of other toolkits store none).
    std::string document_extension;
};

// Outcomes of reading a payload.
// text_unreadable: a stored text (name, command line, references) could not be read from the file.
// bad_document: an Encapsulated Document's recorded length exceeds its value, or its end cannot be read.
enum class PayloadReadResult { success, load_failed, not_packed, bad_reference_text, text_unreadable, bad_document };

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

// Read the facts of an Encapsulated Document instance: its document is the content (not_packed when
// it is missing or empty), its custom data, when it has any, gives the name, command line and
// references; documents of other toolkits have no name.
PayloadReadResult ExtractDocumentPayload(const Lumivale::DataModule::EncapsulatedDocumentDataRow& document,
                                         bool want_content, PayloadFacts& facts);

// Load a packed file (UTF-8 path) and extract its payload: the custom data of a Raw Data instance,
// the document of an Encapsulated Document instance. Without want_content the content value is
// never read from the file.
PayloadReadResult read_payload(const std::string& path, bool want_content, PayloadFacts& facts);

}  // namespace Dicapsule
