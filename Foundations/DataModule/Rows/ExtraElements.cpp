#include "Foundations/DataModule/Rows/ExtraElements.h"

namespace Lumivale::DataModule {

bool ExtraElementList::Set(ExtraElement element) {
    if (element.vr == ValueRepresentation::Unknown) return false;
    const Tag tag = element.tag;
    elements_.insert_or_assign(tag, std::move(element));
    return true;
}

bool ExtraElementList::SetText(Tag tag, ValueRepresentation vr, std::string text) {
    return Set(ExtraElement{tag, vr, std::move(text)});
}

bool ExtraElementList::SetBytes(Tag tag, ValueRepresentation vr, std::vector<std::uint8_t> bytes) {
    return Set(ExtraElement{tag, vr, std::move(bytes)});
}

const ExtraElement* ExtraElementList::Find(Tag tag) const {
    const auto found = elements_.find(tag);
    return found == elements_.end() ? nullptr : &found->second;
}

bool ExtraElementList::Erase(Tag tag) { return elements_.erase(tag) != 0; }

}  // namespace Lumivale::DataModule
