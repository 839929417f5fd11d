#pragma once
// A DICOM tag: the group and element numbers that name a data element.

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

struct Tag {
    std::uint16_t group = 0;
    std::uint16_t element = 0;

    // The 32-bit tag number: group in the high half, element number in the low half.
    constexpr std::uint32_t Number() const noexcept { return (std::uint32_t{group} << 16) | element; }
    // The tag of a 32-bit tag number.
    static constexpr Tag FromNumber(std::uint32_t number) noexcept {
        return Tag{static_cast<std::uint16_t>(number >> 16), static_cast<std::uint16_t>(number & 0xFFFF)};
    }
    // Ordered by group, then element (one comparison of the numbers): the order elements are written in.
    friend constexpr bool operator==(Tag a, Tag b) noexcept { return a.Number() == b.Number(); }
    friend constexpr std::strong_ordering operator<=>(Tag a, Tag b) noexcept { return a.Number() <=> b.Number(); }
};

// "(GGGG,EEEE)" in upper-case hexadecimal.
std::string TagText(Tag tag);
// Writes TagText(tag).
std::ostream& operator<<(std::ostream& out, Tag tag);

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule

template <>
struct std::hash<Lumivale::DataModule::DataAdapterModule::DicomCodecModule::Tag> {
    std::size_t operator()(Lumivale::DataModule::DataAdapterModule::DicomCodecModule::Tag tag) const noexcept {
        return std::hash<std::uint32_t>{}(tag.Number());
    }
};
