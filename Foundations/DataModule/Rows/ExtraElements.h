#pragma once
// Attributes a row carries without a named member: metadata documents may set any element by tag.

#include <compare>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Lumivale::DataModule {

// A DICOM tag as group and element numbers.
struct ElementTag {
    std::uint16_t group = 0;
    std::uint16_t element = 0;
    // Ordered by group, then element: the order elements are written in.
    friend auto operator<=>(const ElementTag&, const ElementTag&) = default;
};

// One extra element: its tag, VR code and value as text (UTF-8, values separated by "\") or raw bytes.
struct ExtraElement {
    ElementTag tag;
    std::string vr;  // two upper-case letters, e.g. "LO"
    std::variant<std::string, std::vector<std::uint8_t>> value;

    // True when the value is text.
    bool IsText() const noexcept { return std::holds_alternative<std::string>(value); }
};

// The extra elements of a row, one per tag, in ascending tag order.
class ExtraElementList {
public:
    // Add the element, replacing one of the same tag; false (nothing stored) when vr is not two upper-case letters.
    bool Set(ExtraElement element);
    // Add or replace a text element.
    bool SetText(ElementTag tag, std::string_view vr, std::string text);
    // Add or replace a raw-bytes element.
    bool SetBytes(ElementTag tag, std::string_view vr, std::vector<std::uint8_t> bytes);
    // The element of this tag, or nullptr.
    const ExtraElement* Find(ElementTag tag) const;
    // Remove the element of this tag; false when there was none.
    bool Erase(ElementTag tag);
    // Number of elements.
    std::size_t Size() const noexcept { return elements_.size(); }
    // True when there is no element.
    bool IsEmpty() const noexcept { return elements_.empty(); }
    // The elements in ascending tag order (iterators over tag/element pairs).
    auto begin() const noexcept { return elements_.begin(); }
    auto end() const noexcept { return elements_.end(); }

private:
    std::map<ElementTag, ExtraElement> elements_;
};

}  // namespace Lumivale::DataModule
