#pragma once
// Attributes a row carries without a named member: metadata documents may set any element by tag.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Core/Tag.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Core/ValueRepresentation.h"

namespace Lumivale::DataModule {

// The DICOM core's tag and VR, as the rows name them.
using DataAdapterModule::DicomCodecModule::Tag;
using DataAdapterModule::DicomCodecModule::ValueRepresentation;

// One extra element: its tag, VR and value as text (UTF-8, values separated by "\") or raw bytes.
struct ExtraElement {
    Tag tag;
    ValueRepresentation vr = ValueRepresentation::Unknown;
    std::variant<std::string, std::vector<std::uint8_t>> value;

    // True when the value is text.
    bool IsText() const noexcept { return std::holds_alternative<std::string>(value); }
};

// The extra elements of a row, one per tag, in ascending tag order.
class ExtraElementList {
public:
    // Add the element, replacing one of the same tag; false (nothing stored) when its VR is Unknown.
    bool Set(ExtraElement element);
    // Add or replace a text element.
    bool SetText(Tag tag, ValueRepresentation vr, std::string text);
    // Add or replace a raw-bytes element.
    bool SetBytes(Tag tag, ValueRepresentation vr, std::vector<std::uint8_t> bytes);
    // The element of this tag, or nullptr.
    const ExtraElement* Find(Tag tag) const;
    // Remove the element of this tag; false when there was none.
    bool Erase(Tag tag);
    // Number of elements.
    std::size_t Size() const noexcept { return elements_.size(); }
    // True when there is no element.
    bool IsEmpty() const noexcept { return elements_.empty(); }
    // The elements in ascending tag order (iterators over tag/element pairs).
    auto begin() const noexcept { return elements_.begin(); }
    auto end() const noexcept { return elements_.end(); }

private:
    std::map<Tag, ExtraElement> elements_;
};

}  // namespace Lumivale::DataModule
