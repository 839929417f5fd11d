#include "Foundations/DataModule/Rows/ExtraElements.h"

namespace Lumivale::DataModule {

namespace {

bool IsVrCode(std::string_view vr) {
    return vr.size() == 2 && vr[0] >= 'A' && vr[0] <= 'Z' && vr[1] >= 'A' && vr[1] <= 'Z';
}

}  // namespace

bool ExtraElementList::Set(ExtraElement element) {
    if (!IsVrCode(element.vr)) return false;
    const ElementTag tag = element.tag;
    elements_.insert_or_assign(tag, std::move(element));
    return true;
}

bool ExtraElementList::SetText(ElementTag tag, std::string_view vr, std::string text) {
    return Set(ExtraElement{tag, std::string(vr), std::move(text)});
}

bool ExtraElementList::SetBytes(ElementTag tag, std::string_view vr, std::vector<std::uint8_t> bytes) {
    return Set(ExtraElement{tag, std::string(vr), std::move(bytes)});
}

const ExtraElement* ExtraElementList::Find(ElementTag tag) const {
    const auto found = elements_.find(tag);
    return found == elements_.end() ? nullptr : &found->second;
}

bool ExtraElementList::Erase(ElementTag tag) { return elements_.erase(tag) != 0; }

}  // namespace Lumivale::DataModule
