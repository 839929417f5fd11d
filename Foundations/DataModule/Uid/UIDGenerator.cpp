#include "Foundations/DataModule/Uid/UIDGenerator.h"

#include "Foundations/DataModule/Uid/OrganisationUidRoot.h"

namespace Lumivale::DataModule {

UIDGenerator::UIDGenerator() : UIDGenerator(ProcessIdentitySource(), ProcessInstanceCounter()) {}

UIDGenerator::UIDGenerator(const IdentitySource& identity, InstanceCounter& counter)
    : identity_(&identity), counter_(&counter) {}

std::string UIDGenerator::Generate(std::string_view root, std::int32_t kind, std::string_view tail) {
    std::string uid(root);
    uid += '.';
    uid += std::to_string(kind);
    uid += '.';
    if (!tail.empty()) return uid.append(tail);

    if (const std::uint32_t machine = identity_->MachineNumber(); machine != 0) {
        uid += std::to_string(machine);
        uid += '.';
    }
    date_time time = identity_->LocalTime();
    time.fraction = 0;  // the time component is always the 14 digits, whatever the source holds
    uid += FormatDateTime(time, 1);
    uid += '.';
    if (const std::uint32_t process = identity_->ProcessId(); process != 0) {
        uid += std::to_string(process);
        uid += '.';
    }
    // A counter that wrapped to 0 is left out; so is the dot before it, so the UID stays valid.
    if (const std::uint32_t count = counter_->Next(); count != 0) {
        uid += std::to_string(count);
    } else {
        uid.pop_back();
    }
    return uid;
}

std::string GenerateUid(std::int32_t kind, std::string_view tail) {
    UIDGenerator generator;
    return generator.Generate(OrganisationUidRoot(), kind, tail);
}

std::string TestModeInstanceUid() {
    // The same composition as any other identifier, from the test values and a counter at 32.
    const FixedIdentitySource test_identity;
    InstanceCounter counter(32);
    UIDGenerator generator(test_identity, counter);
    return generator.Generate(OrganisationUidRoot(), UidKind::Version, {});
}

}  // namespace Lumivale::DataModule
