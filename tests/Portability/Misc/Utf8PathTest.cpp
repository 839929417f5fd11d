#include "Portability/Misc/Utf8Path.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace {

namespace fs = std::filesystem;

struct NameCase {
    const char* id;
    std::string name;  // UTF-8
};

const NameCase kNames[] = {
    {"ascii", "plain name.bin"},
    {"latin", "caf\xC3\xA9 \xC3\xBC.dat"},                                   // café ü
    {"japanese", "\xE5\xB1\xB1\xE7\x94\xB0\xE5\xA4\xAA\xE9\x83\x8E.pdf"},  // 山田太郎
    {"astral", "\xF0\x9F\x93\x84 note.txt"},                                // outside the BMP: a surrogate pair on Windows
};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// A UTF-8 name must name the same file through every way the program opens one.
TEST(Utf8PathTest, NamesReachTheSameFileWhicheverWayTheyAreOpened) {
    const fs::path directory = fs::temp_directory_path() / "utf8-path-test";
    fs::remove_all(directory);
    fs::create_directories(directory);
    const std::string directoryText = Portability::Utf8FromPath(directory);
    for (const NameCase& c : kNames) {
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
    fs::remove_all(directory);
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
