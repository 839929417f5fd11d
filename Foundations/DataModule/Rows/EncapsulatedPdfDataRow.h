#pragma once
// The instance row of an Encapsulated PDF instance.

#include "Foundations/DataModule/Rows/InstanceDataRow.h"
#include "Foundations/DataModule/Values/ByteBuffer.h"

#include <string>

namespace Lumivale::DataModule {

// An Encapsulated PDF Storage instance.
class EncapsulatedPdfDataRow : public InstanceDataRow {
public:
    EncapsulatedPdfDataRow() : InstanceDataRow(SOPClass::EncapsulatedPDF) {}

    BasicDataType<std::string> mime_type{"application/pdf"};  // (0042,0012) MIME Type of Encapsulated Document, type 1
    WStringDataType document_title;                            // (0042,0010) Document Title, type 2
    BasicDataType<std::string> burned_in_annotation;           // (0028,0301) Burned In Annotation, type 1 ("YES"/"NO")
    ByteBuffer encapsulated_document;                          // (0042,0011) Encapsulated Document, type 1
};

}  // namespace Lumivale::DataModule
