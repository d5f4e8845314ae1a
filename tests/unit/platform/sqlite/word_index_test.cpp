// The index of hits: found by word through groups of documents, and purged of words without hits by looking
// at those only that may have lost theirs.
#include <gmock/gmock.h>

#include <random>

#include "unit/platform/sqlite/library_fixture.h"

namespace {

using ::testing::Each;
using ::testing::HasSubstr;

constexpr std::string_view orphanPurge =
    "DELETE * FROM root_word WHERE NOT EXISTS (SELECT id_root_word FROM word_index WHERE id_root_word = "
    "root_word.id)";

class WordIndexTest : public LibraryTest {
  protected:
    void addWord(int id) {
        run("INSERT INTO root_word (id, word) VALUES (" + std::to_string(id) + ", 'w" + std::to_string(id) +
            "')");
    }
    void addHit(int document, int word) {
        run("INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
            "first_matching_sentence ) VALUES( " +
            std::to_string(document) + ", 1 , 2, 1, " + std::to_string(word) + ", 1 )");
    }
    std::vector<std::string> words() { return texts("SELECT id FROM root_word ORDER BY id", "id"); }

    /// The words that the purge has to leave: a plain scan, which no index and no note can lead astray.
    std::vector<std::string> wordsWithHits() {
        return texts(
            "SELECT id FROM root_word WHERE +id IN (SELECT +id_root_word FROM word_index NOT INDEXED) "
            "ORDER BY id",
            "id");
    }
    void purge() { run(orphanPurge); }

    using Words = std::vector<std::string>;
};

TEST_F(WordIndexTest, ThePurgeDeletesNewWordsWithoutHitsAndLeavesTheOthers) {
    addWord(1);
    addWord(2);
    addHit(5, 2);
    purge();
    EXPECT_EQ(words(), Words{"2"});
    addWord(3);
    purge();
    EXPECT_EQ(words(), Words{"2"});
}

TEST_F(WordIndexTest, ThePurgeFindsWordsThatLostTheirLastHit) {
    for (int word = 1; word <= 4; ++word) {
        addWord(word);
        addHit(5, word);
    }
    addHit(900, 3);
    purge();
    run("DELETE * FROM word_index WHERE id_document_object = 5");
    addHit(5, 4);
    purge();
    EXPECT_EQ(words(), (Words{"3", "4"}));
    run("UPDATE word_index SET id_root_word = 4 WHERE id_document_object = 900");
    purge();
    EXPECT_EQ(words(), Words{"4"});
}

TEST_F(WordIndexTest, ThePurgeFindsWordsThatWereAddedBelowTheNewestOne) {
    addWord(10);
    addHit(5, 10);
    purge();
    addWord(4);
    purge();
    EXPECT_EQ(words(), Words{"10"});
    run("UPDATE root_word SET id = 7 WHERE id = 10");
    purge();
    EXPECT_TRUE(words().empty());
}

TEST_F(WordIndexTest, ThePurgeInsideATransactionIsRolledBackWithIt) {
    addWord(1);
    connection().beginTrans();
    purge();
    EXPECT_TRUE(words().empty());
    connection().rollbackTrans();
    EXPECT_EQ(words(), Words{"1"});
    purge();
    EXPECT_TRUE(words().empty());
}

TEST_F(WordIndexTest, ThePurgeMindsNoGapsBetweenKeys) {
    addWord(1);
    addWord(2'000'000'000);
    addWord(2'000'000'001);
    addHit(5, 2'000'000'000);
    purge();
    EXPECT_EQ(words(), Words{"2000000000"});
}

TEST_F(WordIndexTest, ThePurgeWorksInALibraryThatNotesNothing) {
    run("DROP TRIGGER word_index_deleted");
    run("DROP TRIGGER word_index_updated");
    run("DROP TRIGGER root_word_added");
    run("DROP TRIGGER root_word_renumbered");
    run("DROP TABLE word_release");
    run("DROP TABLE word_purge");
    connection_.reset();
    addWord(1);
    addWord(2);
    addHit(5, 2);
    purge();
    EXPECT_EQ(words(), Words{"2"});
}

TEST_F(WordIndexTest, ThePurgeMissesNoWordWhereATriggerIsMissing) {
    addWord(1);
    addHit(5, 1);
    purge();
    run("DROP TRIGGER word_index_deleted");
    run("DELETE * FROM word_index");
    purge();
    EXPECT_EQ(words(), Words{});
}

TEST_F(WordIndexTest, ThePurgeDoesTheSameAsThePlainStatementWhateverHappened) {
    std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same run every time
    const auto upTo = [&random](int most) { return std::uniform_int_distribution<int>(1, most)(random); };
    int newest = 0;
    for (int round = 0; round < 60; ++round) {
        connection().beginTrans();
        for (int i = upTo(20); i > 0; --i) {
            addWord(++newest);
            if (upTo(3) > 1) {
                addHit(upTo(100), newest);
            }
        }
        for (int i = upTo(30); i > 0; --i) {
            addHit(upTo(100), upTo(newest));
        }
        const std::string document = std::to_string(upTo(100));
        run("DELETE * FROM word_index WHERE id_document_object = " + document);
        run("UPDATE word_index SET id_root_word = " + std::to_string(upTo(newest)) +
            " WHERE id_document_object = " + std::to_string(upTo(100)));
        run("DELETE * FROM word_index WHERE id_root_word = " + std::to_string(upTo(newest)));
        connection().commitTrans();
        const Words expected = wordsWithHits();
        purge();
        ASSERT_EQ(words(), expected) << "round " << round;
    }
}

TEST_F(WordIndexTest, HitsOfAWordAreFoundWhateverGroupTheirDocumentIsIn) {
    connection().beginTrans();
    for (int document = 1; document <= 200; ++document) {
        for (int word = document % 7; word < 50; word += 7) {
            addHit(document, word);
        }
    }
    addHit(3, 3);
    addHit(3, 3);
    connection().commitTrans();
    for (const int word : {0, 3, 48, 49}) {
        const std::string where = " WHERE id_root_word = " + std::to_string(word) + " ORDER BY 1";
        EXPECT_EQ(
            texts("SELECT id_document_object FROM word_index" + where, "id_document_object"),
            texts("SELECT id_document_object FROM word_index NOT INDEXED" + where, "id_document_object"))
            << word;
    }
    EXPECT_EQ(texts("SELECT hit_count FROM word_index WHERE id_document_object = 3 AND id_root_word = 3",
                    "hit_count")
                  .size(),
              3U);
}

TEST_F(WordIndexTest, TheNextConnectionMendsTheFiguresThatAnAnalysisHasReplaced) {
    const std::string figures = "SELECT stat FROM sqlite_stat1 ORDER BY stat";
    const auto before = texts(figures, "stat");
    ASSERT_EQ(before.size(), 3U);
    addHit(1, 1);
    run("ANALYZE");
    ASSERT_NE(texts(figures, "stat"), before);
    platform::SqliteEngine other;
    other.open({path(), {}, {}, {}});
    EXPECT_EQ(
        texts("SELECT stat FROM sqlite_stat1 WHERE tbl IN ('root_word', 'word_index') ORDER BY stat", "stat"),
        before);
    run("DROP TABLE sqlite_stat1");
    platform::SqliteEngine another;
    another.open({path(), {}, {}, {}});
    connection_.reset();
    EXPECT_EQ(texts(figures, "stat"), before);
}

TEST_F(WordIndexTest, LookUpsByWordGoThroughTheGroupsAlsoInJoinsAndAggregates) {
    const std::string index = "INDEX word_index_id_root_word (ANY(<expr>) AND id_root_word=?)";
    for (const std::string query : {"SELECT * FROM word_index WHERE id_root_word = 4",
                                    "SELECT COUNT(*) FROM word_index WHERE id_root_word IN (4, 5)",
                                    "SELECT id_document_object, SUM(hit_count) FROM root_word, word_index "
                                    "WHERE root_word.word = 'river' AND "
                                    "id_root_word = root_word.id GROUP BY id_document_object",
                                    "SELECT title FROM document_object INNER JOIN word_index ON "
                                    "document_object.id = id_document_object "
                                    "INNER JOIN root_word ON root_word.id = id_root_word WHERE word = "
                                    "'river' ORDER BY hit_count DESC"}) {
        const auto plan = texts("EXPLAIN QUERY PLAN " + query, "detail");
        EXPECT_THAT(plan, testing::Contains(HasSubstr(index))) << query;
        EXPECT_THAT(plan, Each(testing::Not(HasSubstr("SCAN ")))) << query;
    }
}

}  // namespace
