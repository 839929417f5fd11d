#pragma once
// The XML document that `info` prints about a packed file.

#include "app/Payload.h"

#include <ostream>

namespace Dicapsule {

// Write <orchid type="Dicapsule"> with its <parameters> (original name, command line, size and,
// when recorded, SHA-256, of the whole payload; for a part of one, also its index and the count) and, when there are references, its <references>, indented by one tab
// per level, UTF-8 without byte-order mark.
void WriteInfoDocument(std::ostream& out, const PayloadFacts& facts);

}  // namespace Dicapsule
