#pragma once
// The organisation UID root: the prefix of every identifier the tool makes.
//
// The built-in root "1.2.999.4242" is a syntactically valid 12-character placeholder under an
// arc that no registration authority hands out, so it cannot collide with a real organisation's
// identifiers. An organisation that ships the tool sets its own registered root at build time:
//     cmake -DDICAPSULE_ORG_UID_ROOT=<registered root> ...
// and a site replaces it at run time with the environment variable DICAPSULE_UID_ROOT.
// The root must be a valid UID short enough that generated identifiers stay within 64 characters:
// 24 characters or fewer leaves room for the longest tail, ".30." and a 10-digit machine number,
// the 14-digit time, a 7-digit process id (the largest Linux hands out) and a 2-digit counter,
// each after a dot (40 characters; the test mode's fixed tail is 36).

#include <cstddef>
#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// The built-in placeholder root.
inline constexpr std::string_view kPlaceholderOrganisationUidRoot = "1.2.999.4242";

// The longest root that keeps every identifier the tool makes within 64 characters.
inline constexpr std::size_t kMaxOrganisationUidRootLength = 24;

// The environment variable whose value replaces the built-in root for a run.
inline constexpr const char* kUidRootVariable = "DICAPSULE_UID_ROOT";

// The root of this run: the one taken from the environment, else the build's (its setting, or the
// placeholder).
std::string_view OrganisationUidRoot();

// True when root can start the tool's identifiers: a valid UID of kMaxOrganisationUidRootLength
// characters at most.
bool IsUsableUidRoot(std::string_view root);

// When DICAPSULE_UID_ROOT is set, make its value the root of this run. False when that value is
// not usable: it is then in value, and the root stays what it was. Call before any identifier is
// made, from one thread.
bool TakeUidRootFromEnvironment(std::string& value);

}  // namespace Lumivale::DataModule
