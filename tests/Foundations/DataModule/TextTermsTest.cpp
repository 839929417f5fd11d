#include "Foundations/DataModule/CharSet/OutputEncoding.h"
#include "Foundations/DataModule/Common/TextUtils.h"

#include <gtest/gtest.h>

namespace {

using namespace Lumivale::DataModule;

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

TEST(SplitKeepingEmpty, KeepsEveryField) {
    EXPECT_EQ(SplitKeepingEmpty("", ':'), (std::vector<std::string>{""}));
    EXPECT_EQ(SplitKeepingEmpty(":::", ':'), (std::vector<std::string>{"", "", "", ""}));
    EXPECT_EQ(SplitKeepingEmpty("a::b", ':'), (std::vector<std::string>{"a", "", "b"}));
}

}  // namespace
