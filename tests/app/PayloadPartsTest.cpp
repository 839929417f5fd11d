// The parts of a payload beyond one value: how it is cut around the limit, how the files of the
// parts are named, and which collected sets make the whole payload.

#include "app/OperationMessages.h"
#include "app/Payload.h"
#include "app/PayloadParts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Dicapsule;

constexpr std::uint64_t kLimit = kMaxPayloadBytes;
constexpr std::uint64_t kStep = kLimit / kPartAlignment * kPartAlignment;  // every part but the last

TEST(PlanParts, AroundTheLimit) {
    const struct { const char* id; std::uint64_t total; std::vector<PayloadPart> parts; } cases[] = {
        {"empty", 0, {{0, 0}}},
        {"one byte", 1, {{0, 1}}},
        {"exactly the limit", kLimit, {{0, kLimit}}},
        {"limit + 1", kLimit + 1, {{0, kStep}, {kStep, kLimit + 1 - kStep}}},
        {"twice the limit + 1", 2 * kLimit + 1, {{0, kStep}, {kStep, kStep}, {2 * kStep, 2 * kLimit + 1 - 2 * kStep}}},
        {"4.7 GiB", 4700ull << 20, {{0, kStep}, {kStep, (4700ull << 20) - kStep}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(PlanParts(c.total, kLimit), c.parts);
        for (const PayloadPart& part : c.parts) {
            EXPECT_LE(part.length, kLimit);
            EXPECT_EQ(part.offset % kPartAlignment, 0u);
        }
    }
}

TEST(PartFileName, InsertsTheIndexBeforeDcm) {
    const struct { const char* path; unsigned index; const char* name; } cases[] = {
        {"report.dcm", 1, "report.dcm"},
        {"report.dcm", 2, "report.2.dcm"},
        {"dir/REPORT.DCM", 12, "dir/REPORT.12.DCM"},
        {"report", 2, "report.2"},
        {"report.bin", 3, "report.bin.3"},
        {"dir/.dcm", 2, "dir/.dcm.2"},
        {"x.dcm.gz", 2, "x.dcm.gz.2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.path) + " " + std::to_string(c.index));
        EXPECT_EQ(PartFileName(c.path, c.index), c.name);
    }
}

FoundPart Part(unsigned index, unsigned count, std::uint64_t offset, std::uint64_t length, std::uint64_t total = 30,
               const char* sha = "abc") {
    return {{index, count, offset, total, sha, "1.2.3"}, length, "p" + std::to_string(index) + "-" + std::to_string(offset), ""};
}

TEST(CheckPartSet, WholeMissingDuplicatedOrInconsistent) {
    const struct {
        const char* id;
        std::vector<FoundPart> parts;
        const char* message;  // "" when whole
    } cases[] = {
        {"whole, any order", {Part(3, 3, 20, 10), Part(1, 3, 0, 10), Part(2, 3, 10, 10)}, ""},
        {"last missing", {Part(1, 3, 0, 10), Part(2, 3, 10, 10)}, "Part 3 of 3 of the packed file of the input file \"in.dcm\" was not found."},
        {"first missing", {Part(2, 3, 10, 10), Part(3, 3, 20, 10)}, "Part 1 of 3 of the packed file of the input file \"in.dcm\" was not found."},
        {"middle missing", {Part(1, 3, 0, 10), Part(3, 3, 20, 10)}, "Part 2 of 3 of the packed file of the input file \"in.dcm\" was not found."},
        {"duplicated", {Part(1, 2, 0, 10), Part(2, 2, 10, 20), Part(2, 2, 10, 20)},
         "Part 2 of the packed file of the input file \"in.dcm\" is held twice, by \"p2-10\" and \"p2-10\"."},
        {"count differs", {Part(1, 2, 0, 10), Part(2, 3, 10, 20)},
         "The parts of the packed file of the input file \"in.dcm\" do not agree on its size or layout (part 2)."},
        {"total differs", {Part(1, 2, 0, 10), Part(2, 2, 10, 20, 31)},
         "The parts of the packed file of the input file \"in.dcm\" do not agree on its size or layout (part 2)."},
        {"digest differs", {Part(1, 2, 0, 10), Part(2, 2, 10, 20, 30, "abd")},
         "The parts of the packed file of the input file \"in.dcm\" do not agree on its size or layout (part 2)."},
        {"gap", {Part(1, 2, 0, 10), Part(2, 2, 11, 19)},
         "The parts of the packed file of the input file \"in.dcm\" do not agree on its size or layout (part 2)."},
        {"short of the total", {Part(1, 2, 0, 10), Part(2, 2, 10, 19)},
         "The parts of the packed file of the input file \"in.dcm\" do not agree on its size or layout (part 2)."},
        {"beyond the total", {Part(1, 2, 0, 10), Part(2, 2, 10, 21)},
         "The parts of the packed file of the input file \"in.dcm\" do not agree on its size or layout (part 2)."},
        {"count far beyond what was found", {Part(1, 4000000000u, 0, 10)},
         "Part 2 of 4000000000 of the packed file of the input file \"in.dcm\" was not found."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        std::vector<FoundPart> parts = c.parts;
        const unsigned count = parts.front().facts.count;
        const PartSetCheck check = CheckPartSet(parts);
        EXPECT_EQ(check.problem == PartSetProblem::none ? std::string() : PartSetFailure(check, parts, count, "in.dcm"),
                  c.message);
        if (check.problem == PartSetProblem::none) {
            for (std::size_t i = 0; i < parts.size(); ++i) EXPECT_EQ(parts[i].facts.index, i + 1);
        }
    }
}

// The facts a part stores, read back; malformed ones are refused rather than trusted.
TEST(ExtractPayload, PartFacts) {
    const struct {
        const char* id;
        const char* index;
        const char* count;
        const char* offset;
        PayloadReadResult result;
    } cases[] = {
        {"valid", "2", "3", "4278124544", PayloadReadResult::success},
        {"index 0", "0", "3", "0", PayloadReadResult::bad_part},
        {"index beyond the count", "4", "3", "0", PayloadReadResult::bad_part},
        {"signed", "+2", "3", "0", PayloadReadResult::bad_part},
        {"blank", "2 ", "3", "0", PayloadReadResult::bad_part},
        {"beyond 32 bits", "2", "4294967296", "0", PayloadReadResult::bad_part},
        {"beyond 64 bits", "2", "3", "18446744073709551616", PayloadReadResult::bad_part},
        {"empty", "2", "", "0", PayloadReadResult::bad_part},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        Lumivale::DataModule::CustomDataStore store;
        store_payload(store, Lumivale::DataModule::ByteBuffer::CopyOf(std::vector<std::uint8_t>{1, 2}), "a.bin", "pack",
                      {}, false, PartFacts{2, 3, 4278124544, 9000000000, "", "1.2.3"});
        store.SetText(std::string(kPartIndexKey), c.index);
        store.SetText(std::string(kPartCountKey), c.count);
        store.SetText(std::string(kPartOffsetKey), c.offset);
        store.SetText(std::string(kTotalSha256Key), std::string(64, 'a'));
        PayloadFacts facts;
        EXPECT_EQ(ExtractPayload(store, false, facts), c.result);
        if (c.result != PayloadReadResult::success) continue;
        ASSERT_TRUE(facts.part.has_value());
        EXPECT_EQ((std::vector<std::uint64_t>{facts.part->index, facts.part->count, facts.part->offset, facts.part->total_size}),
                  (std::vector<std::uint64_t>{2, 3, 4278124544, 9000000000}));
        EXPECT_EQ(facts.part->total_sha256, std::string(64, 'a'));
        EXPECT_EQ(facts.part->set_uid, "1.2.3");
    }
}

}  // namespace
