#pragma once
// The ISO 2022 escape sequences that designate each "ISO 2022 ..." character set into G0 or G1.

#include "Foundations/DataModule/CharSet/CharSet.h"

#include <cstddef>
#include <string_view>

namespace Lumivale::DataModule {

// The two graphic sets of ISO 2022 in use: G0 holds bytes 0x21-0x7E, G1 bytes 0xA0-0xFF.
enum class GraphicSet { G0, G1 };

// What the escape sequence at the start of a byte run designates.
struct EscapeDesignation {
    CharSet::Enum term = CharSet::Unknown;  // Unknown when the run starts with no known sequence
    GraphicSet set = GraphicSet::G0;        // the graphic set it designates into
    std::size_t length = 0;                 // bytes of the sequence, ESC included
};

// Read the escape sequence at the start of `bytes`. ESC ( B is shared by every single-byte set
// and reads as "ISO 2022 IR 6".
EscapeDesignation DesignationFromEscapeSequence(std::string_view bytes);

// The sequence that designates `term` into G0; "" when it has none or is not an ISO 2022 term.
std::string_view G0EscapeSequence(CharSet::Enum term);

// The sequence that designates `term` into G1; "" when it has none or is not an ISO 2022 term.
std::string_view G1EscapeSequence(CharSet::Enum term);

}  // namespace Lumivale::DataModule
