#pragma once
// The standard Encapsulated Document classes: the MIME type of each one's documents, the file
// extension that goes with it and the modality its series usually carry.

#include "Foundations/DataModule/Enumerations/Modality.h"
#include "Foundations/DataModule/Enumerations/SOPClass.h"

#include <span>
#include <string_view>

namespace Lumivale::DataModule {

struct EncapsulatedDocumentClass {
    SOPClass::Enum sop_class;
    std::string_view mime_type;  // as written in (0042,0012)
    std::string_view extension;  // with its dot, lower case
    Modality::Enum modality;     // the series' modality when the metadata gives none
    bool is_model;               // a 3D model: frame of reference and manufacturing attributes apply
};

// Every class, PDF first.
std::span<const EncapsulatedDocumentClass> EncapsulatedDocumentClasses();

// The class of a SOP class, or nullptr when it is not an Encapsulated Document class.
const EncapsulatedDocumentClass* EncapsulatedDocumentClassOf(SOPClass::Enum sop_class);

// The class whose MIME type this is, ignoring case and surrounding blanks (other toolkits write
// "text/XML" as "text/xml"); nullptr when none.
const EncapsulatedDocumentClass* EncapsulatedDocumentClassOfMimeType(std::string_view mime_type);

}  // namespace Lumivale::DataModule
