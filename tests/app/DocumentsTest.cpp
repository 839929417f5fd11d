// The Encapsulated Document rules of the app: which class a file to pack belongs to, and how much
// of a stored document value is the document when no length was recorded.

#include "app/DocumentPayload.h"
#include "app/DocumentType.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace Dicapsule;
using Lumivale::DataModule::SOPClass;

std::vector<std::uint8_t> Bytes(std::string_view text) { return {text.begin(), text.end()}; }

// A binary STL header with the given facet count, followed by `body` bytes.
std::vector<std::uint8_t> Stl(std::uint32_t facets, std::size_t body) {
    std::vector<std::uint8_t> bytes(80, 's');
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(facets >> shift));
    bytes.resize(bytes.size() + body, 0);
    return bytes;
}

TEST(DocumentType, SignatureBeforeExtension) {
    const std::string cda = "<?xml version=\"1.0\"?><!-- note --><ClinicalDocument xmlns=\"urn:hl7-org:v3\">"
                            "<id root=\"2.16.840.1\" extension=\"7\"/><title>";
    const struct { const char* id; std::vector<std::uint8_t> head; std::uint64_t size; const char* name; SOPClass::Enum expected; } cases[] = {
        {"pdf by content", Bytes("%PDF-1.7\n"), 9, "scan.bin", SOPClass::EncapsulatedPDF},
        {"pdf extension alone", Bytes("PDF-1.7"), 7, "a.PDF", SOPClass::unknown},
        {"binary stl", Stl(2, 100), 184, "m.dat", SOPClass::EncapsulatedSTL},
        {"binary stl starting with solid", [] { auto b = Stl(1, 50); b[0] = 's'; return b; }(), 134, "m.stl", SOPClass::EncapsulatedSTL},
        {"stl count off by one facet", Stl(3, 100), 184, "m.stl", SOPClass::unknown},
        {"ascii stl", Bytes("solid cube\nendsolid cube\n"), 25, "cube.STL", SOPClass::unknown},
        {"cda cut short", Bytes(cda), 1 << 20, "note.txt", SOPClass::EncapsulatedCDA},
        {"cda with prefix", Bytes("<h:ClinicalDocument xmlns:h=\"urn:hl7-org:v3\"/>"), 46, "n", SOPClass::EncapsulatedCDA},
        {"prefix not declared", Bytes("<h:ClinicalDocument xmlns=\"urn:hl7-org:v3\"/>"), 44, "n", SOPClass::unknown},
        {"other namespace", Bytes("<ClinicalDocument xmlns=\"urn:other\"/>"), 37, "n.xml", SOPClass::unknown},
        {"obj by extension", Bytes("v 0 0 0\n"), 8, "dir.x/Model.OBJ", SOPClass::EncapsulatedOBJ},
        {"mtl by extension", Bytes("newmtl a\n"), 9, "m.mtl", SOPClass::EncapsulatedMTL},
        {"empty obj", {}, 0, "m.obj", SOPClass::unknown},
        {"dot file", Bytes("v"), 1, ".obj", SOPClass::unknown},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        const auto detected = DetectDocument(c.head, c.size, c.name);
        EXPECT_EQ(detected ? detected->sop_class : SOPClass::unknown, c.expected);
    }
    EXPECT_EQ(DetectDocument(Bytes(cda), 1 << 20, "n")->hl7_instance_identifier, "2.16.840.1^7");
}

TEST(DocumentPayload, PadIsRemovedOnlyAfterTheFormatsEnd) {
    const struct { const char* id; std::string tail; const char* mime; std::uint64_t expected; } cases[] = {
        {"pdf nul after eof", std::string("%%EOF\n\0", 7), "application/pdf", 6},
        {"pdf nul after eof crlf", std::string("%%EOF\r\n\0", 8), " APPLICATION/PDF ", 7},
        {"pdf nul elsewhere", std::string("stream\0", 7), "application/pdf", 7},
        {"pdf space after eof", "%%EOF ", "application/pdf", 6},
        {"xml nul", std::string("</a>\0", 5), "text/XML", 4},
        {"xml space after line end", "</a>\n ", "text/xml", 5},
        {"xml space inside text", "</a>x ", "text/XML", 6},
        {"xml pad in a pdf", std::string("</a>\0", 5), "application/pdf", 5},
        {"stl never trimmed", std::string("%%EOF\0", 6), "model/stl", 6},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        const std::vector<std::uint8_t> tail(c.tail.begin(), c.tail.end());
        EXPECT_EQ(UnpaddedDocumentLength(tail, tail.size(), c.mime), c.expected);
    }
}

}  // namespace
