#pragma once
// How a coded-string enumeration finds its DICOM terms: one constexpr table per enumeration,
// row i describing member i, row 0 the "unknown" member.

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// One row of an enumeration's term table.
struct CodedTerm {
    std::string_view term;  // the DICOM defined term (or UID) of the member
    std::string_view name;  // its readable name, used in descriptions
};

// Specialised for every coded-string enumeration E, with:
//   static E FromTerm(std::string_view term);              unknown term -> member 0
//   static std::optional<std::string_view> Term(E value);  nullopt for member 0 and out of range
//   static std::string Description(E value);
template <typename E>
struct CodedStringTraits;

// Index of the row whose term equals the text trimmed of " \t\r\n"; 0 when there is none.
std::size_t FindTermIndex(std::span<const CodedTerm> table, std::string_view term);

// The term of row index; nullopt for row 0 and beyond the table.
std::optional<std::string_view> TermAtIndex(std::span<const CodedTerm> table, std::size_t index);

// "'" term "' (" name ")"; for an index beyond the table, the name of row 0 alone.
std::string DescribeIndex(std::span<const CodedTerm> table, std::size_t index);

// Traits for an enumeration whose specialisation only supplies `static std::span<const CodedTerm> Table()`.
template <typename E>
struct TableCodedStringTraits {
    // Member whose term matches (trimmed), or member 0.
    static E FromTerm(std::string_view term) {
        return static_cast<E>(FindTermIndex(CodedStringTraits<E>::Table(), term));
    }
    // Term of a known member; nullopt for member 0 and out-of-range values.
    static std::optional<std::string_view> Term(E value) {
        return TermAtIndex(CodedStringTraits<E>::Table(), static_cast<std::size_t>(value));
    }
    // Readable description of the member.
    static std::string Description(E value) {
        return DescribeIndex(CodedStringTraits<E>::Table(), static_cast<std::size_t>(value));
    }
};

}  // namespace Lumivale::DataModule
