#include "app/DocumentType.h"

#include "Foundations/DataModule/Common/TextUtils.h"

#include <pugixml.hpp>

#include <algorithm>
#include <vector>

namespace Dicapsule {

namespace {

using Lumivale::DataModule::SOPClass;

constexpr std::string_view kPdfSignature = "%PDF-";
constexpr std::string_view kCdaRoot = "ClinicalDocument";
constexpr std::string_view kHl7Namespace = "urn:hl7-org:v3";
// Binary STL: an 80-byte header, a 32-bit little-endian facet count, then 50 bytes per facet.
constexpr std::uint64_t kStlHeaderBytes = 80;
constexpr std::uint64_t kStlFacetBytes = 50;

bool IsBinaryStl(std::span<const std::uint8_t> head, std::uint64_t size) {
    if (size < kStlHeaderBytes + 4 || head.size() < kStlHeaderBytes + 4) return false;
    const std::uint64_t facets = std::uint64_t{head[80]} | std::uint64_t{head[81]} << 8 | std::uint64_t{head[82]} << 16 |
                                 std::uint64_t{head[83]} << 24;
    return kStlHeaderBytes + 4 + facets * kStlFacetBytes == size;
}

// The prefix of a qualified XML name ("" when unqualified) and its local part.
std::pair<std::string_view, std::string_view> SplitQualifiedName(std::string_view name) {
    const std::size_t colon = name.find(':');
    if (colon == std::string_view::npos) return {{}, name};
    return {name.substr(0, colon), name.substr(colon + 1)};
}

// A CDA: an XML document whose root is ClinicalDocument in the HL7 v3 namespace. The head may cut
// the document short; the parser keeps what it read before the cut, which holds the root element.
std::optional<DetectedDocument> DetectCda(std::span<const std::uint8_t> head) {
    pugi::xml_document document;
    document.load_buffer(head.data(), head.size(), pugi::parse_default, pugi::encoding_auto);
    const pugi::xml_node root = document.document_element();
    const auto [prefix, local] = SplitQualifiedName(root.name());
    if (local != kCdaRoot) return std::nullopt;
    const std::string declaration = prefix.empty() ? std::string("xmlns") : "xmlns:" + std::string(prefix);
    if (std::string_view(root.attribute(declaration.c_str()).value()) != kHl7Namespace) return std::nullopt;

    DetectedDocument cda{SOPClass::EncapsulatedCDA, {}};
    const std::string idName = prefix.empty() ? std::string("id") : std::string(prefix) + ":id";
    if (const pugi::xml_node id = root.child(idName.c_str()); id && *id.attribute("root").value() != '\0') {
        cda.hl7_instance_identifier = id.attribute("root").value();
        if (const pugi::xml_attribute extension = id.attribute("extension"); *extension.value() != '\0') {
            cda.hl7_instance_identifier += "^" + std::string(extension.value());
        }
    }
    return cda;
}

// The last extension of the name, with its dot, in lower case; "" when none.
std::string LowerExtension(std::string_view name) {
    const std::size_t separator = name.find_last_of("/\\");
    if (separator != std::string_view::npos) name.remove_prefix(separator + 1);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    return Lumivale::DataModule::ToLowerAscii(name.substr(dot));
}

}  // namespace

std::optional<DetectedDocument> DetectDocument(std::span<const std::uint8_t> head, std::uint64_t size,
                                               std::string_view name) {
    if (size == 0) return std::nullopt;
    const std::string_view text(reinterpret_cast<const char*>(head.data()), head.size());
    if (text.starts_with(kPdfSignature)) return DetectedDocument{SOPClass::EncapsulatedPDF, {}};
    if (IsBinaryStl(head, size)) return DetectedDocument{SOPClass::EncapsulatedSTL, {}};
    if (auto cda = DetectCda(head)) return cda;
    const std::string extension = LowerExtension(name);
    if (extension == ".obj") return DetectedDocument{SOPClass::EncapsulatedOBJ, {}};
    if (extension == ".mtl") return DetectedDocument{SOPClass::EncapsulatedMTL, {}};
    return std::nullopt;
}

std::optional<DetectedDocument> DetectDocument(const Lumivale::DataModule::ByteBuffer& content, std::string_view name) {
    const std::uint64_t size = content.Length();
    const std::uint64_t headSize = std::min(size, kDocumentHeadBytes);
    if (const Lumivale::DataModule::FileRegion* region = content.Region()) {
        std::vector<std::uint8_t> head(static_cast<std::size_t>(headSize));
        if (!region->IsInsideFile() || !region->file->ReadAt(head.data(), headSize, region->offset)) return std::nullopt;
        return DetectDocument(head, size, name);
    }
    return DetectDocument(content.MemoryBytes().first(static_cast<std::size_t>(headSize)), size, name);
}

}  // namespace Dicapsule
