#pragma once
// Which standard Encapsulated Document class a file to pack belongs to: told from its content
// where the format has a signature (PDF, CDA, binary STL), from its name's extension otherwise
// (OBJ, MTL), ignoring case.

#include "Foundations/DataModule/Enumerations/SOPClass.h"
#include "Foundations/DataModule/Values/ByteBuffer.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Dicapsule {

// How many bytes of the file's head the detection looks at: a CDA's root element and its id must
// lie within them.
inline constexpr std::uint64_t kDocumentHeadBytes = 64 * 1024;

// A file that makes a document of a standard class.
struct DetectedDocument {
    Lumivale::DataModule::SOPClass::Enum sop_class = Lumivale::DataModule::SOPClass::unknown;
    std::string hl7_instance_identifier;  // CDA: its id as root^extension, when the head shows it
};

// The class of a file of `size` bytes whose first bytes are `head` (up to kDocumentHeadBytes) and
// whose name is `name`; nullopt when it is none of them. An ASCII STL is none: only the binary
// form is a DICOM STL. An empty file is none.
std::optional<DetectedDocument> DetectDocument(std::span<const std::uint8_t> head, std::uint64_t size,
                                               std::string_view name);

// The same for the content about to be packed (its head is read from its file); nullopt also when
// the head cannot be read.
std::optional<DetectedDocument> DetectDocument(const Lumivale::DataModule::ByteBuffer& content, std::string_view name);

}  // namespace Dicapsule
