#include "Portability/Misc/AtomicFileWriter.h"
#include "Portability/Misc/InterruptCleanup.h"
#include "Portability/Misc/Sha256.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

namespace fs = std::filesystem;
using Portability::AtomicFileWriter;
using Portability::ExistingTarget;
using Portability::WriteFailure;
using TestFiles::ReadText;

std::size_t EntriesIn(const fs::path& directory) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(directory), {}));
}

class AtomicFileWriterTest : public ::testing::Test {
protected:
    const TestFiles::ScratchDirectory scratch_{"atomic-writer"};
    const fs::path& directory_ = scratch_.path;
};

TEST_F(AtomicFileWriterTest, OnlyACommitReplacesTheTargetAndNoTemporaryFileIsLeft) {
    const fs::path target = directory_ / "out.bin", source = directory_ / "source.bin";
    std::ofstream(target, std::ios::binary) << "old";
    std::ofstream(source, std::ios::binary) << "0123456789";
    const int fd = ::open(source.c_str(), O_RDONLY);
    {
        AtomicFileWriter abandoned(target.string());
        ASSERT_TRUE(abandoned.Open());
        ASSERT_TRUE(abandoned.Write("new", 3));
        EXPECT_FALSE(abandoned.CopyFrom(fd, 5, 100));  // the source is shorter than asked
        EXPECT_EQ(abandoned.failure(), WriteFailure::source);
    }
    EXPECT_EQ(ReadText(target), "old");

    AtomicFileWriter writer(target.string());
    ASSERT_TRUE(writer.Open());
    ASSERT_TRUE(writer.Write("head:", 5));
    ASSERT_TRUE(writer.CopyFrom(fd, 2, 5));
    ::close(fd);
    EXPECT_EQ(ReadText(target), "old");  // nothing visible before the commit
    ASSERT_TRUE(writer.Commit());
    EXPECT_EQ(ReadText(target), "head:23456");
    EXPECT_EQ(writer.size(), 10u);
    EXPECT_EQ(EntriesIn(directory_), 2u);

    AtomicFileWriter nowhere((directory_ / "missing" / "out.bin").string());
    EXPECT_FALSE(nowhere.Open());
    EXPECT_FALSE(nowhere.Commit());
    EXPECT_EQ(nowhere.failure(), WriteFailure::io);
}

struct DigestCopyCase {
    const char* id;
    std::uint64_t offset;
    std::uint64_t length;
};

// The digest of a copy is that of the bytes appended, in order, whatever the range: pieces of the
// hashing pipeline, a partial last piece, a range ending inside or at the end of the source.
TEST_F(AtomicFileWriterTest, DigestOfACopyIsThatOfTheBytesAppended) {
    constexpr std::uint64_t kMiB = 1 << 20;
    const fs::path target = directory_ / "out.bin", source = directory_ / "source.bin";
    std::string bytes(3 * kMiB + 5000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>((i * 2654435761u) >> 13);
    std::ofstream(source, std::ios::binary) << bytes;
    const int fd = ::open(source.c_str(), O_RDONLY);
    const DigestCopyCase cases[] = {
        {"empty", 0, 0},
        {"one-byte", 7, 1},
        {"one-block", 4096, 4096},
        {"one-piece", 0, kMiB},
        {"piece-and-a-byte", 3, kMiB + 1},
        {"more-pieces-than-slots", 0, 2 * kMiB + 4999},
        {"to-the-end", 8192, bytes.size() - 8192},
    };
    for (const DigestCopyCase& c : cases) {
        SCOPED_TRACE(c.id);
        Portability::Sha256 digest, expected;
        AtomicFileWriter writer(target.string());
        ASSERT_TRUE(writer.Open());
        ASSERT_TRUE(writer.Write("head", 4));
        ASSERT_TRUE(writer.CopyFrom(fd, c.offset, c.length, &digest));
        ASSERT_TRUE(writer.Commit());
        const std::string slice = bytes.substr(c.offset, c.length);
        EXPECT_EQ(ReadText(target), "head" + slice);
        expected.Update(slice.data(), slice.size());
        Portability::Sha256::Digest got{}, want{};
        ASSERT_TRUE(digest.Finish(got));
        ASSERT_TRUE(expected.Finish(want));
        EXPECT_EQ(got, want);
    }
    ::close(fd);
}

// What is at the target when the commit comes, and what each policy makes of it.
TEST_F(AtomicFileWriterTest, ExistingTargetsAreReplacedOrRefusedAtTheLastStep) {
    enum class Before { nothing, file_0600, file_0751, symlink, directory };
    const struct Case {
        const char* id;
        Before before;
        ExistingTarget existing;
        WriteFailure failure;
        mode_t mode;  // of the target afterwards, when it is our file
    } cases[] = {
        {"new file, refuse", Before::nothing, ExistingTarget::refuse, WriteFailure::none, 0644},
        {"new file, replace", Before::nothing, ExistingTarget::replace, WriteFailure::none, 0644},
        {"private file refused", Before::file_0600, ExistingTarget::refuse, WriteFailure::target_exists, 0600},
        {"private file replaced stays private", Before::file_0600, ExistingTarget::replace, WriteFailure::none, 0600},
        {"odd mode kept", Before::file_0751, ExistingTarget::replace, WriteFailure::none, 0751},
        {"symlink refused", Before::symlink, ExistingTarget::refuse, WriteFailure::target_exists, 0},
        {"symlink replaced, not followed", Before::symlink, ExistingTarget::replace, WriteFailure::none, 0644},
        {"directory refused", Before::directory, ExistingTarget::refuse, WriteFailure::target_exists, 0},
        {"directory not replaced", Before::directory, ExistingTarget::replace, WriteFailure::io, 0},
    };
    const mode_t old_mask = ::umask(022);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        fs::remove_all(directory_);
        fs::create_directories(directory_);
        const fs::path target = directory_ / "out.bin", victim = directory_ / "victim";
        std::ofstream(victim) << "victim";
        if (c.before == Before::file_0600 || c.before == Before::file_0751) {
            std::ofstream(target) << "old";
            fs::permissions(target, static_cast<fs::perms>(c.before == Before::file_0600 ? 0600 : 0751));
        }
        if (c.before == Before::symlink) fs::create_symlink(victim, target);
        if (c.before == Before::directory) fs::create_directory(target);

        AtomicFileWriter writer(target.string(), c.existing);
        ASSERT_TRUE(writer.Open());
        ASSERT_TRUE(writer.Write("new", 3));
        EXPECT_EQ(writer.Commit(), c.failure == WriteFailure::none);
        EXPECT_EQ(writer.failure(), c.failure);
        EXPECT_EQ(ReadText(victim), "victim");
        EXPECT_EQ(EntriesIn(directory_), 2u);  // the target and the victim: no temporary file
        struct stat info {};
        ASSERT_EQ(::lstat(target.c_str(), &info), 0);
        if (c.failure == WriteFailure::none) {
            EXPECT_TRUE(S_ISREG(info.st_mode));
            EXPECT_EQ(ReadText(target), "new");
            EXPECT_EQ(info.st_mode & 07777, c.mode);
        } else if (c.before == Before::file_0600) {
            EXPECT_EQ(ReadText(target), "old");
        }
    }
    ::umask(old_mask);
}

// A child arms a file and is interrupted: the file goes, and the signal still ends the child.
TEST_F(AtomicFileWriterTest, InterruptionRemovesArmedFiles) {
    for (const int signal_number : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal_number);
        const fs::path armed = directory_ / "armed", released = directory_ / "released";
        std::ofstream(armed) << "x";
        std::ofstream(released) << "x";
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const Portability::InterruptCleanup::Entry kept(armed.string());
            { const Portability::InterruptCleanup::Entry dropped(released.string()); }
            ::raise(signal_number);
            ::_exit(0);  // not reached when the signal ends the process
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal_number);
        EXPECT_FALSE(fs::exists(armed));
        EXPECT_TRUE(fs::exists(released));
        fs::remove(released);
    }
}

}  // namespace
