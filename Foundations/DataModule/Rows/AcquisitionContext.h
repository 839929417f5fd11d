#pragma once
// Items of the Acquisition Context Sequence (0040,0555): coded concepts with their values.

#include "Foundations/DataModule/Values/CoreDataType.h"
#include "Foundations/DataModule/Values/NumberDataType.h"
#include "Foundations/DataModule/Values/WStringDataType.h"

#include <string>

namespace Lumivale::DataModule {

// A coded concept: code value, coding scheme and meaning.
struct CodedConcept {
    BasicDataType<std::string> code_value;                // (0008,0100)
    BasicDataType<std::string> coding_scheme_designator;  // (0008,0102)
    WStringDataType code_meaning;                         // (0008,0104)
};

// One acquisition context item: a named concept and its text, numeric or coded value.
struct AcquisitionContextItem {
    BasicDataType<std::string> value_type;  // (0040,A040) "TEXT", "NUM", "CODE"...
    CodedConcept concept_name;              // (0040,A043) Concept Name Code Sequence
    WStringDataType text_value;             // (0040,A160)
    DecimalDataType numeric_value;          // (0040,A30A)
    CodedConcept concept_code;              // (0040,A168) Concept Code Sequence
};

}  // namespace Lumivale::DataModule
