#pragma once
// Where the UID generator and the row stamps get the time, the process id and the machine number;
// and the test mode, which fixes all three so that two runs give byte-identical output.

#include "Foundations/DataModule/Values/DateTime.h"

#include <atomic>
#include <cstdint>

namespace Lumivale::DataModule {

// Clock and identity of this machine and process.
class IdentitySource {
public:
    virtual ~IdentitySource() = default;
    // Local time to the second, fraction 0.
    virtual date_time LocalTime() const = 0;
    // Identifier of the process (0 when unknown).
    virtual std::uint32_t ProcessId() const = 0;
    // Stable number of the machine (0 when unknown).
    virtual std::uint32_t MachineNumber() const = 0;
};

// The real clock, process id and machine number. The machine number is read on request until a
// non-zero one has been found, then kept.
class SystemIdentitySource : public IdentitySource {
public:
    date_time LocalTime() const override;
    std::uint32_t ProcessId() const override;
    std::uint32_t MachineNumber() const override;

private:
    mutable std::atomic<std::uint32_t> machine_number_{0};
};

// Values given once and returned ever after.
class FixedIdentitySource : public IdentitySource {
public:
    // The test mode's values: 2015-05-21 16:20:55, process 6676, machine 845147831.
    FixedIdentitySource();
    // Chosen values.
    FixedIdentitySource(date_time time, std::uint32_t process_id, std::uint32_t machine_number);

    date_time LocalTime() const override { return time_; }
    std::uint32_t ProcessId() const override { return process_id_; }
    std::uint32_t MachineNumber() const override { return machine_number_; }

private:
    date_time time_;
    std::uint32_t process_id_;
    std::uint32_t machine_number_;
};

// True when the environment variable CONVERTIX_TESTMODE exists (its value, even empty, is not read).
bool IsTestModeOn();

// The process-wide source, chosen on first use: the fixed test values in test mode, the system otherwise.
const IdentitySource& ProcessIdentitySource();

// The time stamp of this run, taken once from the process-wide source; new rows are stamped with it.
const date_time& RunTimeStamp();

// A 32-bit instance counter: each request returns the current value, then adds 1 (wrapping to 0).
class InstanceCounter {
public:
    // A counter whose first value is first.
    explicit InstanceCounter(std::uint32_t first = 1) : next_(first) {}
    // The current value; the counter moves on by one.
    std::uint32_t Next() noexcept { return next_.fetch_add(1, std::memory_order_relaxed); }

private:
    std::atomic<std::uint32_t> next_;
};

// The process-wide counter, starting at 1.
InstanceCounter& ProcessInstanceCounter();

}  // namespace Lumivale::DataModule
