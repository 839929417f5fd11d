#pragma once
// `pack` of a payload beyond one DICOM value: one instance per part, all of one series.

#include "app/ConversionEngine.h"
#include "app/OptionRecords.h"
#include "app/PayloadParts.h"
#include "Portability/Misc/InputFile.h"

#include <vector>

namespace Dicapsule {

// Write the parts of plan (more than one) from input, each as request describes the whole payload
// but for its content, to record.output and the names PartFileName derives from it. Every name is
// checked first; the files are named only once all are written, and none is left on failure.
// Throws std::runtime_error with the user's message.
void PackParts(const PackRecord& record, ConversionRequest request, const std::vector<PayloadPart>& plan,
               const Portability::InputFile& input);

}  // namespace Dicapsule
