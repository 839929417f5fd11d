// Character set terms and escape sequences, and text encoded and decoded in the declared sets.
#include "Foundations/DataModule/CharSet/CharSet.h"
#include "Foundations/DataModule/CharSet/CharSetEscapeSequences.h"
#include "Foundations/DataModule/CharSet/EncodedText.h"
#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/CharSet/OutputEncoding.h"
#include "Portability/Misc/DebugTrace.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#endif

namespace Lumivale::DataModule {
// Failure messages show the attribute text rather than the object's bytes.
void PrintTo(const MultiCharSetDataType& value, std::ostream* out) { *out << '"' << value.ToText() << '"'; }
}  // namespace Lumivale::DataModule

namespace {

using namespace Lumivale::DataModule;

TEST(CharSetTerms, ParseTrimsFoldsAndComparesExactly) {
    const struct { const char* id; const char* text; CharSet::Enum expected; } cases[] = {
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
    for (const auto& c : cases) EXPECT_EQ(CharSetFromTerm(c.text), c.expected) << c.id;
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
    const struct { const char* id; const char* text; std::vector<CharSet::Enum> expected;
        const char* written; } cases[] = {
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
    const struct { const char* id; std::string_view bytes; CharSet::Enum term; GraphicSet set;
        std::size_t length; } cases[] = {
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
    for (const auto& [word, expected] : cases) EXPECT_EQ(OutputEncodingFromWord(word), expected) << word;
}

// Each row is self-consistent: its word and both spellings of its term find it, and the term the
// tool writes reads back as the row's character sets.
TEST(OutputEncodingRows, WordsTermsAndCharacterSetsAgree) {
    for (const OutputEncodingRow& row : OutputEncodingRows()) {
        SCOPED_TRACE(std::string(row.word));
        EXPECT_EQ(FindOutputEncodingRow(row.encoding), &row);
        EXPECT_EQ(OutputEncodingFromWord(row.word), row.encoding);
        EXPECT_EQ(OutputEncodingFromTerm(row.term), row.encoding);
        if (!row.otherTerm.empty()) {
            EXPECT_EQ(OutputEncodingFromTerm(row.otherTerm), row.encoding);
        }
        const MultiCharSetDataType written(row.encoding);
        EXPECT_EQ(MultiCharSetDataType::FromText(row.term), written);
        EXPECT_EQ(written.Get(0), row.first);
        EXPECT_EQ(written.Get(1), row.second);
    }
    EXPECT_EQ(FindOutputEncodingRow(OutputEncoding::unknown), nullptr);
    EXPECT_EQ(MultiCharSetDataType(OutputEncoding::unknown).Count(), 0u);
}

TEST(CharSetTable, Iso2022Counterparts) {
    const std::pair<CharSet::Enum, CharSet::Enum> cases[] = {
        {CharSet::DefaultRepertoire, CharSet::ISO_2022_IR_6}, {CharSet::ISO_IR_13, CharSet::ISO_2022_IR_13},
        {CharSet::ISO_IR_166, CharSet::ISO_2022_IR_166},      {CharSet::ISO_2022_IR_87, CharSet::ISO_2022_IR_87},
        {CharSet::ISO_IR_192, CharSet::ISO_IR_192},           {CharSet::Unknown, CharSet::Unknown},
    };
    for (const auto& [term, counterpart] : cases) {
        SCOPED_TRACE(CharSetDescription(term));
        EXPECT_EQ(Iso2022Counterpart(term), counterpart);
        EXPECT_EQ(IsIso2022CharSet(counterpart), counterpart != term || term == CharSet::ISO_2022_IR_87);
    }
}

// JIS X 0212 is read and written through the Windows EUC-JP code page (20932), whose table under
// wine lacks those rows; everywhere else the supplementary kanji must convert.
bool LacksJisX0212() {
#ifdef _WIN32
    return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
#else
    return false;
#endif
}

// Decoding gives the text, and encoding the text gives the same bytes back.
TEST(EncodedText, EscapeSequencesOnlyWhereTheSetChanges) {
    const struct { const char* id; const char* charset; std::string_view bytes; std::u16string_view text;
        TextValueKind kind = TextValueKind::PersonName; } cases[] = {
        // G1 goes back to Latin-1 before the delimiter, explicitly, because Latin-1 has a sequence.
        {"g1-returns", "ISO 2022 IR 100\\ISO 2022 IR 126", "\xE9 \x1B-F\xE1\x1B-A\\\xE9", u"é α\\é",
         TextValueKind::MultiValued},
        {"latin-extension", "\\ISO 2022 IR 100", "J\x1B-A\xE9r\xF4me\\M\x1B-A\xFCller", u"Jérôme\\Müller",
         TextValueKind::MultiValued},
        // Korean designates G1 again after each reset, but not after a "^" outside person names.
        {"korean-text", "\\ISO 2022 IR 149", "\x1B$)C\xC8\xAB^\xB1\xE6\\\x1B$)C\xB5\xBF", u"홍^길\\동",
         TextValueKind::MultiValued},
        {"korean-long-text", "\\ISO 2022 IR 149", "\x1B$)C\xC8\xAB\\\xB1\xE6\r\n\x1B$)C\xB5\xBF",
         u"홍\\길\r\n동", TextValueKind::SingleValued},
        {"japanese-romaji", "ISO 2022 IR 13\\ISO 2022 IR 87", "\x1B$B;3ED\x1B(J \xC0\xDB\xB3 ok", u"山田 ﾀﾛｳ ok"},
        {"kanji-then-backslash", "ISO 2022 IR 13\\ISO 2022 IR 87", "\x1B$B;3\x1B(J\\\x1B$B\x45\x44\x1B(J",
         u"山\\田", TextValueKind::SingleValued},
        {"supplementary-kanji", "\\ISO 2022 IR 87\\ISO 2022 IR 159", "\x1B$B;3\x1B$(D0!\x1B(B", u"山丂"},
        {"thai", "ISO_IR 166", "\xCA\xC7\xD1\xCA\xB4\xD5", u"สวัสดี"},
        {"half-width-katakana", "ISO_IR 13", "\xB6\xC0\xB6\xC5 abc", u"ｶﾀｶﾅ abc"},
        {"empty", "\\ISO 2022 IR 87", "", u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        if (std::string_view(c.id) == "supplementary-kanji" && LacksJisX0212()) continue;
        const MultiCharSetDataType charset = MultiCharSetDataType::FromText(c.charset);
        std::u16string decoded;
        EXPECT_TRUE(DecodeText(c.bytes, charset, c.kind, decoded));
        EXPECT_EQ(decoded, c.text);
        std::string encoded;
        EXPECT_TRUE(EncodeText(c.text, charset, c.kind, encoded));
        EXPECT_EQ(encoded, c.bytes);
    }
}

TEST(EncodedText, CharactersOutsideTheDeclaredSetsFail) {
    const struct { const char* id; const char* charset; std::u16string_view text; } cases[] = {
        {"hebrew-in-latin1", "ISO_IR 100", u"שרון"},
        {"cjk-in-default", "", u"山田"},
        {"korean-in-japanese", "ISO 2022 IR 13\\ISO 2022 IR 87", u"홍"},
        {"escape-character", "\\ISO 2022 IR 87", u"a\x1B(Bb"},
        {"unknown-term", "ISO_IR 999", u"abc"},
        {"unpaired-surrogate", "ISO_IR 100", u"a\xD800"},
        {"unpaired-surrogate-utf8", "ISO_IR 192", u"a\xDC00"},
        {"undefined-in-hebrew", "ISO_IR 138", u"é"},
    };
    std::vector<std::string> traced;
    const auto previous =
        Portability::SetTraceSink([&](const Portability::TraceLine& line) { traced.emplace_back(line.text); });
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        traced.clear();
        std::string bytes = "stale";
        EXPECT_FALSE(EncodeText(c.text, MultiCharSetDataType::FromText(c.charset), TextValueKind::PersonName, bytes));
        EXPECT_TRUE(bytes.empty());
        EXPECT_FALSE(traced.empty());  // the reason is left in the debug trace
    }
    Portability::SetTraceSink(previous);
    EXPECT_EQ(traced.front(), "Character U+00E9 at position 0 is in no declared character set");
}

TEST(EncodedText, MalformedBytesFail) {
    const struct { const char* id; const char* charset; std::string_view bytes; } cases[] = {
        {"high-byte-in-default", "", "J\xE9r\xF4me"},
        {"unassigned-hebrew", "ISO_IR 138", "\xA1"},
        {"escape-without-extensions", "ISO_IR 100", "\x1B-A\xE9"},
        {"unknown-escape", "\\ISO 2022 IR 87", "\x1B$A;3"},
        {"truncated-kanji", "\\ISO 2022 IR 87", "\x1B$B;"},
        {"korean-without-designation", "\\ISO 2022 IR 149", "\xB1\xE8"},
        {"korean-after-reset", "\\ISO 2022 IR 149", "\x1B$)C\xB1\xE8^\xB1\xE8"},
        {"katakana-out-of-range", "ISO_IR 13", "\xE0"},
        {"truncated-utf8", "ISO_IR 192", "\xE7\x8E"},
        {"utf8-surrogate", "ISO_IR 192", "\xED\xA0\x80"},
        {"truncated-gb18030", "GB18030", "\x81"},
        {"c1-control-in-latin1", "ISO_IR 100", "\x85"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        std::u16string text = u"stale";
        EXPECT_FALSE(DecodeText(c.bytes, MultiCharSetDataType::FromText(c.charset), TextValueKind::PersonName, text));
        EXPECT_TRUE(text.empty());
    }
}

TEST(EncodedText, UnknownTermsReadAsDefaultRepertoire) {
    std::u16string text;
    EXPECT_TRUE(DecodeText("Doe^John", MultiCharSetDataType::FromText("ISO_IR 999"), TextValueKind::PersonName, text));
    EXPECT_EQ(text, u"Doe^John");
    EXPECT_FALSE(DecodeText("J\xE9r", MultiCharSetDataType::FromText("LATIN1"), TextValueKind::PersonName, text));
    // An unusable later value is skipped; the declared ones still apply.
    EXPECT_TRUE(DecodeText("\x1B$B;3\x1B(B", MultiCharSetDataType::FromText("\\BOGUS\\ISO 2022 IR 87"),
                           TextValueKind::PersonName, text));
    EXPECT_EQ(text, u"山");
}

// What the strict reader refuses is still read, and the caller learns which fallback it took.
TEST(EncodedText, LenientDecodingNeverDropsText) {
    const struct { const char* id; const char* charset; std::string_view bytes; std::u16string_view text;
        DecodeFallback fallback; } cases[] = {
        {"valid", "ISO_IR 100", "J\xE9r\xF4me", u"Jérôme", DecodeFallback::None},
        {"undeclared-latin1", "", "J\xE9r\xF4me", u"Jérôme", DecodeFallback::UndeclaredAsLatin1},
        {"unknown-term-latin1", "ISO_IR 999", "M\xFCller", u"Müller", DecodeFallback::UndeclaredAsLatin1},
        {"bad-utf8", "ISO_IR 192", "a\xE7\x8E" "b\xC3\xA9", u"a\uFFFD\uFFFDbé", DecodeFallback::Replaced},
        {"bad-gb18030", "GB18030", "\x81" "0", u"\uFFFD0", DecodeFallback::Replaced},
        {"gbk-text", "GBK", "\xCD\xF5", u"王", DecodeFallback::None},
        {"unassigned-hebrew", "ISO_IR 138", "a\xA1" "b", u"a\uFFFDb", DecodeFallback::Replaced},
        {"unknown-escape", "\\ISO 2022 IR 87", "\x1B$A" "b", u"\uFFFD$Ab", DecodeFallback::Replaced},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        std::u16string text = u"stale";
        EXPECT_EQ(DecodeTextLeniently(c.bytes, MultiCharSetDataType::FromText(c.charset), TextValueKind::PersonName, text),
                  c.fallback);
        EXPECT_EQ(text, c.text);
    }
}

}  // namespace
