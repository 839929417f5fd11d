#pragma once
// The instance row of the Encapsulated Document classes (PDF, CDA, STL, OBJ, MTL).

#include "Foundations/DataModule/Rows/CustomDataStore.h"
#include "Foundations/DataModule/Rows/InstanceDataRow.h"
#include "Foundations/DataModule/Values/ByteBuffer.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Lumivale::DataModule {

// An Encapsulated Document instance; the document is its payload.
class EncapsulatedDocumentDataRow : public InstanceDataRow {
public:
    // An instance of the given Encapsulated Document class.
    explicit EncapsulatedDocumentDataRow(SOPClass::Enum sop_class_value = SOPClass::EncapsulatedPDF)
        : InstanceDataRow(sop_class_value) {}

    BasicDataType<std::string> mime_type;             // (0042,0012) MIME Type of Encapsulated Document, type 1
    WStringDataType document_title;                   // (0042,0010) Document Title, type 2
    BasicDataType<std::string> burned_in_annotation;  // (0028,0301) Burned In Annotation, type 1 ("YES"/"NO")
    ByteBuffer encapsulated_document;                 // (0042,0011) Encapsulated Document, type 1 (often a file region)
    // (0042,0015) Encapsulated Document Length as read; the writer always writes the document's length.
    std::optional<std::uint32_t> encapsulated_document_length;
    std::string hl7_instance_identifier;              // (0040,E001) HL7 Instance Identifier, type 1C (CDA)
    BasicDataType<std::string> conversion_type;       // (0008,0064) Conversion Type, type 1 (SC Equipment)
    UIDDataType frame_of_reference_uid;               // (0020,0052) Frame of Reference UID, type 1 (3D models)
    CustomDataStore custom_data;                      // the facts of the packing, as the private sequence
};

}  // namespace Lumivale::DataModule
