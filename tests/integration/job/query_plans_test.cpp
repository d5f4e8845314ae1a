// How the database finds what the statements of whole jobs ask for. A library grows for years: no statement
// may read a table that grows with it from end to end.
#include <gmock/gmock.h>

#include <set>
#include <string>

#include "integration/job/query_plan.h"
#include "integration/job/whole_jobs.h"

namespace {

using job_tests::QueryPlans;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class JobPlans : public job_tests::WholeJobs {
  protected:
    JobPlans() {
        statements();
        runJobsOfEveryKind();
        for (const std::string& statement : statements()) {
            if (!statement.ends_with(" TRANSACTION")) {
                recorded.insert(statement);
            }
        }
    }

    /// The statements of all jobs as SQLite runs them.
    std::set<std::string> translated(QueryPlans& plans) {
        std::set<std::string> all;
        for (const std::string& statement : recorded) {
            all.insert(plans.sqlOf(statement));
        }
        return all;
    }

    /// The statements of all jobs, each text once and without what has no plan.
    std::set<std::string> recorded;
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
    EXPECT_THAT(plans.refused(translated(plans)), IsEmpty());
}

TEST_F(JobPlans, EveryIndexThatAJobUsesIsMissedWhenItIsGone) {
    QueryPlans plans(library.path);
    const std::set<std::string> statementsOfJobs = translated(plans);
    const std::set<std::string> used = plans.indexes(statementsOfJobs);
    EXPECT_GE(used.size(), 8U);
    for (const std::string& index : used) {
        EXPECT_THAT(plans.refusedWithout(index, statementsOfJobs), Not(IsEmpty())) << index;
    }
    EXPECT_THAT(plans.refused(statementsOfJobs), IsEmpty());
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

TEST_F(JobPlans, AStatementThatGoesThroughTheGroupsOfAnIndexIsRefused) {
    QueryPlans plans(library.path);
    EXPECT_THAT(plans.refusedLines("SELECT id FROM root_word WHERE word = 'river'"),
                ElementsAre(HasSubstr("root_word")));
    EXPECT_THAT(plans.refusedLines("SELECT hit_count FROM word_index WHERE id_root_word = 1"),
                ElementsAre(HasSubstr("word_index")));
}

TEST_F(JobPlans, AStatementWhosePlanNobodyTellsIsRefused) {
    QueryPlans plans(library.path);
    for (const char* statement : {"DELETE FROM root_word", "PRAGMA quick_check(1)", "ANALYZE", "VACUUM"}) {
        EXPECT_THAT(plans.refusedLines(statement), ElementsAre("no plan")) << statement;
    }
    EXPECT_THAT(plans.refusedLines("INSERT INTO word_noise (term) VALUES('the')"), IsEmpty());
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
