#include "tyctl/search_terms.h"

#include <gtest/gtest.h>

namespace {

using tyctl::matchesIn;
using tyctl::searchTerms;
using tyctl::TextRange;
using Terms = std::vector<std::string>;

TEST(SearchTerms, AreInLowerCaseWithoutTheGenitive) {
    EXPECT_EQ(searchTerms("John's CAR"), (Terms{"john", "car"}));
}

TEST(SearchTerms, AreCutAtEverythingButAsciiLettersAndDigits) {
    EXPECT_EQ(searchTerms("e-mail na\xC3\xAFve snake_case 3com"),
              (Terms{"mail", "na", "ve", "snake", "case", "3com"}));
}

TEST(SearchTerms, LeaveOutSingleCharactersAndRepetitions) {
    EXPECT_EQ(searchTerms("a river, River x"), (Terms{"river"}));
}

TEST(SearchTerms, AreNoneForATextWithoutWords) {
    EXPECT_EQ(searchTerms("- \xC3\xA4 !"), Terms{});
}

TEST(MatchesIn, AreWholeWordsInAnyCase) {
    EXPECT_EQ(matchesIn("Rivers meet the RIVER's end", {"river"}), (std::vector<TextRange>{{16, 21}}));
}

TEST(MatchesIn, ComeFromLeftToRightForAllTerms) {
    EXPECT_EQ(matchesIn("end to end, at last", {"last", "end"}),
              (std::vector<TextRange>{{0, 3}, {7, 10}, {15, 19}}));
}

}  // namespace
