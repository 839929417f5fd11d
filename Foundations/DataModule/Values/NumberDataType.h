#pragma once
// Numeric attribute values (IS, DS, US, UL...) with their decimal text form.

#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/Values/CoreDataType.h"

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace Lumivale::DataModule {

// A number of type N (an integer or a floating-point type).
template <typename N>
class NumberDataType : public CoreDataType<N> {
    static_assert(std::is_arithmetic_v<N>, "NumberDataType holds integers or floating-point numbers");

public:
    using CoreDataType<N>::CoreDataType;

    // Decimal text of the value (shortest form that reads back equal), "" while empty.
    std::string Text() const {
        if (this->IsEmpty()) return {};
        char text[64];
        const auto result = std::to_chars(text, text + sizeof text, this->value_);
        return std::string(text, result.ptr);
    }
    // Set from decimal text (blanks trimmed, a leading "+" allowed); false and unchanged when the
    // whole text is not one number of type N.
    bool SetFromText(std::string_view text) {
        std::string_view trimmed = TrimBlanks(text);
        if (trimmed.size() > 1 && trimmed.front() == '+' && trimmed[1] != '-') trimmed.remove_prefix(1);
        if (trimmed.empty()) return false;
        N value{};
        const auto result = std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), value);
        if (result.ec != std::errc{} || result.ptr != trimmed.data() + trimmed.size()) return false;
        this->Set(value);
        return true;
    }
};

// Integer String (IS) and other signed 32-bit values.
using IntegerDataType = NumberDataType<std::int32_t>;
// Unsigned 32-bit values (UL, US).
using UnsignedDataType = NumberDataType<std::uint32_t>;
// Decimal String (DS) and floating-point values.
using DecimalDataType = NumberDataType<double>;

}  // namespace Lumivale::DataModule
