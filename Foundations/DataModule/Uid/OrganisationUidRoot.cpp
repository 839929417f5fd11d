#include "Foundations/DataModule/Uid/OrganisationUidRoot.h"

#include "Foundations/DataModule/Values/UIDDataType.h"

namespace Lumivale::DataModule {

namespace {

#ifdef DICAPSULE_ORG_UID_ROOT
constexpr std::string_view kRoot = DICAPSULE_ORG_UID_ROOT;
#else
constexpr std::string_view kRoot = kPlaceholderOrganisationUidRoot;
#endif

// ".50.845147831.20150521162055.6676.32" is 36 characters: the longest tail the generator writes.
static_assert(IsValidUid(kRoot) && kRoot.size() <= 28, "DICAPSULE_ORG_UID_ROOT must be a valid UID of 28 characters at most");

}  // namespace

std::string_view OrganisationUidRoot() { return kRoot; }

}  // namespace Lumivale::DataModule
