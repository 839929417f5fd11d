#pragma once
// The payload of a packed file: the wrapped file and the facts of its wrapping, kept in the raw
// data instance's custom data under fixed keys.

#include "app/PayloadParts.h"
#include "app/ReferenceRecord.h"
#include "Foundations/DataModule/Rows/CustomDataStore.h"
#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Values/ByteBuffer.h"
#include "Portability/Misc/OpenFile.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Dicapsule {

inline constexpr std::string_view kPackedFileNameKey = "Dicapsule.PackedFile.Name";
inline constexpr std::string_view kPackedFileContentKey = "Dicapsule.PackedFile.Content";
// The SHA-256 of the content as written: 64 lower-case hexadecimal characters.
inline constexpr std::string_view kPackedFileSha256Key = "Dicapsule.PackedFile.SHA256";
inline constexpr std::size_t kSha256HexDigits = 64;
inline constexpr std::string_view kCommandLineKey = "Dicapsule.CommandLine";
// A payload beyond one value is split into parts, one per instance; each part also records, as
// decimal text unless said otherwise: its index (from 1) and the count of parts, its offset in the
// payload, the payload's size, the payload's SHA-256 (as the part's digest) and a UID shared by
// the set of parts. A payload that fits one value records none of them.
inline constexpr std::string_view kPartIndexKey = "Dicapsule.PackedFile.Part";
inline constexpr std::string_view kPartCountKey = "Dicapsule.PackedFile.Parts";
inline constexpr std::string_view kPartOffsetKey = "Dicapsule.PackedFile.PartOffset";
inline constexpr std::string_view kTotalSizeKey = "Dicapsule.PackedFile.TotalSize";
inline constexpr std::string_view kTotalSha256Key = "Dicapsule.PackedFile.TotalSHA256";
inline constexpr std::string_view kPartSetUidKey = "Dicapsule.PackedFile.SetUID";
inline constexpr std::string_view kInstanceReferencesKey = "Dicapsule.InstanceReferences";

// The largest payload a packed file can carry: its value, and the item and sequence around it,
// must keep 32-bit DICOM lengths (0xFFFFFFFE at most once padded); 16 MiB is left for the other
// custom data items (name, command line, references) and the element headers.
inline constexpr std::uint64_t kMaxPayloadBytes = 0xFFFFFFFEull - (16ull << 20);

// The attributes that say which instance a packed file is, as UTF-8 DICOM text (empty when the
// file does not hold one).
struct PackedInstance {
    std::string sop_class_uid;
    std::string sop_instance_uid;
    std::string study_instance_uid;
    std::string series_instance_uid;
    std::string patient_id;
    std::string patient_name;
    std::string transfer_syntax_uid;
};

// What a packed file says about its payload.
struct PayloadFacts {
    std::string name;                         // original file name, UTF-8
    std::string command_line;                 // the recorded pack command line
    std::vector<ReferenceRecord> references;  // in stored order
    Lumivale::DataModule::ByteBuffer content;  // the wrapped bytes (often a region of the packed file)
    std::uint64_t size = 0;                   // the content's length in bytes (known without the content)
    std::string sha256;                       // the recorded digest, as stored; empty when none
    PackedInstance instance;                  // filled by read_payload
    std::optional<PartFacts> part;            // when the file holds one part of a larger payload
    // An Encapsulated Document: the extension its MIME type gives, which names the output when no
    // name is stored (documents of other toolkits store none).
    std::string document_extension;
};

// The longest stored texts a packed file may hold; a longer one is refused before it is read.
// The command line and the references text hold up to 340 references of four 64-byte UIDs with room to spare.
inline constexpr std::uint64_t kMaxStoredNameBytes = 64 * 1024;
inline constexpr std::uint64_t kMaxCommandLineBytes = 1024 * 1024;
inline constexpr std::uint64_t kMaxReferencesBytes = 1024 * 1024;
inline constexpr std::uint64_t kMaxDigestTextBytes = 1024;

// Outcomes of reading a payload.
// text_unreadable: a stored text (name, command line, references) could not be read from the file.
// *_too_long: that stored text is longer than its limit above. bad_document: an Encapsulated
// Document's recorded length exceeds its value, or its end cannot be read. bad_part: the facts of
// a part are malformed (a number that is not one, an index of 0 or beyond the count).
enum class PayloadReadResult {
    success, load_failed, not_packed, bad_reference_text, text_unreadable,
    name_too_long, command_line_too_long, references_too_long, bad_document, bad_part
};

// The SHA-256 of content as lower-case hex into hex; a region of a file (a deflated one included)
// is read in chunks. False when its bytes cannot be read, or when stop is set while they are.
bool ContentSha256(const Lumivale::DataModule::ByteBuffer& content, std::string& hex,
                   const std::atomic<bool>* stop = nullptr);

// The arguments from argv[1] on, joined by one space; an argument holding a space is put between
// double quotes, nothing else is escaped.
std::string RecordCommandLine(int argc, const char* const argv[]);

// Fill the store: name, content (shared, not copied), command line, when there are any the
// references text and, with digest, the SHA-256 of the content that the writer computes. For one
// part of a larger payload, also the part's facts; with digest, the whole payload's SHA-256 is a
// placeholder filled in once all parts are written.
void store_payload(Lumivale::DataModule::CustomDataStore& store, const Lumivale::DataModule::ByteBuffer& content,
                   const std::string& name, const std::string& command_line,
                   const std::vector<ReferenceRecord>& references, bool digest,
                   const std::optional<PartFacts>& part = std::nullopt);

// Read the facts back from a store already loaded from a file: not_packed unless the name is
// present and not empty and the content is present (an empty content is an empty file);
// bad_reference_text when a stored reference is malformed. The content is handed over only when
// want_content is set; its size and digest always are.
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

// The same for a packed file already open (the copy of a piped input, for one).
PayloadReadResult read_payload(const std::shared_ptr<const Portability::OpenFile>& file, bool want_content,
                               PayloadFacts& facts);

}  // namespace Dicapsule
