#include "Foundations/DataModule/Uid/OrganisationUidRoot.h"

#include "Foundations/DataModule/Values/UIDDataType.h"

#include <cstdlib>

namespace Lumivale::DataModule {

namespace {

#ifdef DICAPSULE_ORG_UID_ROOT
constexpr std::string_view kRoot = DICAPSULE_ORG_UID_ROOT;
#else
constexpr std::string_view kRoot = kPlaceholderOrganisationUidRoot;
#endif

static_assert(IsValidUid(kRoot) && kRoot.size() <= kMaxOrganisationUidRootLength,
              "DICAPSULE_ORG_UID_ROOT must be a valid UID of 24 characters at most");

std::string& RunRoot() {
    static std::string root(kRoot);
    return root;
}

}  // namespace

std::string_view OrganisationUidRoot() { return RunRoot(); }

bool IsUsableUidRoot(std::string_view root) { return IsValidUid(root) && root.size() <= kMaxOrganisationUidRootLength; }

bool TakeUidRootFromEnvironment(std::string& value) {
    const char* set = std::getenv(kUidRootVariable);
    if (set == nullptr) return true;
    if (!IsUsableUidRoot(set)) {
        value = set;
        return false;
    }
    RunRoot() = set;
    return true;
}

}  // namespace Lumivale::DataModule
