#pragma once
// A named table of rows that owns them.

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

namespace Lumivale::DataModule {

// Rows of type Row (or derived from it), owned, in the order they were added.
template <typename Row>
class DataTable {
public:
    // An empty table called name.
    explicit DataTable(std::string_view name) : name_(name) {}

    // The table's name.
    std::string_view Name() const noexcept { return name_; }
    // Take ownership of a row; returns it.
    Row& Add(std::unique_ptr<Row> row) {
        rows_.push_back(std::move(row));
        return *rows_.back();
    }
    // Number of rows.
    std::size_t Size() const noexcept { return rows_.size(); }
    // Row at position (no bounds check beyond the vector's).
    Row& At(std::size_t index) const { return *rows_.at(index); }
    // True when row belongs to this table.
    bool Contains(const Row& row) const {
        return std::any_of(rows_.begin(), rows_.end(), [&row](const auto& held) { return held.get() == &row; });
    }
    // The rows in order (owning pointers).
    const std::vector<std::unique_ptr<Row>>& Rows() const noexcept { return rows_; }

private:
    std::string_view name_;
    std::vector<std::unique_ptr<Row>> rows_;
};

}  // namespace Lumivale::DataModule
