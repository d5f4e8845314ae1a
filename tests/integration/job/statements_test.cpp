// Whole jobs, statement by statement, on a real library.
#include <gtest/gtest.h>

#include <utility>

#include "fakes/test_library.h"
#include "indexer/Indexer.h"
#include "integration/job/expected_statements.h"
#include "integration/job/river_document.h"

namespace {

using namespace job_tests;
using Arguments = std::span<base::Variant>;

constexpr const char* riverPath = "/docs/o''ki/river.txt";  // as it stands in statements

class Statements : public testing::Test, protected job_tests::River {
  protected:
    Statements() : River(riverPath) { givePlugin("txt", "Test.Text"); }

    void givePlugin(const std::string& dataType, const std::string& progId, bool hasExtras = false) {
        library.settings.put(std::string(infra::dataTypesKey) + dataType, "IndexPlugin", progId);
        fakes::ScriptedPlugin& plugin = library.automation.plugins[progId];
        plugin.answer("SetDocumentID", true);
        plugin.answer("GetLastErrorNumber", std::int32_t{0});
        plugin.methods["GetDocumentProperty"] = [this](Arguments arguments) -> base::Variant {
            const std::string name = arguments[0].toText();
            return name == "title"                ? base::Variant("The Ki's river")
                   : name == "data_size"          ? base::Variant(std::int32_t{1000})
                   : name == "last_time_modified" ? lastModified
                                                  : base::Variant();
        };
        plugin.methods["GetNumberOfSentences"] = [this](Arguments) -> base::Variant {
            return static_cast<std::int32_t>(body.size());
        };
        plugin.methods["GetSentenceText"] = [this](Arguments arguments) -> base::Variant {
            return body.at(static_cast<std::size_t>(arguments[0].toInt16() - 1));
        };
        const std::int32_t extras = hasExtras ? 1 : 0;
        for (const char* count :
             {"GetNumberofImportantText", "GetNumberofAnnotations", "GetNumberofMetaTags"}) {
            plugin.answer(count, extras);
        }
        plugin.answer("GetImportantTextText", "River rules");
        plugin.answer("GetImportantTextType", "heading");
        plugin.answer("GetAnnotationType", "Comment");
        plugin.answer("GetAnnotationAnchor", "bridge");
        plugin.answer("GetAnnotationText", "see pier");
        plugin.answer("GetMetaTagText", "Low tide");
        plugin.answer("GetMetaTagType", "user");
        plugin.answer("GetNumberofSubDocuments", std::int32_t{0});
    }

    /// Carries a job out and compares its statements, blank for blank.
    void expectStatements(int indexType, const job_tests::Statements& expected) {
        EXPECT_EQ(lines(statementsOf(indexType)), lines(expected));
    }

    /// Carries a job out and gives its statements.
    job_tests::Statements statementsOf(int indexType, const std::string& path = "/docs/o'ki/river.txt") {
        library.exec(
            "INSERT INTO file_index_queue (doc_path, index_type, date_time, data_type, user_id, flag_dirty) "
            "VALUES ('" +
            base::replaceAll(path, "'", "''") + "', " + std::to_string(indexType) +
            ", '2026-11-16 01:00:00', 'txt', 7, 1)");
        library.trace.clear();
        EXPECT_TRUE(indexer.DoIndex(++lastEntry));
        return std::exchange(library.trace, {});
    }

    base::Variant lastModified = *base::DateTime::parse("2002-03-05 09:07:04");
    std::vector<std::string> body = {"The river Ki rises; a 'q'.", "A boat, a river."};
    fakes::TestLibrary library;
    indexer::Indexer indexer{library.services};
    int lastEntry = 0;
};

TEST_F(Statements, OfANewDocument) {
    expectStatements(1, queueEntry(1) + loadOfCaches() + begin() +
                            creation({riverPath, "The Ki''s river", "05 Mar 2002 09:07:04"}) + commit() +
                            textOfRiver());
}

TEST_F(Statements, OfADocumentThatIsNotKnownYetLookForItFirst) {
    expectStatements(2, queueEntry(1) + loadOfCaches() + lookForRecord(riverPath) +
                            creation({riverPath, "The Ki''s river", "05 Mar 2002 09:07:04"}) + commit() +
                            textOfRiver());
}

TEST_F(Statements, OfADocumentWithoutADateCarryThePresentMoment) {
    lastModified = base::Variant();
    expectStatements(1, queueEntry(1) + loadOfCaches() + begin() +
                            creation({riverPath, "The Ki''s river", "16 Nov 2026 01:47:03"}) + commit() +
                            textOfRiver());
}

TEST_F(Statements, OfADocumentThatIsIndexedAgainPurgeItsRows) {
    statementsOf(1);
    body = {"The boat waits."};
    const std::vector<WordRow> bodyNow = {{1, 2, normalType, boat, 1}, {1, 2, normalType, next, 1}};
    expectStatements(
        2, queueEntry(2) + lookForRecord(riverPath) + purge() + readTitle() +
               refresh(" title = 'The Ki''s river',  data_size = 1000, time_stamp = '05 Mar 2002 "
                       "09:07:04'") +
               commit() + newWords({"waits"}) + importantText("title") + importantText("document_path") +
               words(joined({bodyNow, titleRows(), pathRows()})) + sentences({"15,'The boat waits.',1"}) +
               leaveQueue(riverPath));
}

TEST_F(Statements, OfADocumentWhoseTitleTheUserHasSetLeaveItAlone) {
    statementsOf(1);
    library.exec("UPDATE document_object SET title = 'My boat', flag_user_set_title = 1");
    const std::vector<WordRow> titleNow = {{1, 2, titleType, boat, 0}};
    expectStatements(2, queueEntry(2) + lookForRecord(riverPath) + purge() + readTitle() +
                            refresh(" data_size = 1000, time_stamp = '05 Mar 2002 09:07:04'") + commit() +
                            importantText("title") + importantText("document_path") +
                            words(joined({bodyRows(), titleNow, pathRows()})) + sentences(bodySentences()) +
                            leaveQueue(riverPath));
}

TEST_F(Statements, OfADocumentThatOnlyTheDefaultPluginOpensMarkItAsFailed) {
    givePlugin("Default", "Test.Default");
    fakes::ScriptedPlugin& own = library.automation.plugins["Test.Text"];
    own.answer("SetDocumentID", false);
    own.answer("GetLastErrorNumber", std::int32_t{5});
    own.answer("GetLastErrorString", "not mine");
    expectStatements(1, queueEntry(1) + loadOfCaches() + lookForRecord(riverPath) +
                            creation({riverPath, "The Ki''s river", "05 Mar 2002 09:07:04"}) +
                            markAsFailed() + commit() + textOfRiver());
    expectStatements(
        2, queueEntry(2) + lookForRecord(riverPath) + purge() + readTitle() +
               refresh(" title = 'The Ki''s river',  data_size = 1000, time_stamp = '05 Mar 2002 "
                       "09:07:04', flag_indexing_failed = TRUE") +
               commit() + importantText("title") + importantText("document_path") + commitOfRiver());
}

TEST_F(Statements, OfADocumentThatHasMovedReplaceThePathWordsAlone) {
    statementsOf(1);
    expectStatements(3, queueEntry(2) + loadOfCaches() + forgetPath(riverPath) +
                            importantText("document_path") + words(pathRows()) + sentences({}) +
                            leaveQueue(riverPath));
}

TEST_F(Statements, OfADocumentWithHeadingsCommentsAndTags) {
    givePlugin("txt", "Test.Text", true);
    expectStatements(1, queueEntry(1) + loadOfCaches() + begin() +
                            creation({riverPath, "The Ki''s river", "05 Mar 2002 09:07:04"}) + commit() +
                            textOfRiverWithExtras());
}

}  // namespace
