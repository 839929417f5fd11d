#include "Foundations/BufferTools/Blocks.h"
#include "Foundations/BufferTools/BufferTools.h"
#include "Foundations/BufferTools/CopyBlocks.h"
#include "Foundations/BufferTools/ParallelSwitch.h"
#include "Portability/Misc/DebugTrace.h"
#include "TestEnvironment.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <vector>

namespace Lumivale::BufferTools {
namespace {

// Records what the task framework calls, and fails chosen blocks.
class RecordingBlocks : public LVBlocks2D {
public:
    bool Process(const LVBuffer2D&, LVBuffer2D&, unsigned index) override {
        ++processed;
        return index != failIndex;
    }
    bool Begin() override {
        ++begun;
        return beginResult;
    }
    void End() override { ++ended; }
    unsigned failIndex = ~0u;
    bool beginResult = true;
    std::atomic<int> processed = 0;  // blocks run on several threads at once
    int begun = 0, ended = 0;
};

class BlocksTest : public ::testing::Test {
protected:
    void SetUp() override {
        TestEnvironment::Unset("FORCE_DISABLE_BLOCKS_PARALLEL");
        ResetParallelStateForTests();
        SetProcessorCountFunction([] { return 8; });
        SetSelfTestWorkerFactory({});
        previousSink_ = Portability::SetTraceSink([this](const Portability::TraceLine& line) {
            if (line.module == "Blocks") trace_.emplace_back(line.text);
        });
    }
    void TearDown() override {
        Portability::SetTraceSink(previousSink_);
        SetProcessorCountFunction(nullptr);
        SetSelfTestWorkerFactory({});
        TestEnvironment::Unset("FORCE_DISABLE_BLOCKS_PARALLEL");
        ResetParallelStateForTests();
    }
    static LVBuffer2D Buffer(std::int32_t width, std::int32_t height) {
        LVBuffer2D buffer;
        EXPECT_TRUE(buffer.Allocate(width, height, 1, 8));
        return buffer;
    }
    std::vector<std::string> trace_;
    Portability::TraceSink previousSink_;
};

TEST_F(BlocksTest, SplitArithmeticAndFallbacks) {
    struct Rect { std::int32_t x, y, w, h; };
    struct Case { const char* id; std::int32_t width, height; unsigned nx, ny; int ox, oy; bool inPlace;
        std::vector<Rect> blocks; } cases[] = {
        {"automatic stripes", 10, 16, 0, 0, 0, 0, false,
         {{0, 0, 10, 2}, {0, 2, 10, 2}, {0, 4, 10, 2}, {0, 6, 10, 2}, {0, 8, 10, 2}, {0, 10, 10, 2}, {0, 12, 10, 2},
          {0, 14, 10, 2}}},
        {"one row falls back to one block", 10, 1, 0, 0, 0, 0, false, {{0, 0, 10, 1}}},
        {"only nx automatic", 16, 2, 0, 1, 0, 0, false,
         {{0, 0, 2, 2}, {2, 0, 2, 2}, {4, 0, 2, 2}, {6, 0, 2, 2}, {8, 0, 2, 2}, {10, 0, 2, 2}, {12, 0, 2, 2},
          {14, 0, 2, 2}}},
        {"grid with last block clipped", 10, 10, 3, 2, 0, 0, false,
         {{0, 0, 4, 5}, {4, 0, 4, 5}, {8, 0, 2, 5}, {0, 5, 4, 5}, {4, 5, 4, 5}, {8, 5, 2, 5}}},
        {"overlap", 10, 4, 2, 1, 2, -3, false, {{0, 0, 6, 4}, {4, 0, 6, 4}}},
        {"overlap in place is one block", 10, 4, 2, 1, 2, 0, true, {{0, 0, 10, 4}}},
        {"step below one is one block", 3, 4, 2, 1, 5, 0, false, {{0, 0, 3, 4}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        LVBuffer2D source = Buffer(c.width, c.height), other = Buffer(c.width, c.height);
        LVBuffer2D& destination = c.inPlace ? source : other;
        CopyBlocks task;
        ASSERT_TRUE(task.Split(source, destination, c.nx, c.ny, c.ox, c.oy));
        ASSERT_EQ(task.BlockCount(), c.blocks.size());
        for (std::size_t i = 0; i < c.blocks.size(); ++i) {
            const LVBlockRecord& block = task.Block(i);
            const Rect& r = c.blocks[i];
            EXPECT_EQ(block.source.Plane(0), source.Row(0, r.y) + r.x) << i;
            EXPECT_EQ(block.destination.Plane(0), destination.Row(0, r.y) + r.x) << i;
            EXPECT_EQ(block.source.Width(), r.w) << i;
            EXPECT_EQ(block.source.Height(), r.h) << i;
        }
    }
}

TEST_F(BlocksTest, AutomaticCountIsBoundedAndFallsBackToOne) {
    LVBuffer2D source = Buffer(4, 64), destination = Buffer(4, 64);
    CopyBlocks task;
    SetProcessorCountFunction([] { return 40; });
    ASSERT_TRUE(task.Split(source, destination, 0, 0, 0, 0));
    EXPECT_EQ(task.BlockCount(), kMaxAutomaticBlocks);
    SetProcessorCountFunction([] { return 0; });
    ASSERT_TRUE(task.Split(source, destination, 0, 0, 0, 0));
    EXPECT_EQ(task.BlockCount(), 1u);
    LVBuffer2D invalid;
    EXPECT_FALSE(task.Split(source, invalid, 0, 0, 0, 0));
    EXPECT_EQ(task.BlockCount(), 0u);
}

TEST_F(BlocksTest, EnvironmentSwitch) {
    struct Case {
        const char* id;
        const char* value;
        bool enabled;
    } cases[] = {{"1", "1", false}, {"true", "tRuE", false}, {"yes", "yes", true}, {"0", "0", true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        ResetParallelStateForTests();
        TestEnvironment::Set("FORCE_DISABLE_BLOCKS_PARALLEL", c.value);
        EXPECT_EQ(IsParallelEnabled(), c.enabled);
        TestEnvironment::Unset("FORCE_DISABLE_BLOCKS_PARALLEL");
        EXPECT_EQ(IsParallelEnabled(), c.enabled) << "once off, the switch stays off";
    }
}

TEST_F(BlocksTest, RunCallsBeginProcessEnd) {
    LVBuffer2D source = Buffer(4, 8), destination = Buffer(4, 8);
    RecordingBlocks empty;
    EXPECT_FALSE(empty.Run(false));
    EXPECT_EQ(empty.begun, 0);

    RecordingBlocks failing;
    failing.failIndex = 2;
    ASSERT_TRUE(failing.Split(source, destination, 1, 8, 0, 0));
    EXPECT_FALSE(failing.Run(false));
    EXPECT_EQ(failing.processed.load(), 3) << "sequential run stops at the first failure";
    EXPECT_EQ(failing.ended, 1);

    RecordingBlocks refused;
    refused.beginResult = false;
    EXPECT_FALSE(refused.SplitAndRun(source, destination, 1, 4, 0, 0, true));
    EXPECT_EQ(refused.processed.load(), 0);
    EXPECT_EQ(refused.ended, 0);

    RecordingBlocks parallelFailing;
    parallelFailing.failIndex = 5;
    EXPECT_FALSE(parallelFailing.SplitAndRun(source, destination, 1, 8, 0, 0, true));
    EXPECT_EQ(parallelFailing.processed.load(), 8) << "the parallel run reduces every block's result";
    EXPECT_TRUE(IsSelfTestDone());
}

TEST_F(BlocksTest, SingleBlockNeverStartsTheSelfTest) {
    LVBuffer2D source = Buffer(4, 8), destination = Buffer(4, 8);
    CopyBlocks task;
    EXPECT_TRUE(task.SplitAndRun(source, destination, 1, 1, 0, 0, true));
    EXPECT_FALSE(IsSelfTestDone());
    EXPECT_TRUE(trace_.empty());
}

TEST_F(BlocksTest, SuccessfulSelfTestKeepsParallelWork) {
    LVBuffer2D source = Buffer(33, 70), destination = Buffer(33, 70);
    for (std::int32_t y = 0; y < 70; ++y)
        for (std::int32_t x = 0; x < 33; ++x) source.SetSample(0, x, y, x * 7 + y);
    BufferToolsBlocks tools;
    ASSERT_TRUE(CopyBuffer(tools, source, destination, true));
    EXPECT_TRUE(destination.Equals(source));
    EXPECT_TRUE(IsParallelEnabled());
    const std::vector<std::string> expected = {
        "Parallelization Initialization : attempt 1 of 3",
        "Parallelization Initialization : successful attempt 1 using 8 blocks"};
    EXPECT_EQ(trace_, expected);
}

TEST_F(BlocksTest, FailedSelfTestDisablesParallelWorkButTheTaskStillRuns) {
    SetSelfTestWorkerFactory([] {
        auto worker = std::make_unique<RecordingBlocks>();
        worker->failIndex = 0;
        return worker;
    });
    LVBuffer2D source = Buffer(16, 16), destination = Buffer(16, 16);
    ASSERT_TRUE(source.Fill(9));
    BufferToolsBlocks tools;
    EXPECT_TRUE(CopyBuffer(tools, source, destination, true));
    EXPECT_TRUE(destination.Equals(source));
    EXPECT_FALSE(IsParallelEnabled());
    ASSERT_EQ(trace_.size(), 4u);
    EXPECT_EQ(trace_[2], "Parallelization Initialization : attempt 3 of 3");
    EXPECT_EQ(trace_[3], "Parallelization Initialization : failed => paralellization disabled");

    trace_.clear();
    EXPECT_FALSE(TryParallelTask(3));
    EXPECT_EQ(trace_, std::vector<std::string>{"Parallelization Initialization : cannot try to perform parallel "
                                               "task => parallelization is not enabled at all"});
}

TEST_F(BlocksTest, LookUpTableMatchesTheSerialResult) {
    LVBuffer2D source, parallel, serial;
    ASSERT_TRUE(source.Allocate(37, 41, 3, 12) && parallel.Allocate(37, 41, 3, 8) && serial.Allocate(37, 41, 3, 8));
    LVLut lut;
    ASSERT_TRUE(lut.BuildLinear(0, 4095, 8));
    for (unsigned p = 0; p < 3; ++p)
        for (std::int32_t y = 0; y < 41; ++y)
            for (std::int32_t x = 0; x < 37; ++x) {
                source.SetSample(p, x, y, (x * 97 + y * 31 + p * 1000) % 4096);
                serial.SetSample(p, x, y, lut.Map(source.Sample(p, x, y)));
            }
    BufferToolsBlocks tools;
    ASSERT_TRUE(ApplyLUTBuffer(tools, source, parallel, lut));
    EXPECT_TRUE(parallel.Equals(serial));
}

TEST_F(BlocksTest, ResizeAveragesAndRangeScans) {
    LVBuffer2D source = Buffer(4, 2), half = Buffer(2, 1);
    const int values[2][4] = {{0, 2, 10, 20}, {4, 6, 30, 40}};
    for (std::int32_t y = 0; y < 2; ++y)
        for (std::int32_t x = 0; x < 4; ++x) source.SetSample(0, x, y, values[y][x]);
    BufferToolsBlocks tools;
    ASSERT_TRUE(tools.Resize(source, half));
    EXPECT_EQ(half.Sample(0, 0, 0), 3);
    EXPECT_EQ(half.Sample(0, 1, 0), 25);
    std::int64_t low = 0, high = 0;
    ASSERT_TRUE(tools.Range(source, low, high));
    EXPECT_EQ(low, 0);
    EXPECT_EQ(high, 40);
}

}  // namespace
}  // namespace Lumivale::BufferTools
