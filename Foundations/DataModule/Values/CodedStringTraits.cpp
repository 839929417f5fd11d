#include "Foundations/DataModule/Values/CodedStringTraits.h"

#include "Foundations/DataModule/Common/TextUtils.h"

#include <algorithm>

namespace Lumivale::DataModule {

std::size_t FindTermIndex(std::span<const CodedTerm> table, std::string_view term) {
    const std::string_view trimmed = TrimBlanks(term);
    // Row 0 is the unknown member: its term (if any, e.g. "??") maps back to 0 anyway.
    const auto found = std::find_if(table.begin(), table.end(),
                                    [trimmed](const CodedTerm& row) { return row.term == trimmed; });
    return found == table.end() ? 0 : static_cast<std::size_t>(found - table.begin());
}

std::optional<std::string_view> TermAtIndex(std::span<const CodedTerm> table, std::size_t index) {
    if (index == 0 || index >= table.size()) return std::nullopt;
    return table[index].term;
}

std::string DescribeIndex(std::span<const CodedTerm> table, std::size_t index) {
    if (table.empty()) return {};
    if (index >= table.size()) return std::string(table[0].name);
    const CodedTerm& row = table[index];
    const std::string_view term = index == 0 ? std::string_view{} : row.term;
    return "'" + std::string(term) + "' (" + std::string(row.name) + ")";
}

}  // namespace Lumivale::DataModule
