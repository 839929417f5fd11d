#include "Portability/Misc/AtomicFileWriter.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include "Portability/Misc/win32/PosixFiles.h"  // open() by wide path
#endif
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;

std::string Read(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

TEST(AtomicFileWriterTest, OnlyACommitReplacesTheTargetAndNoTemporaryFileIsLeft) {
    const fs::path directory = fs::temp_directory_path() / ("atomic-writer-" + std::to_string(::getpid()));
    fs::remove_all(directory);
    fs::create_directories(directory);
    const fs::path target = directory / "out.bin", source = directory / "source.bin";
    std::ofstream(target, std::ios::binary) << "old";
    std::ofstream(source, std::ios::binary) << "0123456789";
    const int fd = ::open(source.c_str(), O_RDONLY);
    {
        Portability::AtomicFileWriter abandoned(target.string());
        ASSERT_TRUE(abandoned.Open());
        ASSERT_TRUE(abandoned.Write("new", 3));
        EXPECT_FALSE(abandoned.CopyFrom(fd, 5, 100));  // the source is shorter than asked
    }
    EXPECT_EQ(Read(target), "old");

    Portability::AtomicFileWriter writer(target.string());
    ASSERT_TRUE(writer.Open());
    ASSERT_TRUE(writer.Write("head:", 5));
    ASSERT_TRUE(writer.CopyFrom(fd, 2, 5));
    ::close(fd);
    EXPECT_EQ(Read(target), "old");  // nothing visible before the commit
    ASSERT_TRUE(writer.Commit());
    EXPECT_EQ(Read(target), "head:23456");
    EXPECT_EQ(writer.size(), 10u);
    EXPECT_EQ(std::distance(fs::directory_iterator(directory), {}), 2);

    Portability::AtomicFileWriter nowhere((directory / "missing" / "out.bin").string());
    EXPECT_FALSE(nowhere.Open());
    EXPECT_FALSE(nowhere.Commit());
    fs::remove_all(directory);
}

}  // namespace
