// Caches, word keys, sentences and their commits.
#include "base/runtime_error.h"
#include "unit/indexer/indexer_fixture.h"

namespace {

using indexer::bodyComponent;
using indexer::SentenceEntry;

class Words : public indexer_tests::IndexerTest {
  protected:
    Words() { indexer.LoadCaches(database); }

    void sentence(const std::string& text, std::int16_t index, const std::string& type = "",
                  bool keep = true) {
        indexer.indexSentence(text, 1, index, bodyComponent, type, keep, database);
    }
    std::string normalType() {
        return value("SELECT type FROM search_weight WHERE description='normal' AND comp_type=2");
    }
};

TEST_F(Words, TheEmptyTypeAndNormalMakeTwoEntriesOfOneNumericType) {
    sentence("river", 1, "");
    sentence("river", 2, "normal");
    ASSERT_EQ(indexer.pendingWords().count(), 2U);
    EXPECT_EQ(indexer.pendingWords().keyAt(1), "key_2__river");
    EXPECT_EQ(indexer.pendingWords().keyAt(2), "key_2_normal_river");
    EXPECT_EQ(std::to_string(indexer.pendingWords().at(1).subType), normalType());
    EXPECT_EQ(std::to_string(indexer.pendingWords().at(2).subType), normalType());
}

TEST_F(Words, AnUnknownDescriptionFallsBackToTheDefaultTypeOfItsComponent) {
    indexer.indexSentence("river", 1, 1, indexer::annotationComponent, "no such kind", true, database);
    ASSERT_EQ(indexer.pendingWords().count(), 1U);
    EXPECT_EQ(indexer.pendingWords().at(1).subType, 0);
    EXPECT_EQ(indexer.pendingWords().at(1).compType, 3);
}

TEST_F(Words, AWordWithoutAnyTypeIsSilentlyNotIndexed) {
    library.exec("DELETE FROM search_weight WHERE comp_type = 3");
    indexer.LoadCaches(database);
    indexer.indexSentence("river", 1, 1, 3, "comment", true, database);
    EXPECT_EQ(indexer.pendingWords().count(), 0U);
    EXPECT_FALSE(indexer.pendingSentences().front().referenced);
    EXPECT_TRUE(log().empty());
}

TEST_F(Words, AnOrphanRootWordIsDeletedAtTheNextLoad) {
    library.exec("INSERT INTO root_word(word) VALUES('orphan')");
    library.exec("INSERT INTO root_word(word) VALUES('kept')");
    library.exec(
        "INSERT INTO word_index(id_document_object, hit_count, comp_type, type, id_root_word, "
        "first_matching_sentence) SELECT 1, 1, 2, 1, id, 1 FROM root_word WHERE word='kept'");
    indexer.LoadCaches(database);
    EXPECT_EQ(library.rows("SELECT word FROM root_word"), (std::vector<std::vector<std::string>>{{"kept"}}));
}

TEST_F(Words, ASecondLoadMeetsNoDuplicateKeys) {
    sentence("river boat", 1);
    indexer.CommitWords(1, database);
    EXPECT_NO_THROW(indexer.LoadCaches(database));
    sentence("river", 2);
    EXPECT_EQ(number("SELECT count(*) FROM root_word WHERE word = 'river'"), 1);
}

TEST_F(Words, TwoWordTypesOfOneTrimmedNameEndTheLoad) {
    library.exec("INSERT INTO search_weight(type, description, comp_type) VALUES(901, 'twice', 2)");
    library.exec("INSERT INTO search_weight(type, description, comp_type) VALUES(902, ' TWICE ', 2)");
    EXPECT_THROW(indexer.LoadCaches(database), base::RuntimeError);
}

TEST_F(Words, TwoRootWordsThatDifferOnlyInCaseEndTheLoad) {
    library.exec("DROP INDEX IF EXISTS root_word_word");
    library.exec("CREATE TABLE twins(id INTEGER, word TEXT)");
    library.exec("ALTER TABLE root_word RENAME TO away");
    library.exec("ALTER TABLE twins RENAME TO root_word");
    library.exec("INSERT INTO root_word VALUES(1, 'river')");
    library.exec("INSERT INTO root_word VALUES(2, 'RIVER')");
    library.exec(
        "INSERT INTO word_index(id_document_object, hit_count, comp_type, type, id_root_word, "
        "first_matching_sentence) SELECT 1, 1, 2, 1, id, 1 FROM root_word");
    EXPECT_THROW(indexer.LoadCaches(database), base::RuntimeError);
}

TEST_F(Words, NoiseWordsAndSingleLettersAddNothingAndLeaveTheSentenceUnreferenced) {
    sentence("The and of x y", 1);
    EXPECT_EQ(indexer.pendingWords().count(), 0U);
    EXPECT_FALSE(indexer.pendingSentences().front().referenced);
    indexer.CommitSentences(1, database);
    EXPECT_EQ(number("SELECT count(*) FROM ascii_sentences WHERE num_sentence > 0"), 0);
}

TEST_F(Words, AWordIsCountedOnceWithItsHitsAndItsFirstSentence) {
    sentence("Nothing here", 3);
    sentence("A river", 4);
    sentence("River again", 9);
    indexer.CommitWords(5, database);
    EXPECT_EQ(library.rows(
                  "SELECT id_document_object, hit_count, comp_type, first_matching_sentence FROM word_index "
                  "WHERE id_root_word = (SELECT id FROM root_word WHERE word = 'river')"),
              (std::vector<std::vector<std::string>>{{"5", "2", "2", "4"}}));
    EXPECT_EQ(indexer.pendingWords().count(), 0U);
}

TEST_F(Words, OnlyTheSentenceThatIntroducesAWordIsReferencedByIt) {
    sentence("A river", 4);
    sentence("River", 9);
    EXPECT_TRUE(indexer.pendingSentences()[0].referenced);
    EXPECT_FALSE(indexer.pendingSentences()[1].referenced);
}

TEST_F(Words, EveryCommitWritesTheTwoBlankSentences) {
    indexer.CommitSentences(12, database);
    EXPECT_EQ(library.rows("SELECT num_sentence, sentence_length, content FROM ascii_sentences WHERE "
                           "id_document_object = 12 ORDER BY num_sentence"),
              (std::vector<std::vector<std::string>>{{"-1", "1", " "}, {"0", "1", " "}}));
}

TEST_F(Words, ASentenceWithAQuoteHasTheLengthOfItsDoubledForm) {
    sentence("O'Brien sings", 1);
    indexer.CommitSentences(1, database);
    EXPECT_EQ(library.rows("SELECT content, sentence_length FROM ascii_sentences WHERE num_sentence = 1"),
              (std::vector<std::vector<std::string>>{{"O'Brien sings", "14"}}));
}

TEST_F(Words, TheWordAtTheLimitOfItsCountKeepsItAndSaysSo) {
    SentenceEntry first{.index = 1, .text = "", .referenced = false};
    for (int i = 0; i < 32767; ++i) {
        indexer.RecordWord("tide", bodyComponent, "", first, database);
    }
    EXPECT_TRUE(log().empty());
    SentenceEntry late{.index = 2, .text = "", .referenced = false};
    indexer.RecordWord("tide", bodyComponent, "", late, database);
    EXPECT_EQ(indexer.pendingWords().at(1).hitCount, 32767);
    EXPECT_EQ(indexer.pendingWords().count(), 1U);
    EXPECT_EQ(log(), (std::vector<std::string>{
                         "Error: Error adding word: tide. This key is already associated with an "
                         "element of this collection"}));
    EXPECT_TRUE(late.referenced);
}

TEST_F(Words, ANewRootWordIsInsertedOnceAndItsKeyReadBack) {
    statements();
    sentence("river River RIVER", 1);
    EXPECT_EQ(statements(), (std::vector<std::string>{"INSERT INTO root_word ( word ) VALUES( 'river')",
                                                      "SELECT @@IDENTITY AS id_root_word FROM root_word"}));
}

TEST_F(Words, ARootWordThatCannotBeInsertedIsRetriedUntilItCan) {
    library.exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON root_word BEGIN SELECT RAISE(ABORT, 'refused'); END");
    library.clock.onPause = [this] {
        if (library.clock.pauses == 3) {
            library.exec("DROP TRIGGER refuse");
        }
    };
    sentence("river", 1);
    EXPECT_EQ(library.clock.paused, std::chrono::milliseconds(150));
    EXPECT_EQ(log().size(), 3U);
    EXPECT_TRUE(log().front().starts_with("Error: Error adding root word: river. ")) << log().front();
    EXPECT_EQ(number("SELECT count(*) FROM root_word"), 1);
    EXPECT_EQ(indexer.pendingWords().count(), 1U);
}

TEST_F(Words, AFailingWordInsertResynchronisesTheCachesAndIsRetried) {
    sentence("river boat", 1);
    library.exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON word_index WHEN NEW.id_root_word = 2 BEGIN SELECT "
        "RAISE(ABORT, 'refused'); END");
    library.clock.onPause = [this] { library.exec("DROP TRIGGER refuse"); };
    statements();
    indexer.CommitWords(3, database);
    const auto run = statements();
    ASSERT_GE(run.size(), 8U);
    EXPECT_EQ(run.front(), "BEGIN TRANSACTION");
    EXPECT_EQ(run[3], "COMMIT TRANSACTION");
    EXPECT_EQ(run[4], "SELECT type, description, comp_type FROM search_weight");
    EXPECT_EQ(run[8], "BEGIN TRANSACTION");
    EXPECT_EQ(run[9], run[2]);
    EXPECT_EQ(run.back(), "COMMIT TRANSACTION");
    const auto lines = log();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[0].starts_with("Error: Error in commitWords: ")) << lines[0];
    EXPECT_TRUE(lines[0].ends_with(" on word: boat")) << lines[0];
    EXPECT_EQ(lines[1], "Interest: Indexer.CommitWords - Resynchronising Caches");
    EXPECT_EQ(lines[2], "Interest: Indexer.CommitWords - Caches Resynchronised");
    EXPECT_EQ(number("SELECT count(*) FROM word_index WHERE id_document_object = 3"), 2);
}

TEST_F(Words, CommitsKeepTheTextThatOtherProgramsKnow) {
    sentence("O'Neil rows", 1);
    statements();
    indexer.CommitWords(3, database);
    indexer.CommitSentences(3, database);
    const std::string type = normalType();
    EXPECT_EQ(statements(),
              (std::vector<std::string>{
                  "BEGIN TRANSACTION",
                  "INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
                  "first_matching_sentence ) VALUES( 3, 1 , 2, " +
                      type + ", 1, 1 )",
                  "INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
                  "first_matching_sentence ) VALUES( 3, 1 , 2, " +
                      type + ", 2, 1 )",
                  "COMMIT TRANSACTION", "BEGIN TRANSACTION",
                  "INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
                  "VALUES(3, 1, ' ', -1)",
                  "INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
                  "VALUES(3, 1, ' ', 0)",
                  "INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
                  "VALUES(3,12,'O''Neil rows',1)",
                  "COMMIT TRANSACTION"}));
}

TEST_F(Words, ATransactionThatCannotBeginIsBegunOnAFreshConnection) {
    sentence("river", 1);
    database.getConnection()->beginTrans();  // a second one on this connection is refused
    indexer.CommitWords(3, database);
    EXPECT_TRUE(logged("Error: Forced to retry transaction"));
    EXPECT_EQ(number("SELECT count(*) FROM word_index WHERE id_document_object = 3"), 1);
}

TEST_F(Words, SentencesWhoseTransactionCannotBeginAreWrittenOnAFreshConnection) {
    sentence("A river", 1);
    database.getConnection()->beginTrans();
    indexer.CommitSentences(3, database);
    EXPECT_TRUE(logged("Error: Forced to retry transaction"));
    EXPECT_EQ(number("SELECT count(*) FROM ascii_sentences"), 3);
}

TEST_F(Words, ResynchronisingDropsTheRootWordsThatNoRowRefersToYet) {
    sentence("river boat", 1);
    library.exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON word_index BEGIN SELECT RAISE(ABORT, 'refused'); END");
    library.clock.onPause = [this] { library.exec("DROP TRIGGER refuse"); };
    indexer.CommitWords(3, database);
    EXPECT_EQ(number("SELECT count(*) FROM word_index WHERE id_document_object = 3"), 2);
    EXPECT_EQ(number("SELECT count(*) FROM root_word"), 0);
}

TEST_F(Words, SentencesThatCannotBeWrittenAreKeptAndNothingOfThemIsStored) {
    sentence("A river", 1);
    library.exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON ascii_sentences WHEN NEW.num_sentence = 1 BEGIN SELECT "
        "RAISE(ABORT, 'refused'); END");
    EXPECT_THROW(indexer.CommitSentences(3, database), base::RuntimeError);
    EXPECT_EQ(indexer.pendingSentences().size(), 1U);
    EXPECT_EQ(number("SELECT count(*) FROM ascii_sentences"), 0);
    library.exec("DROP TRIGGER refuse");
    indexer.CommitSentences(3, database);
    EXPECT_EQ(number("SELECT count(*) FROM ascii_sentences"), 3);
    EXPECT_TRUE(indexer.pendingSentences().empty());
}

TEST_F(Words, ASentenceThatIsNotKeptIsNeverStored) {
    sentence("river", 0, "document_path", false);
    EXPECT_TRUE(indexer.pendingSentences().empty());
    EXPECT_EQ(indexer.pendingWords().at(1).firstMatchingSentence, 0);
}

}  // namespace
