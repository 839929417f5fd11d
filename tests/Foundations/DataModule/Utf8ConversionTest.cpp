#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Common/TextUtils.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using namespace Lumivale::DataModule;

// The message of the runtime_error that f throws, or "accepted".
template <class F>
std::string Refusal(F f) {
    try {
        f();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "accepted";
}

TEST(Utf8Conversion, WellFormedTextRoundTrips) {
    const struct { const char* id; std::string utf8; std::u16string wide; } cases[] = {
        {"empty", "", u""},
        {"ascii", "report.pdf", u"report.pdf"},
        {"latin", "Ren\xC3\xA9", u"Ren\u00E9"},
        {"cjk", "\xE5\xB1\xB1\xE7\x94\xB0", u"\u5C71\u7530"},
        {"last-bmp", "\xEF\xBF\xBF", u"\uFFFF"},
        {"astral", "\xF0\x9F\x98\x80", u"\U0001F600"},
        {"max", "\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {"nul", std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(FromUtf8(c.utf8), c.wide);
        EXPECT_EQ(ToUtf8(c.wide), c.utf8);
        EXPECT_TRUE(IsValidUtf8(c.utf8));
    }
}

TEST(Utf8Conversion, IllFormedUtf8IsRefusedNotSubstituted) {
    const std::pair<const char*, std::string> cases[] = {
        {"stray continuation", "\x80"},  {"overlong slash", "\xC0\xAF"},   {"overlong C1", "\xC1\xBF"},
        {"overlong 3-byte", "\xE0\x80\xAF"}, {"overlong 4-byte", "\xF0\x80\x80\xAF"}, {"surrogate", "\xED\xA0\x80"},
        {"above U+10FFFF", "\xF4\x90\x80\x80"}, {"F5 lead", "\xF5\x80\x80\x80"}, {"truncated 2", "a\xC3"},
        {"truncated 3", "\xE5\xB1"}, {"truncated 4", "\xF0\x9F\x98"}, {"missing continuation", "\xC3(x"}, {"FF", "\xFF"},
    };
    for (const auto& [id, text] : cases) {
        SCOPED_TRACE(id);
        EXPECT_FALSE(IsValidUtf8(text));
        EXPECT_EQ(Refusal([&] { FromUtf8(text); }), "Cannot decode UTF-8 string.");
    }
}

TEST(Utf8Conversion, UnpairedSurrogatesCannotBeEncoded) {
    const std::u16string cases[] = {std::u16string(1, u'\xD800'), std::u16string(1, u'\xDC00'),
                                    u"a" + std::u16string(1, u'\xD83D') + u"b"};
    for (const std::u16string& text : cases) EXPECT_EQ(Refusal([&] { ToUtf8(text); }), "Cannot encode to UTF-8 string.");
}

TEST(SplitKeepingEmpty, KeepsEveryField) {
    EXPECT_EQ(SplitKeepingEmpty("", ':'), (std::vector<std::string>{""}));
    EXPECT_EQ(SplitKeepingEmpty(":::", ':'), (std::vector<std::string>{"", "", "", ""}));
    EXPECT_EQ(SplitKeepingEmpty("a::b", ':'), (std::vector<std::string>{"a", "", "b"}));
}

}  // namespace
