#include "Foundations/DataModule/CharSet/CharSet.h"
#include "Foundations/DataModule/CharSet/CharSetEscapeSequences.h"
#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/CharSet/OutputEncoding.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace Lumivale::DataModule {
// Failure messages show the attribute text rather than the object's bytes.
void PrintTo(const MultiCharSetDataType& value, std::ostream* out) { *out << '"' << value.ToText() << '"'; }
}  // namespace Lumivale::DataModule

namespace {

using namespace Lumivale::DataModule;

TEST(CharSetTerms, ParseTrimsFoldsAndComparesExactly) {
    const struct {
        const char* id;
        const char* text;
        CharSet::Enum expected;
    } cases[] = {
        {"folded", "  iso_ir 100 \t\r\n", CharSet::ISO_IR_100},
        {"empty", "", CharSet::DefaultRepertoire},
        {"blank", " \t", CharSet::DefaultRepertoire},
        {"ir6-is-the-default", "iso_ir 6", CharSet::DefaultRepertoire},
        {"gbk-read-as-gb18030", "GBK", CharSet::GB18030},
        {"unlisted", "ISO_IR 999", CharSet::Unknown},
        {"questions", "??", CharSet::Unknown},
        {"inner-blank", "ISO_IR  100", CharSet::Unknown},
        {"gb", "gb18030", CharSet::GB18030},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(CharSetFromTerm(c.text), c.expected);
    }
    // Every term reads back as its own value.
    for (std::uint32_t value = CharSet::DefaultRepertoire; value < CharSet::Count; ++value) {
        const auto charset = static_cast<CharSet::Enum>(value);
        EXPECT_EQ(CharSetFromTerm(CharSetTerm(charset)), charset) << value;
    }
}

TEST(CharSetTerms, TermFallback) {
    EXPECT_EQ(CharSetTerm(CharSet::Unknown, "??"), "??");
    EXPECT_EQ(CharSetTerm(static_cast<CharSet::Enum>(30), "x"), "x");
    EXPECT_EQ(CharSetTerm(CharSet::DefaultRepertoire, "x"), "");
    EXPECT_EQ(CharSetDescription(static_cast<CharSet::Enum>(30)), "Unknown Character Set - N/a");
}

// The CLI suite checks the character sets written for Japanese, Korean and the sample files; here the rest.
TEST(MultiCharSet, ParseCompletesTheFirstValue) {
    const struct {
        const char* id;
        const char* text;
        std::vector<CharSet::Enum> expected;
        const char* written;
    } cases[] = {
        {"empty", "", {CharSet::DefaultRepertoire}, ""},
        {"latin-extension", "\\ISO 2022 IR 100", {CharSet::ISO_2022_IR_6, CharSet::ISO_2022_IR_100},
         "ISO 2022 IR 6\\ISO 2022 IR 100"},
        {"unknown-is-set", "ISO_IR 999", {CharSet::Unknown}, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        const MultiCharSetDataType parsed = MultiCharSetDataType::FromText(c.text);
        ASSERT_EQ(parsed.Count(), c.expected.size());
        for (std::size_t i = 0; i < c.expected.size(); ++i) {
            EXPECT_FALSE(parsed.IsEmpty(i));
            EXPECT_EQ(parsed.Get(i), c.expected[i]);
        }
        EXPECT_EQ(parsed.ToText(), c.written);
    }
    // A blank value in the middle stays empty and is written as nothing.
    const MultiCharSetDataType gap = MultiCharSetDataType::FromText("ISO 2022 IR 100\\ \\ISO 2022 IR 87");
    EXPECT_TRUE(gap.IsEmpty(1));
    EXPECT_EQ(gap.ToText(), "ISO 2022 IR 100\\\\ISO 2022 IR 87");
}

TEST(MultiCharSet, EqualityIgnoresClearedValues) {
    MultiCharSetDataType a;
    a.Set(2, CharSet::ISO_2022_IR_87);
    EXPECT_EQ(a.Count(), 3u);
    EXPECT_TRUE(a.IsEmpty(0));
    a.Set(0, CharSet::ISO_IR_100);
    a.Clear(0);
    MultiCharSetDataType b;
    b.Set(2, CharSet::ISO_2022_IR_87);
    EXPECT_EQ(a, b);
    b.Set(1, CharSet::Unknown);
    EXPECT_NE(a, b);
}

TEST(CharSetEscapes, DesignationAtTheStartOfARun) {
    const struct {
        const char* id;
        std::string_view bytes;
        CharSet::Enum term;
        GraphicSet set;
        std::size_t length;
    } cases[] = {
        {"katakana", "\x1B)I", CharSet::ISO_2022_IR_13, GraphicSet::G1, 3},
        {"hebrew", "\x1B-H\xF9", CharSet::ISO_2022_IR_138, GraphicSet::G1, 3},
        {"supplementary", "\x1B$(D", CharSet::ISO_2022_IR_159, GraphicSet::G0, 4},
        {"unknown", "\x1B$A", CharSet::Unknown, GraphicSet::G0, 0},
        {"truncated", "\x1B$)", CharSet::Unknown, GraphicSet::G0, 0},
        {"not-at-start", "a\x1B(B", CharSet::Unknown, GraphicSet::G0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        const EscapeDesignation designation = DesignationFromEscapeSequence(c.bytes);
        EXPECT_EQ(designation.term, c.term);
        EXPECT_EQ(designation.length, c.length);
        if (c.length > 0) {
            EXPECT_EQ(designation.set, c.set);
        }
    }
    EXPECT_EQ(G0EscapeSequence(CharSet::ISO_2022_IR_149), "");
    EXPECT_EQ(G1EscapeSequence(CharSet::ISO_IR_100), "");
}

TEST(OutputEncodingWords, TrimmedCaseInsensitiveWordsOnly) {
    // The CLI suite passes every word; here the spellings around them.
    const std::pair<const char*, OutputEncoding::Enum> cases[] = {
        {"Hebrew", OutputEncoding::hebrew}, {"  Unicode \t\r\n", OutputEncoding::unicode},
        {"unknown", OutputEncoding::unknown}, {"", OutputEncoding::unknown},
        {"uni code", OutputEncoding::unknown}, {"\xC3\xA9", OutputEncoding::unknown},
    };
    for (const auto& [word, expected] : cases) {
        SCOPED_TRACE(word);
        EXPECT_EQ(OutputEncodingFromWord(word), expected);
    }
}

}  // namespace
