#include "Foundations/DataModule/Values/PersonNameDataType.h"

namespace Lumivale::DataModule {

namespace {

// One group's text with its trailing empty components left out.
WString GroupText(const PersonNameDataType::Group& group) {
    WString text = group.Text(u'^');
    const std::size_t last = text.find_last_not_of(u'^');
    text.resize(last == WString::npos ? 0 : last + 1);
    return text;
}

}  // namespace

bool PersonNameDataType::IsEmpty() const noexcept {
    for (const Group& group : groups_) {
        if (!group.IsEmpty()) return false;
    }
    return true;
}

void PersonNameDataType::Clear() noexcept {
    for (Group& group : groups_) group.Clear();
}

WString PersonNameDataType::Text() const {
    std::array<WString, PersonNameRepresentation::count> texts;
    std::size_t used = 0;
    for (std::size_t i = 0; i < groups_.size(); ++i) {
        texts[i] = GroupText(groups_[i]);
        if (!texts[i].empty()) used = i + 1;
    }
    WString text;
    for (std::size_t i = 0; i < used; ++i) {
        if (i != 0) text += u'=';
        text += texts[i];
    }
    return text;
}

void PersonNameDataType::SetFromText(std::u16string_view text) {
    Clear();
    MultiCodedWStringDataType<unsigned int> group_texts;
    group_texts.SetFromText(text, u'=', PersonNameRepresentation::count);
    for (unsigned int i = 0; i < group_texts.Count(); ++i) {
        groups_[i].SetFromText(group_texts.Get(i).Value(), u'^', PersonNameComponent::count);
    }
}

}  // namespace Lumivale::DataModule

