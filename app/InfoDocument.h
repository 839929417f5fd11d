#pragma once
// The XML document that `info` prints about a packed file.

#include "app/ReferenceRecord.h"

#include <ostream>
#include <string>
#include <vector>

namespace Dicapsule {

// Write <orchid type="Dicapsule"> with its <parameters> and, when there are references, its
// <references>, indented by one tab per level, UTF-8 without byte-order mark.
void WriteInfoDocument(std::ostream& out, const std::string& original_name, const std::string& command_line,
                       const std::vector<ReferenceRecord>& references);

}  // namespace Dicapsule
