// One queue entry from its claim to its end.
#include "fakes/recording_process.h"
#include "unit/indexer/indexer_fixture.h"

namespace {

using indexer_tests::ScriptedDocument;
using Lines = std::vector<std::string>;
using Rows = std::vector<std::vector<std::string>>;

class QueueJob : public indexer_tests::IndexerTest {
  protected:
    std::string indexed() {
        const auto& calls = library.automation.plugins["Test.Text"].calls;
        return calls.empty() ? "" : calls.front();
    }
    Rows queued() { return library.rows("SELECT doc_path FROM file_index_queue ORDER BY id"); }
};

TEST_F(QueueJob, ANormalJobLeavesTheSwitchIdleAndCountsTheDocument) {
    library.settings.put(infra::masterKey, "DocsIndexedSinceCompaction", 41);
    const auto id = queue("/docs/river.txt");
    EXPECT_TRUE(indexer.DoIndex(id));
    EXPECT_EQ(library.settings.number(infra::indexerKey, "IndexingQueueNumber"), 0);
    EXPECT_EQ(library.settings.text(infra::indexerKey, "IndexingKey"), "");
    EXPECT_EQ(library.settings.number(infra::indexerKey, "DeadMansSwitchSeconds"), 60);
    EXPECT_EQ(library.settings.text(infra::indexerKey, "LastTouch"), "16 Nov 2026 01:47:03");
    EXPECT_EQ(library.settings.number(infra::masterKey, "DocsIndexedSinceCompaction"), 42);
    EXPECT_TRUE(queued().empty());
}

TEST_F(QueueJob, TheSwitchNamesTheEntryAndTheEndOfThePath) {
    const auto id = queue("/docs/a-long-name.txt");
    library.settings.writes.clear();
    indexer.DoIndex(id);
    const Lines first(library.settings.writes.begin(), library.settings.writes.begin() + 4);
    EXPECT_EQ(first, (Lines{"LastTouch=16 Nov 2026 01:47:03", "DeadMansSwitchSeconds=60",
                            "IndexingQueueNumber=" + std::to_string(id), "IndexingKey=g-name.txt"}));
}

TEST_F(QueueJob, AShortPathIsWrittenWhole) {
    const auto id = queue("/a/\xC3\xA9.txt");
    library.settings.writes.clear();
    indexer.DoIndex(id);
    EXPECT_EQ(library.settings.writes[3], "IndexingKey=/a/\xC3\xA9.txt");
}

TEST_F(QueueJob, LogAndStatementsKeepTheTextThatOtherProgramsKnow) {
    const auto id = queue("/docs/O'Brien.txt");
    statements();
    indexer.DoIndex(id);
    const auto run = statements();
    EXPECT_EQ(
        run.front(),
        "SELECT TOP 1 doc_path, index_type, date_time, data_type, user_id FROM file_index_queue WHERE id = " +
            std::to_string(id) + " AND doc_path <> '' AND doc_path <> Null");
    EXPECT_EQ(run.back(), "DELETE * FROM file_index_queue WHERE doc_path = '/docs/O''Brien.txt'");
    Lines own;
    for (const std::string& line : log()) {
        for (const char* start : {"Logic: Do Index", "Logic: Do index complete", "Logic: Retrieve",
                                  "Logic: Index document", "Logic: Finished", "Logic: Delete from"}) {
            if (line.starts_with(start)) {
                own.push_back(line);
            }
        }
    }
    EXPECT_EQ(own, (Lines{"Logic: Do Index: " + std::to_string(id), "Logic: Retrieve from queue",
                          "Logic: Index document: /docs/O'Brien.txt", "Logic: Finished index",
                          "Logic: Delete from queue", "Logic: Do index complete"}));
}

TEST_F(QueueJob, AnEntryWithAnEmptyOrNullPathIsNotFoundAndStaysClaimed) {
    const auto empty = queue("");
    library.exec(
        "INSERT INTO file_index_queue (doc_path, index_type, date_time, data_type, user_id, flag_dirty) "
        "VALUES (NULL, 2, '2026-11-16 01:00:00', 'txt', 7, 1)");
    EXPECT_FALSE(indexer.DoIndex(empty));
    EXPECT_FALSE(indexer.DoIndex(empty + 1));
    EXPECT_FALSE(indexer.DoIndex(999));
    EXPECT_EQ(number("SELECT count(*) FROM file_index_queue WHERE flag_dirty = 1"), 2);
    EXPECT_EQ(library.settings.number(infra::indexerKey, "IndexingQueueNumber"), 0);
    EXPECT_EQ(library.settings.text(infra::indexerKey, "LastTouch"), std::nullopt);
}

TEST_F(QueueJob, TheDocumentsReadingIsAnnouncedOnceBetweenTheEntryAndThePlugin) {
    Lines announced;
    Lines before;
    library.automation.onExpectReading = [&](const std::string& path) {
        announced.push_back(path);
        before = statements();
        EXPECT_EQ(library.automation.plugins["Test.Text"].created, 0);
    };
    queue("/docs/next.txt");
    const auto id = queue(" /docs\\\\river.txt");
    statements();
    EXPECT_TRUE(indexer.DoIndex(id));
    EXPECT_EQ(announced, (Lines{"/docs\\river.txt"}));
    ASSERT_EQ(before.size(), 1U);
    EXPECT_TRUE(before.front().starts_with("SELECT TOP 1 doc_path")) << before.front();
    EXPECT_EQ(indexed(), "SetDocumentID(/docs\\river.txt)");
}

TEST_F(QueueJob, ASecondTryWithTheDefaultPluginAnnouncesNothing) {
    int announced = 0;
    library.automation.onExpectReading = [&](const std::string&) { ++announced; };
    library.automation.plugins["Test.Text"].answer("SetDocumentID", false);
    library.automation.plugins["Test.Text"].answer("GetLastErrorNumber", std::int32_t{5});
    library.automation.plugins["Test.Text"].answer("GetLastErrorString", std::string("no"));
    EXPECT_TRUE(indexer.DoIndex(queue("/docs/river.txt")));
    EXPECT_EQ(announced, 1);
}

TEST_F(QueueJob, AnEntryWithoutAPathAnnouncesNothing) {
    int announced = 0;
    library.automation.onExpectReading = [&](const std::string&) { ++announced; };
    EXPECT_FALSE(indexer.DoIndex(queue("")));
    EXPECT_EQ(announced, 0);
}

TEST_F(QueueJob, DoubledSeparatorsBecomeSingleAndBothPathFormsLeaveTheQueue) {
    library.drives.shares["X:"] = "\\\\srv\\share";
    const auto id = queue("X:\\docs\\\\a.doc");
    queue("X:\\docs\\a.doc");
    queue("\\\\srv\\share\\docs\\a.doc");
    queue("X:\\docs\\b.doc");
    EXPECT_TRUE(indexer.DoIndex(id));
    EXPECT_EQ(indexed(), "SetDocumentID(X:\\docs\\a.doc)");
    // The entry itself was queued under a spelling that is not its path any more; it stays as it was queued.
    EXPECT_EQ(queued(), (Rows{{"X:\\docs\\\\a.doc"}, {"X:\\docs\\b.doc"}}));
}

TEST_F(QueueJob, ANetworkPathKeepsItsTwoSeparatorsAndItsDriveFormLeavesTheQueue) {
    library.drives.shares["X:"] = "\\\\srv\\share";
    const auto id = queue("\\\\srv\\share\\a.doc");
    queue("X:\\a.doc");
    EXPECT_TRUE(indexer.DoIndex(id));
    EXPECT_EQ(indexed(), "SetDocumentID(\\\\srv\\share\\a.doc)");
    EXPECT_TRUE(queued().empty());
}

TEST_F(QueueJob, ADriveWithoutAShareHasOnlyItsPathWithoutTheLetterAsOtherForm) {
    const auto id = queue("C:\\a.doc");
    statements();
    indexer.DoIndex(id);
    EXPECT_EQ(statements().back(),
              "DELETE * FROM file_index_queue WHERE doc_path = 'C:\\a.doc' OR doc_path = '\\a.doc'");
}

TEST_F(QueueJob, BlanksAroundAPathAreTrimmed) {
    indexer.DoIndex(queue("  /docs/a.txt "));
    EXPECT_EQ(indexed(), "SetDocumentID(/docs/a.txt)");
}

TEST_F(QueueJob, DuplicatesQueuedMeanwhileAreDropped) {
    const auto id = queue("/docs/river.txt");
    library.automation.plugins["Test.Text"].methods["GetNumberofMetaTags"] =
        [&](std::span<base::Variant>) -> base::Variant {
        library.exec(
            "INSERT INTO file_index_queue (doc_path, index_type, date_time, data_type, user_id, flag_dirty) "
            "VALUES ('/docs/RIVER.txt', 1, '2026-11-16 01:00:00', 'txt', 7, 0)");
        return std::int32_t{0};
    };
    EXPECT_TRUE(indexer.DoIndex(id));
    EXPECT_TRUE(queued().empty());
}

TEST_F(QueueJob, OnlyTypeOneCreatesANewRecord) {
    indexer.DoIndex(queue("/docs/river.txt", 2));
    indexer.DoIndex(queue("/docs/river.txt", 0));
    EXPECT_EQ(number("SELECT count(*) FROM document_object"), 1);
    indexer.DoIndex(queue("/docs/river.txt", 1));
    EXPECT_EQ(number("SELECT count(*) FROM document_object"), 2);
}

TEST_F(QueueJob, AMovedDocumentIsUpdatedWithoutThePipeline) {
    indexer.DoIndex(queue("/docs/river.txt"));
    library.automation.plugins["Test.Text"].calls.clear();
    EXPECT_TRUE(indexer.DoIndex(queue("/docs/river.txt", 3)));
    EXPECT_TRUE(library.automation.plugins["Test.Text"].calls.empty());
    EXPECT_TRUE(queued().empty());
}

TEST_F(QueueJob, AMoveThatFailsIsIndexedWithoutCreatingANewRecord) {
    EXPECT_TRUE(indexer.DoIndex(queue("/docs/unknown.txt", 3)));
    EXPECT_TRUE(logged("Interest: Indexer::IndexDocument - Starting: /docs/unknown.txt"));
    EXPECT_EQ(number("SELECT count(*) FROM document_object"), 1);
}

TEST_F(QueueJob, AnErrorThatStopsTheJobLeavesTheEntryClaimedAndSaysNothing) {
    library.exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON ascii_sentences BEGIN SELECT RAISE(ABORT, 'refused'); END");
    library.settings.put(infra::masterKey, "DocsIndexedSinceCompaction", 41);
    const auto id = queue("/docs/river.txt");
    EXPECT_FALSE(indexer.DoIndex(id));
    EXPECT_EQ(number("SELECT flag_dirty FROM file_index_queue WHERE id = " + std::to_string(id)), 1);
    EXPECT_EQ(library.settings.number(infra::indexerKey, "IndexingQueueNumber"), 0);
    EXPECT_EQ(library.settings.text(infra::indexerKey, "IndexingKey"), "");
    EXPECT_EQ(library.settings.number(infra::masterKey, "DocsIndexedSinceCompaction"), 41);
    EXPECT_EQ(log().back(), "Logic: Commit sentences");
}

TEST_F(QueueJob, AFullCountOfDocumentsBeginsAnew) {
    library.settings.put(infra::masterKey, "DocsIndexedSinceCompaction", 2147483647);
    EXPECT_TRUE(indexer.DoIndex(queue("/docs/river.txt")));
    EXPECT_EQ(library.settings.number(infra::masterKey, "DocsIndexedSinceCompaction"), 0);
}

TEST_F(QueueJob, WorksOnAConnectionOfItsOwn) {
    const auto id = queue("/docs/river.txt");
    database.finalise();
    EXPECT_TRUE(indexer.DoIndex(id));
}

}  // namespace
