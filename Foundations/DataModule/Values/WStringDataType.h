#pragma once
// Wide-text attribute values (text attributes are held as UTF-16), single and multi-valued.

#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Values/CoreDataType.h"
#include "Foundations/DataModule/Values/MultiDataType.h"

#include <optional>
#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// A wide-text value.
class WStringDataType : public CoreDataType<WString> {
public:
    using CoreDataType<WString>::CoreDataType;

    // Set from UTF-8 text; false (value unchanged) when the text is not well-formed UTF-8.
    bool SetFromUtf8(std::string_view utf8);
    // The value as UTF-8 ("" while empty); nullopt when it holds an unpaired surrogate.
    std::optional<std::string> Utf8() const;
};

// Multi-valued wide text indexed by I, with a separator-joined text form.
template <typename I = unsigned int>
class MultiCodedWStringDataType : public CoreMultiDataType<WStringDataType, I> {
public:
    // Values joined by separator; an empty position writes nothing.
    WString Text(char16_t separator = u'\\') const {
        WString text;
        for (std::size_t i = 0; i < this->values_.size(); ++i) {
            if (i != 0) text += separator;
            text += this->values_[i].Value();
        }
        return text;
    }
    // Replace every position from separated text; an empty field leaves its position empty.
    // At most max_fields fields are made: the last one keeps the rest of the text, separators included.
    void SetFromText(std::u16string_view text, char16_t separator = u'\\', std::size_t max_fields = 0) {
        this->Clear();
        std::size_t index = 0;
        std::size_t start = 0;
        while (true) {
            const bool last_allowed = max_fields != 0 && index + 1 >= max_fields;
            const std::size_t end = last_allowed ? std::u16string_view::npos : text.find(separator, start);
            const std::u16string_view field = text.substr(start, end == std::u16string_view::npos ? end : end - start);
            if (!field.empty()) this->Set(static_cast<I>(index), WString(field));
            if (end == std::u16string_view::npos) return;
            start = end + 1;
            ++index;
        }
    }
};

}  // namespace Lumivale::DataModule
