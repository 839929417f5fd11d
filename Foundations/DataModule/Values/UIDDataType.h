#pragma once
// Unique identifier (UI) values: dotted numeric text of at most 64 characters.

#include "Foundations/DataModule/Values/CoreDataType.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// Longest UI value the DICOM standard allows.
inline constexpr std::size_t kMaxUidLength = 64;

// True for a syntactically valid UID: 1 to 64 characters, components of digits separated by
// single dots, no component empty and none with a leading zero (except "0" itself).
constexpr bool IsValidUid(std::string_view uid) {
    if (uid.empty() || uid.size() > kMaxUidLength) return false;
    std::size_t component_length = 0;
    bool leading_zero = false;
    for (const char c : uid) {
        if (c == '.') {
            if (component_length == 0) return false;
            component_length = 0;
            continue;
        }
        if (c < '0' || c > '9') return false;
        if (component_length == 1 && leading_zero) return false;
        if (component_length == 0) leading_zero = c == '0';
        ++component_length;
    }
    return component_length != 0;
}

// A UID value; only valid UIDs are stored.
class UIDDataType : public CoreDataType<std::string> {
public:

    // Store the UID with the DICOM padding (trailing NUL or blanks) removed; false and unchanged when
    // it is not a valid UID.
    bool Set(std::string_view uid) {
        while (!uid.empty() && (uid.back() == '\0' || uid.back() == ' ')) uid.remove_suffix(1);
        if (!IsValidUid(uid)) return false;
        CoreDataType<std::string>::Set(std::string(uid));
        return true;
    }
};

}  // namespace Lumivale::DataModule
