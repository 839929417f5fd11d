#pragma once
// New DICOM unique identifiers: root "." kind "." then either a given tail, or the machine number,
// the local time to the second, the process id and the instance counter.

#include "Foundations/DataModule/Uid/IdentitySource.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// The kind numbers written as the second component of the identifiers the tool makes.
struct UidKind {
    enum Enum : std::int32_t {
        Study = 10,
        Series = 20,
        Instance = 30,
        FrameOfReference = 40,
        Version = 50,  // implementation class and creator-version UIDs, and the fixed test instance UID
        PayloadSet = 60,  // the set of instances that hold the parts of one payload
    };
};

// Builds identifiers from an identity source and an instance counter.
class UIDGenerator {
public:
    // The process-wide identity source and counter.
    UIDGenerator();
    // Chosen sources (which must outlive the generator).
    UIDGenerator(const IdentitySource& identity, InstanceCounter& counter);
    UIDGenerator(const UIDGenerator&) = default;
    UIDGenerator& operator=(const UIDGenerator&) = default;
    virtual ~UIDGenerator() = default;

    // root "." kind "." and then: tail alone when it is not empty; otherwise the machine number and
    // "." (left out when 0), the time "%Y%m%d%H%M%S" and ".", the process id and "." (left out when
    // 0), and the counter's next value (left out, with the dot before it, when it is 0).
    // No length check: callers pass a root of kMaxOrganisationUidRootLength characters at most.
    virtual std::string Generate(std::string_view root, std::int32_t kind, std::string_view tail);

private:
    const IdentitySource* identity_;
    InstanceCounter* counter_;
};

// A new identifier under the organisation root from the process-wide generator.
std::string GenerateUid(std::int32_t kind, std::string_view tail = {});

// The SOP Instance UID that the test mode gives: root ".50.845147831.20150521162055.6676.32".
std::string TestModeInstanceUid();

}  // namespace Lumivale::DataModule
