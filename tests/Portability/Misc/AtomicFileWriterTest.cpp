#include "Portability/Misc/AtomicFileWriter.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;

class AtomicFileWriterTest : public ::testing::Test {
protected:
    void SetUp() override {
        directory_ = fs::temp_directory_path() / ("atomic-writer-" + std::to_string(::getpid()));
        fs::remove_all(directory_);
        fs::create_directories(directory_);
    }
    void TearDown() override { fs::remove_all(directory_); }

    std::string Read(const fs::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }
    void Write(const fs::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }
    std::size_t FileCount() { return static_cast<std::size_t>(std::distance(fs::directory_iterator(directory_), {})); }

    fs::path directory_;
};

TEST_F(AtomicFileWriterTest, CommitReplacesTheTargetWithEverythingWritten) {
    const fs::path target = directory_ / "out.bin";
    const fs::path source = directory_ / "source.bin";
    Write(target, "old");
    Write(source, "0123456789");

    Portability::AtomicFileWriter writer(target.string());
    ASSERT_TRUE(writer.Open());
    ASSERT_TRUE(writer.Write("head:", 5));
    const int fd = ::open(source.c_str(), O_RDONLY);
    ASSERT_TRUE(writer.CopyFrom(fd, 2, 5));
    ::close(fd);
    EXPECT_EQ(Read(target), "old");  // nothing visible before the commit
    ASSERT_TRUE(writer.Commit());
    EXPECT_EQ(Read(target), "head:23456");
    EXPECT_EQ(writer.size(), 10u);
    EXPECT_EQ(FileCount(), 2u);
}

TEST_F(AtomicFileWriterTest, AbandonedOrFailedWritesLeaveTheTargetAndNoTemporaryFile) {
    const fs::path target = directory_ / "out.bin";
    const fs::path source = directory_ / "short.bin";
    Write(target, "old");
    Write(source, "abc");
    {
        Portability::AtomicFileWriter writer(target.string());
        ASSERT_TRUE(writer.Open());
        ASSERT_TRUE(writer.Write("new", 3));
        const int fd = ::open(source.c_str(), O_RDONLY);
        EXPECT_FALSE(writer.CopyFrom(fd, 0, 100));  // the source is shorter than asked
        ::close(fd);
    }
    EXPECT_EQ(Read(target), "old");
    EXPECT_EQ(FileCount(), 2u);

    Portability::AtomicFileWriter nowhere((directory_ / "missing" / "out.bin").string());
    EXPECT_FALSE(nowhere.Open());
    EXPECT_FALSE(nowhere.Commit());
}

}  // namespace
