#include "app/DocumentPayload.h"

#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/Enumerations/DocumentClass.h"

#include <algorithm>
#include <vector>

namespace Dicapsule {

namespace dm = Lumivale::DataModule;

namespace {

constexpr std::string_view kPdfEnd = "%%EOF";

bool IsXmlMimeType(std::string_view mime) {
    const std::string lower = dm::ToLowerAscii(dm::TrimBlanks(mime));
    return lower == "text/xml" || lower == "application/xml" || lower.ends_with("+xml");
}

bool IsPdfMimeType(std::string_view mime) { return dm::ToLowerAscii(dm::TrimBlanks(mime)) == "application/pdf"; }

// The text before the last byte, without the line ends that may follow the format's end.
std::string_view BeforePad(std::string_view tail) {
    tail.remove_suffix(1);
    while (!tail.empty() && (tail.back() == '\r' || tail.back() == '\n')) tail.remove_suffix(1);
    return tail;
}

// The last bytes of the buffer (at most kDocumentTailBytes); false when they cannot be read.
bool ReadTail(const dm::ByteBuffer& value, std::vector<std::uint8_t>& tail) {
    const std::uint64_t length = value.Length();
    const std::uint64_t count = std::min(length, kDocumentTailBytes);
    tail.resize(static_cast<std::size_t>(count));
    if (const dm::FileRegion* region = value.Region()) {
        return region->IsInsideFile() && region->file->ReadAt(tail.data(), count, region->offset + length - count);
    }
    const auto bytes = value.MemoryBytes();
    std::copy(bytes.end() - static_cast<std::ptrdiff_t>(count), bytes.end(), tail.begin());
    return true;
}

// The first `length` bytes of the value, sharing it.
dm::ByteBuffer Prefix(const dm::ByteBuffer& value, std::uint64_t length) {
    if (length == value.Length()) return value;
    if (const dm::FileRegion* region = value.Region()) return dm::ByteBuffer::OfFileRegion({region->file, region->offset, length});
    return dm::ByteBuffer::CopyOf(value.MemoryBytes().first(static_cast<std::size_t>(length)));
}

}  // namespace

std::uint64_t UnpaddedDocumentLength(std::span<const std::uint8_t> tail, std::uint64_t stored, std::string_view mimeType) {
    if (tail.empty() || stored == 0) return stored;
    const std::string_view text(reinterpret_cast<const char*>(tail.data()), tail.size());
    const char pad = text.back();
    if (IsPdfMimeType(mimeType) && pad == '\0' && BeforePad(text).ends_with(kPdfEnd)) return stored - 1;
    if (IsXmlMimeType(mimeType) && (pad == '\0' || pad == ' ') && BeforePad(text).ends_with('>')) return stored - 1;
    return stored;
}

DocumentContentResult DocumentContent(const dm::EncapsulatedDocumentDataRow& document, dm::ByteBuffer& content) {
    const dm::ByteBuffer& value = document.encapsulated_document;
    if (!value.HasBuffer()) return DocumentContentResult::missing;
    if (const auto recorded = document.encapsulated_document_length) {
        if (*recorded > value.Length()) return DocumentContentResult::bad_length;
        content = Prefix(value, *recorded);
        return DocumentContentResult::found;
    }
    std::vector<std::uint8_t> tail;
    if (!ReadTail(value, tail)) return DocumentContentResult::unreadable;
    content = Prefix(value, UnpaddedDocumentLength(tail, value.Length(), document.mime_type.ValueOr({})));
    return DocumentContentResult::found;
}

std::string DocumentExtension(const dm::EncapsulatedDocumentDataRow& document) {
    const dm::EncapsulatedDocumentClass* documentClass = dm::EncapsulatedDocumentClassOfMimeType(document.mime_type.ValueOr({}));
    if (documentClass == nullptr) documentClass = dm::EncapsulatedDocumentClassOf(document.sop_class.ValueOr(dm::SOPClass::unknown));
    return documentClass ? std::string(documentClass->extension) : std::string();
}

}  // namespace Dicapsule
