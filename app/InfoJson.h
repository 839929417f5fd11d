#pragma once
// The JSON object that `info --format json` prints about a packed file: the same facts as the XML
// document, plus the content's size and the attributes that identify the instance.

#include "app/Payload.h"

#include <ostream>

namespace Dicapsule {

// Write one object, indented by two spaces, with a line feed after it: "originalname",
// "commandline", "size", "references" (objects with "studyinstanceuid", "seriesinstanceuid",
// "sopinstanceuid" and, when given, "sopclassuid") and "instance" (by DICOM keyword). Text that is
// not UTF-8 is written with U+FFFD in place of its bad bytes.
void WriteInfoJson(std::ostream& out, const PayloadFacts& facts);

}  // namespace Dicapsule
