#pragma once
// Person names (PN): five components in up to three representation groups, with the DICOM text
// form "Family^Given^Middle^Prefix^Suffix=ideographic=phonetic".

#include "Foundations/DataModule/Values/WStringDataType.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Lumivale::DataModule {

// The components of one person name group, in DICOM order.
struct PersonNameComponent {
    enum Enum : std::uint32_t { Family = 0, Given = 1, Middle = 2, Prefix = 3, Suffix = 4 };
    static constexpr std::size_t count = 5;
};

// A person name: components indexed by PersonNameComponent in each representation group.
class PersonNameDataType {
public:
    // The three "="-separated groups of a person name.
    struct PersonNameRepresentation {
        enum Enum : std::uint32_t { Alphabetic = 0, Ideographic = 1, Phonetic = 2 };
        static constexpr std::size_t count = 3;
    };
    // One group's components.
    using Group = MultiCodedWStringDataType<PersonNameComponent::Enum>;

    // The components of one group.
    const Group& Representation(PersonNameRepresentation::Enum group) const { return groups_.at(group); }
    Group& Representation(PersonNameRepresentation::Enum group) { return groups_.at(group); }
    // One component (an empty value when not set).
    const WStringDataType& Component(PersonNameComponent::Enum component,
                                     PersonNameRepresentation::Enum group = PersonNameRepresentation::Alphabetic) const {
        return groups_.at(group).Get(component);
    }
    // True when no component of any group is set.
    bool IsEmpty() const noexcept;
    // True when some component is set.
    bool IsSet() const noexcept { return !IsEmpty(); }
    // Drop every component.
    void Clear() noexcept;

    // DICOM text: components joined by "^", groups by "="; trailing empty components and groups are left out.
    WString Text() const;
    // Replace the name from DICOM text. Text beyond the third group stays in the third group, and
    // text beyond a group's fifth component stays in the fifth, so nothing is lost.
    void SetFromText(std::u16string_view text);

    // Equal when every component of every group is equal.
    friend bool operator==(const PersonNameDataType& a, const PersonNameDataType& b) { return a.groups_ == b.groups_; }

private:
    std::array<Group, PersonNameRepresentation::count> groups_;
};

}  // namespace Lumivale::DataModule
