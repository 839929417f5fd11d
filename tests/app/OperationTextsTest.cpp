// The texts the operations build: quoted paths, unpack output names, the info document.

#include "app/InfoDocument.h"
#include "app/QuotedPath.h"
#include "app/UnpackOutputName.h"
#include "app/XmlText.h"

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
        {"extension of a name with backslashes", OutputDirectory{"out", false}, "x.dcm", "a\\b.pdf", "out/x.pdf"},
        {"extension of the last component only", OutputDirectory{"out", false}, "x.dcm", "a.d/b", "out/x"},
        {"extension of a climbing name", OutputDirectory{"out", false}, "x.dcm", "../evil.sh", "out/x.sh"},
        {"no extension after a separator", OutputDirectory{"out", false}, "x.dcm", "/etc/passwd", "out/x"},
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
        EXPECT_THROW(ResolveUnpackOutput(OutputDirectory{"out", true}, "x.dcm", name), std::runtime_error);
    }
    // Without -u only the extension is taken, and the name made from it must still be plain.
    EXPECT_THROW(ResolveUnpackOutput(OutputDirectory{"out", false}, "x.dcm", std::string("a.b\0c", 5)), std::runtime_error);
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

// What XML 1.0 cannot carry becomes U+FFFD, one per offending byte or code point; the rest stays.
TEST(XmlSafeText, ReplacesOnlyWhatXmlCannotCarry) {
    const std::string R = "\xEF\xBF\xBD";
    const struct {
        const char* id;
        std::string text;
        std::string expected;
    } cases[] = {
        {"allowed controls and markup", "a\t\n\r<&>\"'", "a\t\n\r<&>\"'"},
        {"other controls and NUL", std::string("\x01\x00\x1F\x7F", 4), R + R + R + "\x7F"},
        {"two, three and four bytes", "\xC3\xA9\xE5\xB1\xB1\xF0\x9F\x98\x80", "\xC3\xA9\xE5\xB1\xB1\xF0\x9F\x98\x80"},
        {"overlong slash", "\xC0\xAF", R + R},
        {"overlong three bytes", "\xE0\x80\xAF", R + R + R},
        {"surrogate", "\xED\xA0\x80x", R + R + R + "x"},
        {"beyond U+10FFFF", "\xF4\x90\x80\x80", R + R + R + R},
        {"cut sequence at the end", "a\xE5\xB1", "a" + R + R},
        {"non-characters U+FFFE and U+FFFF", "\xEF\xBF\xBE\xEF\xBF\xBF", R + R},
        {"replacement character kept", R, R},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(XmlSafeText(c.text), c.expected);
    }
}

}  // namespace
