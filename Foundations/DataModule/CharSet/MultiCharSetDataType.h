#pragma once
// The value of the Specific Character Set attribute: CharSet values at positions 0, 1, ...,
// each either set or empty, written as their terms joined with "\".

#include "Foundations/DataModule/CharSet/CharSet.h"
#include "Foundations/DataModule/CharSet/OutputEncoding.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Lumivale::DataModule {

class MultiCharSetDataType {
public:
    // A value with no positions.
    MultiCharSetDataType() = default;

    // The character set the tool writes for an --encoding choice; unknown gives no positions.
    explicit MultiCharSetDataType(OutputEncoding::Enum encoding);

    // Parse an attribute text: split at "\", read each non-blank part as a term (blank parts stay
    // empty), then complete the first position (see Complete).
    static MultiCharSetDataType FromText(std::string_view text);

    // Number of positions, empty ones included.
    std::size_t Count() const { return positions_.size(); }

    // True when no position holds a value.
    bool IsEmpty() const;

    // True when the position is empty or beyond Count().
    bool IsEmpty(std::size_t position) const;

    // The value at a position; Unknown when it is empty or beyond Count().
    CharSet::Enum Get(std::size_t position) const;

    // Set a position, adding empty positions before it when needed.
    void Set(std::size_t position, CharSet::Enum value);

    // Make a position empty (positions beyond Count() are already empty).
    void Clear(std::size_t position);

    // Remove every position.
    void Reset() { positions_.clear(); }

    // The term of a position: "" when it is empty, Unknown or the default repertoire.
    std::string_view Term(std::size_t position) const;

    // The terms of all positions joined with "\" ("" when there are no positions).
    std::string ToText() const;

    // Give a parsed value its first position: the default repertoire when nothing is set; otherwise,
    // when position 0 is empty, "ISO 2022 IR 6", except before "ISO 2022 IR 149", where the empty
    // first value of the Korean form becomes the default repertoire.
    void Complete();

    // Same positions with the same set/empty states and values.
    bool operator==(const MultiCharSetDataType& other) const = default;

private:
    struct Position {
        CharSet::Enum value = CharSet::Unknown;  // Unknown whenever empty, so that == holds
        bool empty = true;
        bool operator==(const Position& other) const = default;
    };
    std::vector<Position> positions_;
};

}  // namespace Lumivale::DataModule
