#include "Portability/Misc/AtomicFileWriter.h"
#include "Portability/Misc/Utf8Path.h"

#include <gtest/gtest.h>

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

// However the target is named, a commit replaces an existing file (or makes a new one) and leaves
// nothing else behind.
TEST(AtomicFileWriterTargets, EveryFormOfTargetNameIsReplacedInPlace) {
    const fs::path directory = fs::temp_directory_path() / "atomic-writer-targets";
    fs::remove_all(directory);
    fs::create_directories(directory / "sub");
    const fs::path before = fs::current_path();
    fs::current_path(directory);
    const std::string absolute = Portability::Utf8FromPath(directory / "absolute.dcm");
    const struct {
        const char* id;
        std::string target;  // UTF-8, as the operations hand it over
        fs::path file;       // where it lands, relative to the directory
        bool existing;
    } cases[] = {
        {"bare name", "bare.dcm", "bare.dcm", true},
        {"dot slash", "./dot.dcm", "dot.dcm", true},
        {"sub folder", "sub/in.dcm", "sub/in.dcm", true},
        {"absolute", absolute, "absolute.dcm", true},
        {"non-ASCII", "r\xC3\xA9sum\xC3\xA9 \xE5\xB1\xB1.dcm", Portability::PathFromUtf8("r\xC3\xA9sum\xC3\xA9 \xE5\xB1\xB1.dcm"), true},
        {"new file", "new.dcm", "new.dcm", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        if (c.existing) std::ofstream(directory / c.file, std::ios::binary) << "old content";
        Portability::AtomicFileWriter writer(c.target);
        ASSERT_TRUE(writer.Open());
        ASSERT_TRUE(writer.Write("new", 3));
        ASSERT_TRUE(writer.Commit());
        EXPECT_EQ(Read(directory / c.file), "new");
    }
    std::size_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) files += entry.is_regular_file();
    EXPECT_EQ(files, std::size(cases));  // no temporary file left anywhere
    fs::current_path(before);
    fs::remove_all(directory);
}

}  // namespace
