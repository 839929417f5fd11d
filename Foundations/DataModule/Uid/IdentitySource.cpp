#include "Foundations/DataModule/Uid/IdentitySource.h"

#include "Portability/Misc/MachineIdentity.h"

#include <cstdlib>

namespace Lumivale::DataModule {

date_time SystemIdentitySource::LocalTime() const { return CurrentLocalDateTime(); }

std::uint32_t SystemIdentitySource::ProcessId() const { return Portability::CurrentProcessId(); }

std::uint32_t SystemIdentitySource::MachineNumber() const {
    std::uint32_t number = machine_number_.load(std::memory_order_relaxed);
    // 0 is never kept, so a machine number that could not be read is asked for again next time.
    if (number == 0) {
        number = Portability::ReadMachineNumber();
        machine_number_.store(number, std::memory_order_relaxed);
    }
    return number;
}

FixedIdentitySource::FixedIdentitySource()
    : FixedIdentitySource(date_time{2015, 5, 21, 16, 20, 55, 0}, 6676, 845147831) {}

FixedIdentitySource::FixedIdentitySource(date_time time, std::uint32_t process_id, std::uint32_t machine_number)
    : time_(time), process_id_(process_id), machine_number_(machine_number) {}

bool IsTestModeOn() { return std::getenv("CONVERTIX_TESTMODE") != nullptr; }

const IdentitySource& ProcessIdentitySource() {
    static const SystemIdentitySource system_source;
    static const FixedIdentitySource test_source;
    static const IdentitySource& chosen = IsTestModeOn() ? static_cast<const IdentitySource&>(test_source)
                                                         : static_cast<const IdentitySource&>(system_source);
    return chosen;
}

const date_time& RunTimeStamp() {
    static const date_time stamp = ProcessIdentitySource().LocalTime();
    return stamp;
}

InstanceCounter& ProcessInstanceCounter() {
    static InstanceCounter counter;
    return counter;
}

}  // namespace Lumivale::DataModule
