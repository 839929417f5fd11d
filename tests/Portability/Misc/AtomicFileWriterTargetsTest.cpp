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
        Portability::ExistingTarget policy;
    } cases[] = {
        {"bare name", "bare.dcm", "bare.dcm", true, Portability::ExistingTarget::replace},
        {"dot slash", "./dot.dcm", "dot.dcm", true, Portability::ExistingTarget::replace},
        {"sub folder", "sub/in.dcm", "sub/in.dcm", true, Portability::ExistingTarget::replace},
        {"absolute", absolute, "absolute.dcm", true, Portability::ExistingTarget::replace},
        {"non-ASCII", "r\xC3\xA9sum\xC3\xA9 \xE5\xB1\xB1.dcm", Portability::PathFromUtf8("r\xC3\xA9sum\xC3\xA9 \xE5\xB1\xB1.dcm"), true,
         Portability::ExistingTarget::replace},
        {"new file", "new.dcm", "new.dcm", false, Portability::ExistingTarget::refuse},
        {"existing file refused", "kept.dcm", "kept.dcm", true, Portability::ExistingTarget::refuse},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        if (c.existing) std::ofstream(directory / c.file, std::ios::binary) << "old content";
        Portability::AtomicFileWriter writer(c.target, c.policy);
        ASSERT_TRUE(writer.Open());
        ASSERT_TRUE(writer.Write("new", 3));
        const bool refused = c.existing && c.policy == Portability::ExistingTarget::refuse;
        EXPECT_EQ(writer.Commit(), !refused);
        EXPECT_EQ(writer.failure(), refused ? Portability::WriteFailure::target_exists : Portability::WriteFailure::none);
        EXPECT_EQ(Read(directory / c.file), refused ? "old content" : "new");
    }
    std::size_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) files += entry.is_regular_file();
    EXPECT_EQ(files, std::size(cases));  // no temporary file left anywhere
    fs::current_path(before);
    fs::remove_all(directory);
}

}  // namespace
