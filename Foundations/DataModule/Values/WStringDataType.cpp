#include "Foundations/DataModule/Values/WStringDataType.h"

namespace Lumivale::DataModule {

bool WStringDataType::SetFromUtf8(std::string_view utf8) {
    // Checked first so that this layer never throws on hostile text.
    if (!IsValidUtf8(utf8)) return false;
    Set(FromUtf8(utf8));
    return true;
}

std::string WStringDataType::Utf8() const { return ToUtf8(value_); }

}  // namespace Lumivale::DataModule
