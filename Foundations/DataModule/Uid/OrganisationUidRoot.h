#pragma once
// The organisation UID root: the prefix of every identifier the tool makes.
//
// The built-in root "1.2.999.4242" is a syntactically valid 12-character placeholder under an
// arc that no registration authority hands out, so it cannot collide with a real organisation's
// identifiers. An organisation that ships the tool sets its own registered root at build time:
//     cmake -DDICAPSULE_ORG_UID_ROOT=<registered root> ...
// The root must be a valid UID short enough that generated identifiers stay within 64 characters
// (28 characters or fewer leaves room for the longest generated tail).

#include <string_view>

namespace Lumivale::DataModule {

// The built-in placeholder root.
inline constexpr std::string_view kPlaceholderOrganisationUidRoot = "1.2.999.4242";

// The root this build uses (the build-time setting, or the placeholder).
std::string_view OrganisationUidRoot();

}  // namespace Lumivale::DataModule
