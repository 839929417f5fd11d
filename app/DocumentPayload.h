#pragma once
// The payload of an Encapsulated Document instance, whoever wrote it: the Encapsulated Document
// value cut to its Encapsulated Document Length, or, in files without one, with a single trailing
// pad byte removed where the format's own end shows that it is padding.

#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Values/ByteBuffer.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Dicapsule {

// How many of the value's last bytes the pad rule looks at.
inline constexpr std::uint64_t kDocumentTailBytes = 64;

enum class DocumentContentResult {
    found,        // content holds the document (possibly empty)
    missing,      // no Encapsulated Document value
    bad_length,   // the recorded length exceeds the value
    unreadable,   // the end of the value could not be read
};

// The length of a document stored as `stored` bytes of a value whose last bytes are `tail`, when
// no length was recorded: stored less one when the last byte is padding after the format's end
// (a NUL after a PDF's "%%EOF", a NUL or space after an XML document's closing ">", line ends
// allowed in between), stored otherwise.
std::uint64_t UnpaddedDocumentLength(std::span<const std::uint8_t> tail, std::uint64_t stored, std::string_view mimeType);

// The document's bytes as a buffer sharing the instance's value (a file region stays one).
DocumentContentResult DocumentContent(const Lumivale::DataModule::EncapsulatedDocumentDataRow& document,
                                      Lumivale::DataModule::ByteBuffer& content);

// The extension (with its dot) that a document of this instance takes: that of its MIME type's
// class, else that of its SOP class; "" when neither is known.
std::string DocumentExtension(const Lumivale::DataModule::EncapsulatedDocumentDataRow& document);

}  // namespace Dicapsule
