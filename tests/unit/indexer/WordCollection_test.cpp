#include "indexer/WordCollection.h"

#include <gtest/gtest.h>

#include "base/runtime_error.h"
#include "base/text.h"

namespace {

using indexer::WordCollection;
using indexer::WordIndexEntry;
using indexer::WordKey;

class Collection : public testing::Test {
  protected:
    WordKey key(std::string_view word, std::int16_t compType = 2, std::string_view type = "normal") {
        return {words.sectionOf(compType, type), word, base::hashIgnoringCase(word)};
    }
    void add(std::string_view word, std::int16_t compType = 2, std::string_view type = "normal") {
        WordIndexEntry entry;
        entry.hitCount = 1;
        entry.compType = compType;
        words.add(entry, key(word, compType, type));
    }

    WordCollection words;
};

TEST_F(Collection, KeepsTheOrderInWhichKeysWereMet) {
    add("river");
    add("boat", 3, "comment");
    add("river", 2, "");
    ASSERT_EQ(words.count(), 3U);
    EXPECT_EQ(words.keyAt(1), "key_2_normal_river");
    EXPECT_EQ(words.keyAt(2), "key_3_comment_boat");
    EXPECT_EQ(words.keyAt(3), "key_2__river");
    EXPECT_EQ(words.at(2).compType, 3);
}

TEST_F(Collection, FindsAWordInItsSectionAlone) {
    add("river");
    EXPECT_NE(words.find(key("river")), nullptr);
    EXPECT_EQ(words.find(key("river", 3)), nullptr);
    EXPECT_EQ(words.find(key("river", 2, "title")), nullptr);
    EXPECT_EQ(words.find(key("rivers")), nullptr);
}

TEST_F(Collection, ComparesEveryPartWithoutRegardToCase) {
    add("River", 2, "Title");
    EXPECT_NE(words.find(key("rIVER", 2, "tITLE")), nullptr);
    EXPECT_THROW(add("river", 2, "title"), base::RuntimeError);
    EXPECT_EQ(words.count(), 1U);
}

TEST_F(Collection, HoldsManyWordsAndForgetsThemAll) {
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 5000; ++i) {
            add("word" + std::to_string(i));
        }
        for (int i = 0; i < 5000; ++i) {
            const std::string word = "WORD" + std::to_string(i);
            WordIndexEntry* entry = words.find(key(word));
            ASSERT_NE(entry, nullptr);
            EXPECT_EQ(++entry->hitCount, 2);
        }
        EXPECT_EQ(words.at(5000).hitCount, 2);
        words.clear();
        EXPECT_EQ(words.count(), 0U);
        EXPECT_EQ(words.find(key("word7")), nullptr);
    }
}

TEST_F(Collection, APositionWithoutAnEntryIsRefused) {
    add("river");
    EXPECT_THROW(static_cast<void>(words.at(0)), base::RuntimeError);
    EXPECT_THROW(static_cast<void>(words.at(2)), base::RuntimeError);
    EXPECT_THROW(static_cast<void>(words.keyAt(2)), base::RuntimeError);
}

}  // namespace
