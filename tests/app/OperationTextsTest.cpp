// The texts the operations build: quoted paths, unpack output names, the info document.

#include "app/InfoDocument.h"
#include "app/QuotedPath.h"
#include "app/UnpackOutputName.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Dicapsule;

TEST(QuotedPath, EscapesQuotesAndAmpersands) {
    EXPECT_EQ(QuotedPath("a.dcm"), "\"a.dcm\"");
    EXPECT_EQ(QuotedPath(""), "\"\"");
    EXPECT_EQ(QuotedPath("R&D \"x\".pdf"), "\"R&&D &\"x&\".pdf\"");
}

TEST(UnpackOutputName, NamingRules) {
    const struct {
        const char* id;
        std::variant<OutputFile, OutputDirectory> target;
        const char* input;
        const char* original;
        const char* expected;
    } cases[] = {
        {"derived in dir", OutputDirectory{"out", false}, "in/x.y.dcm", "a.tar.gz", "out/x.y.gz"},
        {"no extension", OutputDirectory{".", false}, "x.dcm", "README", "./x"},
        {"explicit file ignores bad name", OutputFile{"y"}, "x.dcm", "../evil", "y"},
    };
    // Compared in the generic form: Windows joins with its own separator.
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(ResolveUnpackOutput(c.target, c.input, c.original).generic_string(), c.expected);
    }
}

TEST(UnpackOutputName, StoredNamesThatWouldLeaveTheDirectoryAreRefused) {
    const std::string names[] = {"", ".", "..", "../evil.sh", "a/b.pdf", "a\\b.pdf", std::string("a\0b", 3), "/etc/passwd"};
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(IsPlainFileName(name));
        for (const bool original : {false, true}) {
            EXPECT_THROW(ResolveUnpackOutput(OutputDirectory{"out", original}, "x.dcm", name), std::runtime_error);
        }
    }
    EXPECT_TRUE(IsPlainFileName("..report.pdf"));
    // A name derived from the input's own name must be plain too: "..." gives "..".
    EXPECT_THROW(ResolveUnpackOutput(OutputDirectory{"out", false}, "in/...", "README"), std::runtime_error);
}

// The CLI suite checks the document with references; here one without, and the escaping of "<".
TEST(InfoDocument, LayoutAndEscaping) {
    std::ostringstream none;
    WriteInfoDocument(none, "a&b.pdf", "pack -i \"my file.pdf\" -m <m>", {});
    EXPECT_EQ(none.str(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
              "<orchid type=\"Dicapsule\">\n"
              "\t<parameters originalname=\"a&amp;b.pdf\" commandline=\"pack -i &quot;my file.pdf&quot; -m &lt;m>\" />\n"
              "</orchid>\n");
}

}  // namespace
