#pragma once
// The value-plus-state base of every single attribute value: a value is either set or empty.

#include <utility>

namespace Lumivale::DataModule {

// A value of type T with an "empty" flag. Never assigned means empty; assigning clears the flag.
template <typename T>
class CoreDataType {
public:
    using value_type = T;

    // An empty value.
    CoreDataType() = default;
    // A set value.
    explicit CoreDataType(T value) : value_(std::move(value)), empty_(false) {}
    CoreDataType(const CoreDataType&) = default;
    CoreDataType(CoreDataType&&) noexcept = default;
    CoreDataType& operator=(const CoreDataType&) = default;
    CoreDataType& operator=(CoreDataType&&) noexcept = default;
    virtual ~CoreDataType() = default;

    // Store a value; it counts as set from now on.
    void Set(T value) {
        value_ = std::move(value);
        empty_ = false;
    }
    // Forget the value: empty again, holding T{}.
    void Clear() {
        value_ = T{};
        empty_ = true;
    }
    // True when nothing was assigned since construction or the last Clear.
    bool IsEmpty() const noexcept { return empty_; }
    // True when a value was assigned.
    bool IsSet() const noexcept { return !empty_; }
    // The held value (T{} while empty): test IsEmpty first.
    const T& Value() const noexcept { return value_; }
    // The held value, or fallback while empty.
    T ValueOr(T fallback) const { return empty_ ? std::move(fallback) : value_; }

    // Equal when both are empty, or both are set to equal values.
    friend bool operator==(const CoreDataType& a, const CoreDataType& b) {
        return a.empty_ == b.empty_ && (a.empty_ || a.value_ == b.value_);
    }

protected:
    T value_{};
    bool empty_ = true;
};

// A plain value with no conversions of its own (narrow text, bool, double...).
template <typename T>
class BasicDataType : public CoreDataType<T> {
public:
    using CoreDataType<T>::CoreDataType;
};

}  // namespace Lumivale::DataModule
