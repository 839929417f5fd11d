#pragma once
// Multi-valued attribute values: member values indexed by position or by a component
// enumeration, each member keeping its own empty flag.

#include "Foundations/DataModule/Common/TextUtils.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Lumivale::DataModule {

// Values of type V (a CoreDataType) indexed by I (an unsigned position or an X::Enum).
template <typename V, typename I = unsigned int>
class CoreMultiDataType {
public:
    CoreMultiDataType() = default;
    CoreMultiDataType(const CoreMultiDataType&) = default;
    CoreMultiDataType(CoreMultiDataType&&) noexcept = default;
    CoreMultiDataType& operator=(const CoreMultiDataType&) = default;
    CoreMultiDataType& operator=(CoreMultiDataType&&) noexcept = default;
    virtual ~CoreMultiDataType() = default;

    // Number of positions held: one past the highest position ever written.
    std::size_t Count() const noexcept { return values_.size(); }
    // True when no position holds a set value.
    bool IsEmpty() const noexcept {
        for (const V& value : values_) {
            if (value.IsSet()) return false;
        }
        return true;
    }
    // The value at index; an empty value beyond the positions held.
    const V& Get(I index) const {
        static const V empty_value{};
        const std::size_t position = static_cast<std::size_t>(index);
        return position < values_.size() ? values_[position] : empty_value;
    }
    // The writable value at index; missing positions up to it are created empty.
    V& At(I index) {
        const std::size_t position = static_cast<std::size_t>(index);
        if (position >= values_.size()) values_.resize(position + 1);
        return values_[position];
    }
    // Set the value at index.
    void Set(I index, typename V::value_type value) { At(index).Set(std::move(value)); }
    // Drop every position.
    void Clear() noexcept { values_.clear(); }
    // All positions in order.
    const std::vector<V>& Values() const noexcept { return values_; }

    // Equal when the set values are equal position by position (trailing empty positions ignored).
    friend bool operator==(const CoreMultiDataType& a, const CoreMultiDataType& b) {
        const std::size_t count = a.values_.size() > b.values_.size() ? a.values_.size() : b.values_.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (!(a.Get(static_cast<I>(i)) == b.Get(static_cast<I>(i)))) return false;
        }
        return true;
    }

protected:
    std::vector<V> values_;
};

// Multi-valued coded strings (V is a CodedStringDataType) with the "\"-separated text form.
template <typename V, typename I = unsigned int>
class MultiCodedStringDataType : public CoreMultiDataType<V, I> {
public:
    // Terms of positions 0, 1, ... joined with "\"; an empty position writes nothing.
    std::string Text(std::string_view fallback = {}) const {
        std::string text;
        for (std::size_t i = 0; i < this->values_.size(); ++i) {
            if (i != 0) text += '\\';
            if (this->values_[i].IsSet()) text += this->values_[i].Term(fallback);
        }
        return text;
    }
    // Replace every position from "\"-separated terms; an empty field leaves its position empty.
    void SetFromText(std::string_view text) {
        this->Clear();
        const std::vector<std::string> fields = SplitKeepingEmpty(text, '\\');
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (!TrimBlanks(fields[i]).empty()) this->At(static_cast<I>(i)).SetFromTerm(fields[i]);
        }
    }
};

// The same family under its other name, for coded strings read as a whole.
template <typename V, typename I = unsigned int>
using CoreMultiCodedStringDataType = MultiCodedStringDataType<V, I>;

}  // namespace Lumivale::DataModule
