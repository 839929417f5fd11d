#include "app/ReferenceRecord.h"

#include <gtest/gtest.h>

namespace {

using namespace Dicapsule;

TEST(ReferenceText, GrammarOfOneReference) {
    const struct {
        const char* text;
        bool valid;
        ReferenceRecord record;
    } cases[] = {
        {"1.2:1.3:1.4", true, {"1.2", "1.3", "1.4", ""}},
        {"1.2:1.3:1.4:", true, {"1.2", "1.3", "1.4", ""}},
        {"1.2:1.3:1.4:1.5", true, {"1.2", "1.3", "1.4", "1.5"}},
        {"1.2::1.4", false, {}},
        {":1.3:1.4", false, {}},
        {"1.2:1.3:", false, {}},
        {"1.2:1.3", false, {}},
        {"a:b:c:d:e", false, {}},
        {"", false, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        ReferenceRecord record;
        EXPECT_EQ(parse_reference(c.text, record), c.valid);
        if (c.valid) {
            EXPECT_EQ(record, c.record);
        }
    }
}

TEST(ReferenceText, ListRoundTripsAndDropsEmptyClass) {
    const std::vector<ReferenceRecord> references{{"1.2.3", "1.2.3.4", "1.2.3.4.5", ""},
                                                  {"1.2.3", "1.2.3.4", "1.2.3.4.6", "1.2.3.9"}};
    const std::string text = FormatReferences(references);
    EXPECT_EQ(text, "1.2.3:1.2.3.4:1.2.3.4.5^1.2.3:1.2.3.4:1.2.3.4.6:1.2.3.9");
    std::vector<ReferenceRecord> parsed;
    ASSERT_TRUE(ParseReferences(text, parsed));
    EXPECT_EQ(parsed, references);

    EXPECT_TRUE(ParseReferences("", parsed));
    EXPECT_TRUE(parsed.empty());
    parsed = references;
    EXPECT_FALSE(ParseReferences("1:2:3^1:2", parsed));
    EXPECT_TRUE(parsed.empty());
}

}  // namespace
