// How a name the user gives reaches its file: UTF-8 names, and the forms of an atomic writer's target.
#include "Portability/Misc/AtomicFileWriter.h"
#include "Portability/Misc/Utf8Path.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

namespace {

namespace fs = std::filesystem;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// A UTF-8 name must name the same file through every way the program opens one.
TEST(Utf8PathTest, NamesReachTheSameFileWhicheverWayTheyAreOpened) {
    const TestFiles::ScratchDirectory scratch("utf8-path-test");
    const fs::path& directory = scratch.path;
    const std::string directoryText = Portability::Utf8FromPath(directory);
    const struct {
        const char* id;
        std::string name;  // UTF-8
    } names[] = {
        {"ascii", "plain name.bin"},
        {"latin", "caf\xC3\xA9 \xC3\xBC.dat"},                                   // café ü
        {"japanese", "\xE5\xB1\xB1\xE7\x94\xB0\xE5\xA4\xAA\xE9\x83\x8E.pdf"},  // 山田太郎
        {"astral", "\xF0\x9F\x93\x84 note.txt"},  // outside the BMP: a surrogate pair on Windows
    };
    for (const auto& c : names) {
        SCOPED_TRACE(c.id);
        const std::string full = directoryText + "/" + c.name;
        const fs::path path = Portability::PathFromUtf8(full);
        EXPECT_EQ(Portability::Utf8FromPath(path.filename()), c.name);
        EXPECT_EQ(Portability::Utf8FromPath(path), full);
        {
            const std::unique_ptr<std::FILE, FileCloser> file(Portability::OpenUtf8File(full, "wb"));
            ASSERT_TRUE(file);
            std::fputs(c.id, file.get());
        }
        EXPECT_EQ(fs::file_size(path), std::string(c.id).size());
        bool listed = false;
        for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
            listed = listed || Portability::Utf8FromPath(entry.path().filename()) == c.name;
        }
        EXPECT_TRUE(listed);
    }
    EXPECT_EQ(Portability::OpenUtf8File(directoryText + "/missing/x", "rb"), nullptr);
}

// However the target is named, a commit replaces the existing file in place and leaves nothing else
// behind. (New and refused targets: AtomicFileWriterTest, and the cross-platform suite on Windows.)
TEST(AtomicFileWriterTargets, EveryFormOfTargetNameIsReplacedInPlace) {
    const TestFiles::ScratchDirectory scratch("atomic-writer-targets");
    const fs::path& directory = scratch.path;
    fs::create_directories(directory / "sub");
    // Back to the first working directory however the test ends (an ASSERT returns early).
    struct WorkingDirectory {
        const fs::path before = fs::current_path();
        explicit WorkingDirectory(const fs::path& path) { fs::current_path(path); }
        ~WorkingDirectory() { fs::current_path(before); }
    } const inside(directory);
    const struct {
        std::string target;  // UTF-8, as the operations hand it over
        fs::path file;       // where it lands, relative to the directory
    } cases[] = {
        {"bare.dcm", "bare.dcm"},
        {"./dot.dcm", "dot.dcm"},
        {"sub/in.dcm", "sub/in.dcm"},
        {Portability::Utf8FromPath(directory / "absolute.dcm"), "absolute.dcm"},
        {"r\xC3\xA9sum\xC3\xA9 \xE5\xB1\xB1.dcm", Portability::PathFromUtf8("r\xC3\xA9sum\xC3\xA9 \xE5\xB1\xB1.dcm")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.target);
        std::ofstream(directory / c.file, std::ios::binary) << "old content";
        Portability::AtomicFileWriter writer(c.target, Portability::ExistingTarget::replace);
        ASSERT_TRUE(writer.Open());
        ASSERT_TRUE(writer.Write("new", 3));
        EXPECT_TRUE(writer.Commit());
        EXPECT_EQ(TestFiles::ReadText(directory / c.file), "new");
    }
    std::size_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) files += entry.is_regular_file();
    EXPECT_EQ(files, std::size(cases));  // no temporary file left anywhere
}

#ifdef _WIN32
// Drive letters and both separators keep their meaning.
TEST(Utf8PathTest, WindowsPathsKeepDrivesAndSeparators) {
    const fs::path path = Portability::PathFromUtf8("C:\\Dossiers\\r\xC3\xA9sum\xC3\xA9/out.dcm");
    EXPECT_EQ(Portability::Utf8FromPath(path.root_name()), "C:");
    EXPECT_EQ(Portability::Utf8FromPath(path.filename()), "out.dcm");
    EXPECT_EQ(Portability::Utf8FromPath(path.parent_path().filename()), "r\xC3\xA9sum\xC3\xA9");
}
#endif

}  // namespace
