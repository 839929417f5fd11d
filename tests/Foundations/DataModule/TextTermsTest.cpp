#include "Foundations/DataModule/CharSet/OutputEncoding.h"
#include "Foundations/DataModule/Common/TextUtils.h"

#include <gtest/gtest.h>

namespace {

using namespace Lumivale::DataModule;

TEST(OutputEncodingWords, TrimmedCaseInsensitiveWordsOnly) {
    const std::pair<const char*, OutputEncoding::Enum> cases[] = {
        {"ascii", OutputEncoding::ascii},       {"CHINESE", OutputEncoding::chinese},
        {"Hebrew", OutputEncoding::hebrew},     {"japanese", OutputEncoding::japanese},
        {"KOREAN", OutputEncoding::korean},     {"  Unicode \t\r\n", OutputEncoding::unicode},
        {"WESTERN", OutputEncoding::western},   {"unknown", OutputEncoding::unknown},
        {"latin1", OutputEncoding::unknown},    {"", OutputEncoding::unknown},
        {"uni code", OutputEncoding::unknown},  {"\xC3\xA9", OutputEncoding::unknown},
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
