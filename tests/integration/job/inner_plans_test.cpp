// How the database finds what SQLite really runs during whole jobs: beside the service's statements those of
// the storage layer itself, which keeps words and rows back, purges words and looks up tables.
#include <gmock/gmock.h>

#include <array>
#include <set>
#include <string>

#include "integration/job/query_plan.h"
#include "integration/job/sql_recording.h"
#include "integration/job/whole_jobs.h"

namespace {

using job_tests::QueryPlans;
using job_tests::SqlRecording;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class InnerPlans : public job_tests::WholeJobs {
  protected:
    InnerPlans() {
        library.exec("SELECT 1");  // the test's own connection is open before anybody listens
        const SqlRecording recording;
        runJobsOfEveryKind();
        runLongDocument();
        purgeStrayWord();
        restart();
        recorded = recording.statements();
        nested = recording.nested();
    }

    std::set<std::string> recorded;
    std::set<std::string> nested;

  private:
    /// More words and sentences than one insert takes.
    void runLongDocument() {
        ScriptedDocument document;
        for (char letter = 'a'; letter <= 'z'; ++letter) {
            document.sentences.push_back(std::string("The brook") + letter + " is long.");
        }
        givePlugin("log", "Test.Long", document);
        run("/docs/long.log", anew, "log");
    }

    /// A moved document loads the caches.
    void purgeStrayWord() {
        library.exec("INSERT INTO root_word (word) VALUES('stray')");
        run("/docs/long.log", moved, "log");
        EXPECT_EQ(value("SELECT count(*) FROM root_word WHERE word = 'stray'"), "0");
    }

    /// Opens a library whose figures are not as they should be, and closes it when keys are left over.
    void restart() {
        library.exec("DELETE FROM sqlite_stat1");
        platform::SqliteEngine engine;
        engine.open({library.path, "", "", ""})->execute("INSERT INTO root_word ( word ) VALUES( 'otter')");
    }
};

TEST_F(InnerPlans, NoStatementThatIsRunReadsAGrowingTableFromEndToEnd) {
    constexpr std::array beginnings = {
        "SELECT name, type, pk FROM ",                                   // what is known of a table
        "SELECT coalesce ( sql ",                                        // whether it is as it was made
        "SELECT ( SELECT count ( * ) FROM sqlite_schema WHERE type = ",  // whether words may be kept
        "UPDATE sqlite_sequence SET seq = max ",                         // keys for words,
        "UPDATE sqlite_sequence SET seq = ?1 WHERE ",                    // given back
        "SELECT id_root_word FROM word_index WHERE id_root_word > ",     // the purge
        "DELETE FROM root_word WHERE id = ",
        "WITH released ",
        "DELETE FROM word_release",
        "UPDATE word_purge ",
        "DELETE FROM sqlite_stat1 ",                           // the figures of the indexes
        "DELETE FROM word_index WHERE id_document_object = ",  // the service's own
        "Insert into metatag_entry "};
    for (const char* begin : beginnings) {
        EXPECT_THAT(recorded, Contains(StartsWith(begin)));
    }
    EXPECT_THAT(recorded, Contains(testing::AllOf(StartsWith("INSERT INTO root_word "), HasSubstr("?32"))));
    EXPECT_THAT(recorded, Contains(testing::AllOf(StartsWith("INSERT INTO word_index "), HasSubstr("?96"))));
    QueryPlans plans(library.path);
    EXPECT_THAT(plans.refused(recorded), IsEmpty());
}

TEST_F(InnerPlans, WhatATriggerDoesIsSeen) {
    EXPECT_THAT(nested, Contains("TRIGGER word_index_deleted"));
    EXPECT_THAT(nested, Contains("TRIGGER root_word_added"));
    EXPECT_THAT(nested, Contains(StartsWith("INSERT INTO word_release ")));
    QueryPlans plans(library.path);
    plans.exec(
        "CREATE TRIGGER busy AFTER DELETE ON root_word BEGIN DELETE FROM metatag_entry WHERE id_root_word = "
        "OLD.id; END");
    EXPECT_THAT(plans.refused(recorded),
                Contains("SCAN metatag_entry in: DELETE FROM root_word WHERE id = ?1"));
}

TEST_F(InnerPlans, TheIndexOfHitsByWordIsMissedByThePurgeWhenItIsGone) {
    QueryPlans plans(library.path);
    const auto refused = plans.refusedWithout("word_index_id_root_word", recorded);
    EXPECT_THAT(refused, Contains(HasSubstr("in: WITH released ")));
    EXPECT_THAT(refused,
                Contains(EndsWith("in: SELECT id_root_word FROM word_index WHERE id_root_word > ?1")));
}

TEST_F(InnerPlans, EveryIndexThatIsUsedIsMissedWhenItIsGone) {
    QueryPlans plans(library.path);
    for (const std::string& index : plans.indexes(recorded)) {
        EXPECT_THAT(plans.refusedWithout(index, recorded), testing::Not(IsEmpty())) << index;
    }
}

}  // namespace
