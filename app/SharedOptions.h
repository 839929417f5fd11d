#pragma once
// Every option of the tool, declared once and shared by the operations that accept it.

#include "cmdline/OptionList.h"

namespace Dicapsule::Options {

const LibCommon::OptionGroup& Input();            // --input, -i
const LibCommon::OptionGroup& UnpackInput();      // --input, -i, repeated for the parts of a payload
const LibCommon::OptionGroup& Metadata();         // --metadata, -m
const LibCommon::OptionGroup& PackOutput();       // --output, -o and --Output, -O (".dcm" wording)
const LibCommon::OptionGroup& UnpackOutput();     // --output, -o, --Output, -O and --use-original-name, -u
const LibCommon::OptionGroup& Encoding();         // --encoding, -e
const LibCommon::OptionGroup& Force();            // --force, -f
const LibCommon::OptionGroup& HackForBmPacs();    // --hackforbmpacs
const LibCommon::OptionGroup& Identifier();       // --Identifier, -I
const LibCommon::OptionGroup& Reference();        // --reference, -r (repeatable)
const LibCommon::OptionGroup& Modality();         // --Modality, -M
const LibCommon::OptionGroup& Thumbnail();        // --thumbnail, -t
const LibCommon::OptionGroup& NoDigest();         // --no-digest (pack)
const LibCommon::OptionGroup& NoVerify();         // --no-verify (unpack)
const LibCommon::OptionGroup& Name();             // --name (pack)
const LibCommon::OptionGroup& Format();           // --format (info)
const LibCommon::OptionGroup& PackClass();        // --class, -c

}  // namespace Dicapsule::Options
