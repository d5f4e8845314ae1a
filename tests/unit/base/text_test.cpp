#include "base/text.h"

#include <gtest/gtest.h>

namespace {

TEST(Text, CountsCodePointsAndStrayBytesAsOneCharacterEach) {
    EXPECT_EQ(base::length("naïve"), 5U);
    EXPECT_EQ(base::length("\xF0\x9F\x98\x80"), 1U);
    EXPECT_EQ(base::length("a\xFF\xC3"), 3U);
    EXPECT_EQ(base::length("\xED\xA0\x80"), 3U);  // a surrogate is no character
}

TEST(Text, CutsNeverTearACharacter) {
    EXPECT_EQ(base::left("aé\xF0\x9F\x98\x80z", 3), "aé\xF0\x9F\x98\x80");
    EXPECT_EQ(base::right("aé\xF0\x9F\x98\x80z", 2), "\xF0\x9F\x98\x80z");
    EXPECT_EQ(base::left("ab", 5), "ab");
}

TEST(Text, FoldsCaseBeyondAscii) {
    EXPECT_TRUE(base::equalsIgnoringCase("ÄRGER Σ", "ärger ς"));
    EXPECT_EQ(base::hashIgnoringCase("ÄRGER Σ"), base::hashIgnoringCase("ärger ς"));
    EXPECT_FALSE(base::equalsIgnoringCase("a", "á"));
    EXPECT_EQ(base::fold("ÉCOLE"), "école");
    EXPECT_EQ(base::toUpper("straße é"), "STRAßE É");
}

TEST(Text, HashesAlikeWhatIsEqualButForCase) {
    const std::string letters = "aBcDeFgHiJkLmNoPqRsTuVwXyZ@[`{019_";
    for (std::size_t size = 0; size <= letters.size(); ++size) {
        const std::string text = letters.substr(0, size);
        EXPECT_EQ(base::hashIgnoringCase(text), base::hashIgnoringCase(base::toUpper(text))) << text;
        EXPECT_NE(base::hashIgnoringCase(text), base::hashIgnoringCase(text + "x")) << text;
    }
    EXPECT_NE(base::hashIgnoringCase("@"), base::hashIgnoringCase("`"));
    EXPECT_NE(base::hashIgnoringCase("["), base::hashIgnoringCase("{"));
    EXPECT_EQ(base::hashIgnoringCase("\u212Aelvin"), base::hashIgnoringCase("kelvin"));
    EXPECT_EQ(base::hashIgnoringCase("a\xFFZ"), base::hashIgnoringCase("A\xFFz"));
}

TEST(Text, TellsAsciiByEveryByte) {
    for (std::size_t size = 1; size < 20; ++size) {
        for (std::size_t i = 0; i < size; ++i) {
            std::string text(size, 'a');
            EXPECT_EQ(base::length(text), size);
            text.replace(i, 1, "é");
            EXPECT_EQ(base::length(text), size) << text;
        }
    }
}

TEST(Text, KeepsStrayBytesThroughCaseChanges) {
    EXPECT_EQ(base::toLower("A\xFF\xC3Z"), "a\xFF\xC3z");
}

TEST(Text, TrimsBlanksOnly) {
    EXPECT_EQ(base::trim("  a\t "), "a\t");
    EXPECT_EQ(base::trim("   "), "");
}

TEST(Text, SplitsAtEverySeparator) {
    EXPECT_EQ(base::split("a  b ", ' '), (std::vector<std::string_view>{"a", "", "b", ""}));
    EXPECT_TRUE(base::split("", ' ').empty());
}

}  // namespace
