#pragma once
// An edition operation of a metadata document read as DICOM attributes: each row scope
// ("Patient", "Study", "Series", "Equipment", "Instance") with the elements it names, every value
// turned into its DICOM text form. The element kinds of the document are described in
// docs/metadata-format.md.

#include "Foundations/DataModule/Rows/ExtraElements.h"
#include "Foundations/DataModule/Rows/RowAttributes.h"

#include <string>
#include <string_view>
#include <vector>

namespace pugi {
class xml_node;
}

namespace Lumivale::DataModule::DataConverterModule {

// One attribute named by the document.
struct DicomXmlElement {
    Tag tag;     // the attribute's tag
    ValueRepresentation vr = ValueRepresentation::Unknown;  // the dictionary's, or the one an <Element> gives
    std::string value;  // DICOM text (UTF-8, values joined with "\")
    std::string name;   // how the document named it (keyword or "(gggg,eeee)"), for traces
};

struct DicomXmlSequenceElement;

// The attributes of a row scope or of one sequence item.
struct DicomXmlItem {
    std::vector<DicomXmlElement> elements;            // single attributes, in document order
    std::vector<DicomXmlSequenceElement> sequences;   // sequences, in document order
};

// A sequence attribute and its items.
struct DicomXmlSequenceElement {
    Tag tag;                  // the sequence's tag
    std::string name;                // how the document named it
    std::vector<DicomXmlItem> items; // the items in order
};

// The attributes one scope element names for its row.
struct DicomXmlScope {
    RowKind kind;          // the row the scope edits
    DicomXmlItem content;  // what it names
};

// One edition operation as row scopes.
class DicomXmlDataSet {
public:
    // Read the text of an "operation" element. False on any element, attribute or value the format
    // does not allow; the reason is in error() and in the debug trace.
    bool Parse(std::string_view edition_text);
    // Read an "operation" element of a parsed document (same rules as Parse).
    bool Read(const pugi::xml_node& operation);
    // The scopes in document order (a scope element may appear more than once).
    const std::vector<DicomXmlScope>& Scopes() const noexcept { return scopes_; }
    // Why the last Parse or Read failed ("" after success).
    const std::string& error() const noexcept { return error_; }

private:
    std::vector<DicomXmlScope> scopes_;
    std::string error_;
};

}  // namespace Lumivale::DataModule::DataConverterModule
