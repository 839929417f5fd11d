#pragma once
// Stored texts made fit for an XML 1.0 attribute.

#include <string>
#include <string_view>

namespace Dicapsule {

// The text with every character XML 1.0 cannot carry replaced by U+FFFD (the replacement
// character): each byte that is not part of a well-formed UTF-8 sequence, and the code points
// outside the XML Char production (control characters other than tab, line feed and carriage
// return; U+FFFE and U+FFFF). Everything else is kept as it is; markup characters are left to the
// XML writer's escaping.
std::string XmlSafeText(std::string_view text);

}  // namespace Dicapsule
