#include "Foundations/DataModule/CharSet/CharSetEscapeSequences.h"

#include <array>

namespace Lumivale::DataModule {

namespace {

struct EscapeSequenceRow {
    CharSet::Enum term;
    std::string_view g0;  // "" when the set has no G0 designation
    std::string_view g1;  // "" when the set has no G1 designation
};

constexpr std::string_view kAsciiG0 = "\x1B(B";

// Searched in order, so ESC ( B is found first as the designation of ISO 646 itself.
constexpr std::array<EscapeSequenceRow, 15> kEscapeSequences = {{
    {CharSet::ISO_2022_IR_6, kAsciiG0, ""},
    {CharSet::ISO_2022_IR_13, "\x1B(J", "\x1B)I"},
    {CharSet::ISO_2022_IR_100, kAsciiG0, "\x1B-A"},
    {CharSet::ISO_2022_IR_101, kAsciiG0, "\x1B-B"},
    {CharSet::ISO_2022_IR_109, kAsciiG0, "\x1B-C"},
    {CharSet::ISO_2022_IR_110, kAsciiG0, "\x1B-D"},
    {CharSet::ISO_2022_IR_126, kAsciiG0, "\x1B-F"},
    {CharSet::ISO_2022_IR_127, kAsciiG0, "\x1B-G"},
    {CharSet::ISO_2022_IR_138, kAsciiG0, "\x1B-H"},
    {CharSet::ISO_2022_IR_144, kAsciiG0, "\x1B-L"},
    {CharSet::ISO_2022_IR_148, kAsciiG0, "\x1B-M"},
    {CharSet::ISO_2022_IR_166, kAsciiG0, "\x1B-T"},
    {CharSet::ISO_2022_IR_87, "\x1B$B", ""},
    {CharSet::ISO_2022_IR_149, "", "\x1B$)C"},
    {CharSet::ISO_2022_IR_159, "\x1B$(D", ""},
}};

const EscapeSequenceRow* FindRow(CharSet::Enum term) {
    for (const EscapeSequenceRow& row : kEscapeSequences) {
        if (row.term == term) return &row;
    }
    return nullptr;
}

}  // namespace

EscapeDesignation DesignationFromEscapeSequence(std::string_view bytes) {
    // The sequences are prefix-free, so the first match is the only one.
    for (const EscapeSequenceRow& row : kEscapeSequences) {
        if (!row.g0.empty() && bytes.starts_with(row.g0)) return {row.term, GraphicSet::G0, row.g0.size()};
        if (!row.g1.empty() && bytes.starts_with(row.g1)) return {row.term, GraphicSet::G1, row.g1.size()};
    }
    return {};
}

std::string_view G0EscapeSequence(CharSet::Enum term) {
    const EscapeSequenceRow* row = FindRow(term);
    return row ? row->g0 : std::string_view{};
}

std::string_view G1EscapeSequence(CharSet::Enum term) {
    const EscapeSequenceRow* row = FindRow(term);
    return row ? row->g1 : std::string_view{};
}

}  // namespace Lumivale::DataModule
