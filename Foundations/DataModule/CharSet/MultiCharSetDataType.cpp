#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"

#include "Foundations/DataModule/Common/TextUtils.h"

#include <algorithm>

namespace Lumivale::DataModule {

MultiCharSetDataType::MultiCharSetDataType(OutputEncoding::Enum encoding) {
    const OutputEncodingRow* row = FindOutputEncodingRow(encoding);
    if (row == nullptr) return;
    Set(0, row->first);
    if (row->second != CharSet::Unknown) Set(1, row->second);
}

MultiCharSetDataType MultiCharSetDataType::FromText(std::string_view text) {
    MultiCharSetDataType result;
    const std::vector<std::string> parts = SplitKeepingEmpty(text, '\\');
    result.positions_.resize(parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i) {
        // A blank part is an empty value, not the default repertoire: Complete decides what an
        // empty first value stands for.
        if (!TrimBlanks(parts[i]).empty()) result.Set(i, CharSetFromTerm(parts[i]));
    }
    result.Complete();
    return result;
}

bool MultiCharSetDataType::IsEmpty() const {
    return std::all_of(positions_.begin(), positions_.end(), [](const Position& p) { return p.empty; });
}

bool MultiCharSetDataType::IsEmpty(std::size_t position) const {
    return position >= positions_.size() || positions_[position].empty;
}

CharSet::Enum MultiCharSetDataType::Get(std::size_t position) const {
    return IsEmpty(position) ? CharSet::Unknown : positions_[position].value;
}

void MultiCharSetDataType::Set(std::size_t position, CharSet::Enum value) {
    if (position >= positions_.size()) positions_.resize(position + 1);
    positions_[position] = Position{value, false};
}

void MultiCharSetDataType::Clear(std::size_t position) {
    if (position < positions_.size()) positions_[position] = Position{};
}

std::string_view MultiCharSetDataType::Term(std::size_t position) const {
    return CharSetTerm(Get(position));
}

std::string MultiCharSetDataType::ToText() const {
    std::string text;
    for (std::size_t i = 0; i < positions_.size(); ++i) {
        if (i > 0) text += '\\';
        text.append(Term(i));
    }
    return text;
}

void MultiCharSetDataType::Complete() {
    if (IsEmpty()) {
        Set(0, CharSet::DefaultRepertoire);
        return;
    }
    if (!IsEmpty(0)) return;
    // The Korean form keeps its empty first value; every other extension names ISO 646 explicitly.
    const bool korean = Get(1) == CharSet::ISO_2022_IR_149;
    Set(0, korean ? CharSet::DefaultRepertoire : CharSet::ISO_2022_IR_6);
}

}  // namespace Lumivale::DataModule
