#pragma once
// A payload larger than one DICOM value travels as parts, one per instance of a series: how it is
// cut, how the files of its parts are named, and whether a collected set of parts is whole.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Dicapsule {

// Every part but the last is a multiple of this long, so that each part starts on a boundary of
// the payload that its value in the packed file shares (the codec starts a large value on one):
// both ranges are block-aligned and a file system that shares blocks clones the part.
inline constexpr std::uint64_t kPartAlignment = 64 * 1024;

struct PayloadPart {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    bool operator==(const PayloadPart&) const = default;
};

// The parts of a payload of total bytes, none longer than limit: one part (empty for an empty
// payload) when total fits; else parts of limit rounded down to kPartAlignment, the last holding
// the rest. limit must be at least kPartAlignment.
std::vector<PayloadPart> PlanParts(std::uint64_t total, std::uint64_t limit);

// The file of part index (from 1) of a set whose first part is path: path itself for part 1; else
// ".k" inserted before a final ".dcm" (of any case), or appended ("report.dcm", "report.2.dcm").
std::string PartFileName(const std::string& path, unsigned index);

// What a part says about itself and its set.
struct PartFacts {
    unsigned index = 0;  // from 1
    unsigned count = 0;
    std::uint64_t offset = 0;      // of the part in the payload
    std::uint64_t total_size = 0;  // of the whole payload
    std::string total_sha256;      // of the whole payload, as stored; empty when none
    std::string set_uid;
};

// One part found for a set: its facts and the length of the content its file holds.
struct FoundPart {
    PartFacts facts;
    std::uint64_t length = 0;
    std::string path;    // UTF-8, as the user or the directory gave it
    std::string sha256;  // the part's own recorded digest; empty when none
};

// Why a set of parts is not whole. missing: an index below the count has no part; duplicated: two
// files hold the same index; inconsistent: the parts disagree on the count, the total size or the
// digest, or their offsets and lengths do not tile the payload.
enum class PartSetProblem { none, missing, duplicated, inconsistent };

struct PartSetCheck {
    PartSetProblem problem = PartSetProblem::none;
    unsigned index = 0;           // the missing or duplicated part
    std::size_t first = 0;        // duplicated: the two entries of parts holding it
    std::size_t second = 0;
};

// Check parts (all of one set UID, in any order) and sort them by index. Nothing is allocated by
// the count the parts declare.
PartSetCheck CheckPartSet(std::vector<FoundPart>& parts);

}  // namespace Dicapsule
