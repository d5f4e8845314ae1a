// How the database finds the rows that the statements of a job ask for. A library grows for years: no
// statement may read a whole table that grows with it.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>

#include "base/text.h"
#include "integration/job/expected_statements.h"
#include "unit/platform/sqlite/library_fixture.h"

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using job_tests::operator+;
using job_tests::Statements;

// search_weight, prv_rules, prv_rules_annotation, word_noise and annotation stay small or are read by key.
constexpr std::array<std::string_view, 13> growingTables = {
    "file_index_queue",   "document_object", "document_share", "prv",
    "prv_history",        "root_word",       "word_index",     "ascii_sentences",
    "important_text",     "meta_tags",       "metatag_entry",  "annotation_section",
    "search_term_history"};

constexpr std::string_view orphanPurge =
    "DELETE * FROM root_word WHERE NOT EXISTS (SELECT id_root_word FROM word_index WHERE "
    "id_root_word = root_word.id)";

/// The table that a line of a plan reads from end to end; empty when it reads none so.
std::string_view scannedTable(std::string_view line) {
    constexpr std::string_view scan = "SCAN ";
    if (!line.starts_with(scan)) {
        return {};
    }
    line.remove_prefix(scan.size());
    return line.substr(0, line.find(' '));
}

/// Whether a line reads a whole table that grows. An index that is made for one statement costs as much.
bool readsAll(std::string_view line) {
    const std::string_view table = scannedTable(line);
    return line.find("AUTOMATIC") != std::string_view::npos ||
           std::any_of(growingTables.begin(), growingTables.end(), [table](std::string_view growing) {
               return base::equalsIgnoringCase(table, growing);
           });
}

class QueryPlans : public LibraryTest {
  protected:
    std::vector<std::string> planOf(std::string_view statement) {
        return texts("EXPLAIN QUERY PLAN " + std::string(statement), "detail");
    }

    std::vector<std::string> slowLinesOf(std::string_view statement) {
        std::vector<std::string> lines = planOf(statement);
        lines.erase(std::remove_if(lines.begin(), lines.end(),
                                   [](const std::string& line) { return !readsAll(line); }),
                    lines.end());
        return lines;
    }
};

struct Step {
    std::string name;
    Statements statements;
};

std::string nameOf(const testing::TestParamInfo<Step>& step) {
    return step.param.name;
}

void PrintTo(const Step& step, std::ostream* out) {
    *out << step.name;
}

/// What has a plan and reads more than one row: all but the begin and end of transactions and the reading of
/// the key that was given last, which is cut to one row.
Statements plannedOf(const Statements& statements) {
    Statements planned;
    std::copy_if(
        statements.begin(), statements.end(), std::back_inserter(planned), [](const std::string& statement) {
            return !statement.ends_with(" TRANSACTION") && statement.find("@@IDENTITY") == std::string::npos;
        });
    return planned;
}

class QueryPlansOf : public QueryPlans, public testing::WithParamInterface<Step> {};

TEST_P(QueryPlansOf, ReadNoGrowingTableWhole) {
    const Statements statements = plannedOf(GetParam().statements);
    ASSERT_THAT(statements, Not(IsEmpty()));
    for (const std::string& statement : statements) {
        EXPECT_THAT(slowLinesOf(statement), IsEmpty()) << statement;
    }
}

const job_tests::NewDocument river{"/docs/o''ki/river.txt", "The Ki''s river", "14 Nov 2026 09:00:00"};

Statements polling() {
    return {"DELETE * FROM file_index_queue WHERE flag_dirty = true",
            "SELECT id FROM file_index_queue WHERE flag_dirty = false",
            "UPDATE file_index_queue SET flag_dirty = true WHERE id = 5"};
}

Statements networkEntry() {
    return {
        R"(DELETE * FROM file_index_queue WHERE doc_path = 'q:\a.txt' OR doc_path = '\\host\share\a.txt')"};
}

Statements supersede() {
    return {
        "UPDATE document_object SET location_invalid = TRUE, location_invalid_date = '2026-11-16 "
        "01:47:03' WHERE id = 1",
        "SELECT title FROM document_object WHERE saved_location = '/docs/a.eml' AND location_invalid = "
        "false"};
}

Statements move() {
    return job_tests::forgetPath(river.path) +
           Statements{"UPDATE document_object SET source_url = 'mail:a' WHERE id = 1"};
}

Statements relevance() {
    return {
        "SELECT prv.last_prv, prv.last_modified, prv.hard_prv, document_share.id_annotation FROM "
        "document_share INNER JOIN prv ON document_share.id_prv = prv.id WHERE "
        "(((document_share.id_user)=7) AND ((document_share.id_document)=12))",
        "SELECT id_prv FROM document_share WHERE document_share.id_document = 12 AND "
        "document_share.id_user = 7",
        "SELECT points FROM annotation WHERE id = 5",
        "SELECT data_type FROM document_object WHERE document_object.id = 12",
        "SELECT decay_halflife FROM prv_rules WHERE data_type = 'eml' OR data_type = 'zzzzDef' ORDER BY "
        "data_type ASC",
        "UPDATE prv SET last_prv = 44, last_modified = '2026-01-11 12:00:00' WHERE id = 3"};
}

Statements searchTerm() {
    return {"SELECT decay_halflife FROM prv_rules WHERE data_type = 'zzzzDef'",
            "SELECT time_stamp FROM search_term_history WHERE id_search_term = 4 AND time_stamp < "
            "'2026-01-11 12:00:00' ORDER BY id ASC"};
}

Statements search() {
    return {"SELECT term FROM word_noise WHERE term = 'river'",
            "SELECT id FROM root_word WHERE word = 'river'",
            "SELECT word_index.id_document_object, word_index.hit_count, word_index.first_matching_sentence "
            "FROM root_word, word_index, document_object WHERE root_word.word = 'river' AND "
            "word_index.id_root_word = root_word.id AND document_object.id = word_index.id_document_object "
            "AND document_object.location_invalid = FALSE",
            "SELECT content FROM ascii_sentences WHERE id_document_object = 1 AND num_sentence = 3"};
}

Statements queueing() {
    return {"SELECT doc_path FROM file_index_queue WHERE doc_path = '/docs/a.txt' AND flag_dirty = FALSE",
            "INSERT INTO file_index_queue (doc_path, index_type, date_time, data_type, user_id, flag_dirty) "
            "VALUES ('/docs/a.txt', 2, '2026-11-16 01:47:03', 'txt', 7, FALSE)"};
}

INSTANTIATE_TEST_SUITE_P(
    Job, QueryPlansOf,
    testing::Values(Step{"Polling", polling()}, Step{"ReadingAnEntry", job_tests::queueEntry(5)},
                    Step{"LeavingTheQueue", job_tests::leaveQueue(river.path)},
                    Step{"LeavingTheQueueByBothPaths", networkEntry()},
                    Step{"LookingForTheRecord", job_tests::lookForRecord(river.path)},
                    Step{"MakingADocument", job_tests::creation(river)}, Step{"Superseding", supersede()},
                    Step{"Purging", job_tests::purge()}, Step{"ReadingTheTitle", job_tests::readTitle()},
                    Step{"Refreshing", job_tests::refresh(" title = 'a', location_invalid = FALSE")},
                    Step{"MarkingAsFailed", job_tests::markAsFailed()},
                    Step{"AddingWords", job_tests::newWords({"river"}) + job_tests::words({{1, 2, 1, 1, 1}})},
                    Step{"AddingSentences", job_tests::sentences({" 5, 'River', 1"})},
                    Step{"AddingImportantText", job_tests::importantText("heading")},
                    Step{"AddingAnAnnotation", job_tests::annotationSection("comment", 1)},
                    Step{"AddingATag", job_tests::metaTag("user", {"low", "tide"})},
                    Step{"LookingForATag", job_tests::lookForTag()},
                    Step{"ScoringAnnotations", job_tests::annotationPoints("txt", 5)},
                    Step{"Moving", move()}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(Library, QueryPlansOf,
                         testing::Values(Step{"Relevance", relevance()},
                                         Step{"RelevanceOfASearchTerm", searchTerm()},
                                         Step{"Search", search()}, Step{"Queueing", queueing()}),
                         nameOf);

TEST_F(QueryPlans, AStatementThatReadsAGrowingTableWholeIsRefused) {
    EXPECT_THAT(slowLinesOf("SELECT id FROM document_object WHERE title = 'a'"),
                Contains("SCAN document_object"));
    EXPECT_THAT(slowLinesOf("SELECT COUNT(id) AS counted FROM root_word"), Not(IsEmpty()));
    EXPECT_THAT(slowLinesOf("SELECT a.id FROM meta_tags, annotation AS a WHERE meta_tags.type = a.id"),
                Not(IsEmpty()));
}

TEST_F(QueryPlans, TheLoadOfTheCachesReadsEveryWordOnce) {
    for (const std::string& statement : job_tests::loadOfCaches()) {
        for (const std::string& line : slowLinesOf(statement)) {
            EXPECT_EQ(scannedTable(line), "root_word") << statement;
        }
    }
}

TEST_F(QueryPlans, ThePurgeOfWordsLooksEachUpInTheIndexOfHits) {
    EXPECT_THAT(job_tests::loadOfCaches(), Contains(std::string(orphanPurge)));
    EXPECT_THAT(planOf(orphanPurge),
                Contains(HasSubstr("INDEX word_index_id_root_word (ANY(<expr>) AND id_root_word=?)")));
}

TEST_F(QueryPlans, AFewWaitingEntriesAreFoundAmongManyClaimedOnes) {
    connection().beginTrans();
    for (int i = 0; i < 500; ++i) {
        run("INSERT INTO file_index_queue (doc_path, flag_dirty) VALUES ('/docs/" + std::to_string(i) +
            "', " + (i % 250 == 249 ? "FALSE" : "TRUE") + ")");
    }
    connection().commitTrans();
    const std::string query = "SELECT id FROM file_index_queue WHERE flag_dirty = false";
    EXPECT_EQ(texts(query, "id"), (std::vector<std::string>{"250", "500"}));
    EXPECT_THAT(planOf(query), Contains(HasSubstr("INDEX file_index_queue_flag_dirty (flag_dirty=?)")));
}

TEST_F(QueryPlans, TheUsesOfASearchTermNeedNoSorting) {
    EXPECT_THAT(planOf(searchTerm().back()), Not(Contains(HasSubstr("TEMP B-TREE"))));
}

TEST_F(QueryPlans, ADocumentsSubDocumentsAreFoundByIndex) {
    EXPECT_THAT(slowLinesOf("SELECT id FROM document_object WHERE id_parent = 3"), IsEmpty());
}

}  // namespace
