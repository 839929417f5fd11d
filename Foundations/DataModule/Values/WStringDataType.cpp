#include "Foundations/DataModule/Values/WStringDataType.h"

namespace Lumivale::DataModule {

bool WStringDataType::SetFromUtf8(std::string_view utf8) {
    std::optional<WString> wide = TryFromUtf8(utf8);
    if (!wide) return false;
    Set(std::move(*wide));
    return true;
}

std::optional<std::string> WStringDataType::Utf8() const { return TryToUtf8(value_); }

}  // namespace Lumivale::DataModule
