// How the database finds what the statements of whole jobs ask for. A library grows for years: no statement
// may read a table that grows with it from end to end.
#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "integration/job/query_plan.h"
#include "unit/indexer/indexer_fixture.h"

namespace {

using indexer_tests::ScriptedDocument;
using job_tests::QueryPlans;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

enum IndexType : int { anew = 1, known = 2, moved = 3 };

class JobPlans : public indexer_tests::IndexerTest {
  protected:
    JobPlans() { recordJobs(); }

    /// The statements of all jobs, each text once and without what has no plan.
    std::set<std::string> recorded;

    std::vector<std::string> refused(QueryPlans& plans) {
        std::vector<std::string> all;
        for (const std::string& statement : recorded) {
            for (const std::string& line : plans.refusedLines(statement)) {
                all.push_back(line + " in: " + statement);
            }
        }
        return all;
    }

  private:
    static ScriptedDocument documentWithEverything() {
        ScriptedDocument document;
        document.importantText = {{"heading", "River rules"}, {"no such kind", "Low water"}};
        document.annotations = {{"Comment", "bridge", "see pier"}, {"general_comment", "", "all of it"}};
        document.metaTags = {{"user", "Low tide"}, {"author", "Ann Heron"}};
        return document;
    }

    void run(const std::string& path, IndexType type, const std::string& dataType = "txt") {
        ASSERT_TRUE(indexer.DoIndex(queue(path, type, dataType))) << path;
    }

    /// New, indexed again, retitled, moved, replaced, failed and nested documents.
    void recordJobs() {
        statements();
        givePlugin("txt", "Test.Text", documentWithEverything());
        run("/docs/o'ki/river.txt", anew);
        run("/docs/o'ki/river.txt", known);
        library.exec("UPDATE document_object SET flag_user_set_title = 1");
        run("/docs/o'ki/river.txt", known);
        run("/docs/o'ki/river.txt", moved);
        run("/docs/o'ki/river.txt", anew);
        run(R"(\\host\share\river.txt)", known);
        library.drives.shares["Q:"] = R"(\\host\share)";
        run(R"(\\host\share\boat.txt)", known);
        runParent();
        runFailing();
        for (std::string& statement : statements()) {
            if (!statement.ends_with(" TRANSACTION")) {
                recorded.insert(std::move(statement));
            }
        }
    }

    void runParent() {
        ScriptedDocument message = documentWithEverything();
        message.subDocuments = {{library.folder.write("attached.txt", "one"), ""}, {"", "/docs/second.txt"}};
        fakes::ScriptedPlugin& mail = givePlugin("eml", "Test.Mail", message);
        mail.methods["GetNumberofSubDocuments"] = [&mail](std::span<base::Variant>) -> base::Variant {
            return mail.created % 3 == 1 ? std::int32_t{2} : std::int32_t{0};
        };
        run("/mail/a.eml", anew, "eml");
        run("/mail/a.eml", known, "eml");
        run("/mail/a.eml", moved, "eml");
    }

    void runFailing() {
        givePlugin("Default", "Test.Default", ScriptedDocument());
        fakes::ScriptedPlugin& refusing = givePlugin("pdf", "Test.Refusing", ScriptedDocument());
        refusing.answer("SetDocumentID", false);
        refusing.answer("GetLastErrorNumber", std::int32_t{5});
        run("/docs/refused.pdf", known, "pdf");
        run("/docs/refused.pdf", known, "pdf");
    }
};

TEST_F(JobPlans, NoStatementOfAJobReadsAGrowingTableFromEndToEnd) {
    QueryPlans plans(library.path);
    ASSERT_GT(recorded.size(), 100U);
    for (const char* head :
         {"DELETE * FROM word_index WHERE id_document_object = ", "INSERT INTO annotation_section",
          "Insert into metatag_entry", "UPDATE document_share SET anno_points", "INSERT INTO prv_history",
          "UPDATE document_object SET flag_indexing_failed = TRUE", "DELETE * FROM file_index_queue",
          "SELECT * FROM prv_rules", "UPDATE document_object SET location_invalid"}) {
        EXPECT_THAT(recorded, Contains(testing::StartsWith(head)));
    }
    EXPECT_THAT(refused(plans), IsEmpty());
}

TEST_F(JobPlans, EveryIndexThatAJobUsesIsMissedWhenItIsGone) {
    QueryPlans plans(library.path);
    std::set<std::string> used;
    for (const std::string& statement : recorded) {
        used.merge(plans.indexes(statement));
    }
    std::size_t dropped = 0;
    for (const std::string& index : used) {
        if (plans.textOfIndex(index).empty() || !plans.isOfGrowingTable(index)) {
            continue;
        }
        // Rolled back rather than made again: what the library knows about the index goes with it.
        plans.exec("BEGIN");
        plans.exec("DROP INDEX " + index);
        EXPECT_THAT(refused(plans), Not(IsEmpty())) << index;
        plans.exec("ROLLBACK");
        ++dropped;
    }
    EXPECT_GE(dropped, 8U);
    EXPECT_THAT(refused(plans), IsEmpty());
}

TEST_F(JobPlans, AStatementThatReadsAGrowingTableFromEndToEndIsRefused) {
    QueryPlans plans(library.path);
    EXPECT_THAT(plans.refusedLines("SELECT id FROM document_object WHERE title = 'a'"),
                Contains("SCAN document_object"));
    EXPECT_THAT(plans.refusedLines("SELECT word FROM root_word"), Contains(HasSubstr("root_word")));
    EXPECT_THAT(plans.refusedLines("SELECT a.id FROM meta_tags, annotation AS a WHERE meta_tags.type = a.id"),
                Not(IsEmpty()));
    EXPECT_THAT(plans.refusedLines("SELECT description FROM search_weight"), IsEmpty());
}

TEST_F(JobPlans, WhatATriggerReadsCountsAsTheStatementsOwn) {
    QueryPlans plans(library.path);
    plans.exec(
        "CREATE TRIGGER busy AFTER INSERT ON word_noise BEGIN UPDATE document_object SET title = '' WHERE "
        "title = NEW.term; END");
    EXPECT_THAT(plans.refusedLines("INSERT INTO word_noise (term) VALUES('the')"),
                Contains("SCAN document_object"));
}

}  // namespace
