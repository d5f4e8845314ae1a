#include "indexer/NormaliseText.h"

#include <gtest/gtest.h>

namespace {

using indexer::GetExtension;
using indexer::NormaliseText;

TEST(NormaliseText, LowersCaseAndDropsThePossessive) {
    EXPECT_EQ(NormaliseText("John's CAR"), "john car ");
    EXPECT_EQ(NormaliseText("JOHN'S car"), "john car ");
    EXPECT_EQ(NormaliseText("the 'students'' room"), "the tudents   room ");
}

TEST(NormaliseText, DropsASingleLastCharacterAfterASeparator) {
    EXPECT_EQ(NormaliseText("a,b"), "a ");
    EXPECT_EQ(NormaliseText("a,bc"), "a bc ");
    EXPECT_EQ(NormaliseText("one two, 3"), "one two  3 ");
}

TEST(NormaliseText, DropsATextOfOneCharacter) {
    EXPECT_EQ(NormaliseText("x"), "");
    EXPECT_EQ(NormaliseText("xy"), "xy ");
    EXPECT_EQ(NormaliseText(""), "");
    EXPECT_EQ(NormaliseText("."), " ");
}

TEST(NormaliseText, SplitsAtPunctuationUnderscoreAndAccentedLetters) {
    EXPECT_EQ(NormaliseText("e-mail"), "e mail ");
    EXPECT_EQ(NormaliseText("na\xC3\xAFve"), "na ve ");
    EXPECT_EQ(NormaliseText("snake_case [x]`y`{z}"), "snake case  x  y  z ");
    EXPECT_EQ(NormaliseText("tab\tline\nbreak"), "tab line break ");
}

TEST(NormaliseText, TakesACharacterOfSeveralBytesAsOneSeparator) {
    EXPECT_EQ(NormaliseText("ab\xF0\x9F\x98\x80"
                            "cd"),
              "ab cd ");
    EXPECT_EQ(NormaliseText("ab\xC3\xA9\xC3\xA9"
                            "cd"),
              "ab  cd ");
    EXPECT_EQ(NormaliseText("ab\xE2\x80\x99"
                            "c"),
              "ab ");
}

TEST(NormaliseText, KeepsBlanksInsideAndRunsOfBlanksBesideSeparators) {
    EXPECT_EQ(NormaliseText("a, b"), "a  b ");
    EXPECT_EQ(NormaliseText("one  two"), "one  two ");
}

TEST(NormaliseText, RemovesThePossessiveBeforeItCountsTheLength) {
    // "a's" is the single character "a" once its ending is gone.
    EXPECT_EQ(NormaliseText("a's"), "");
    EXPECT_EQ(NormaliseText("it,a's"), "it ");
}

TEST(GetExtension, GivesWhatFollowsTheLastDot) {
    EXPECT_EQ(GetExtension("/tmp/report.final.pdf"), "pdf");
    EXPECT_EQ(GetExtension("README"), "");
    EXPECT_EQ(GetExtension("name."), "");
    EXPECT_EQ(GetExtension(".profile"), "profile");
}

}  // namespace
