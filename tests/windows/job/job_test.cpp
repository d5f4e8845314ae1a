// Whole jobs late bound: the queue read through ADO, the document through a plug-in, the settings from the
// registry. Statement by statement they are those of every other engine.
#include <gmock/gmock.h>

#include "infra/tysDataBase.h"
#include "windows/ado/ado_library.h"
#include "windows/job/job_fixture.h"

namespace job_tests {
namespace {

class WindowsJob : public JobFixture {
  protected:
    [[nodiscard]] NewDocument riverRecord() const {
        return {"docs\\o''ki\\river.txt", "The Ki''s river", "05 Mar 2002 09:07:04"};
    }
    Statements newRiver() {
        return queueEntry(1) + loadOfCaches() + begin() + creation(riverRecord()) + commit();
    }
};

TEST_P(WindowsJob, OfANewDocumentSaysWhatItSaysEverywhere) {
    expectStatements(1, newRiver() + textOfRiver());
}

TEST_P(WindowsJob, OfADocumentWithHeadingsCommentsAndTagsSaysWhatItSaysEverywhere) {
    writeRiver("# River rules\n> bridge | see pier\n@user Low tide\n");
    expectStatements(1, newRiver() + textOfRiverWithExtras());
}

TEST_P(WindowsJob, OfADocumentThatIsIndexedAgainPurgesItsRows) {
    statementsOf(1);
    expectStatements(
        2, queueEntry(2) + lookForRecord(riverRecord().path) + purge() + readTitle() +
               refresh(" title = 'The Ki''s river',  data_size = 1000, time_stamp = '05 Mar 2002 "
                       "09:07:04'") +
               commit() + importantText("title") + importantText("document_path") + commitOfRiver());
}

TEST_P(WindowsJob, OfADocumentThatHasMovedReplacesThePathWordsAlone) {
    statementsOf(1);
    expectStatements(3, queueEntry(2) + loadOfCaches() + forgetPath(riverRecord().path) +
                            importantText("document_path") + words(pathRows()) + sentences({}) +
                            leaveQueue(riverRecord().path));
}

TEST_P(WindowsJob, OfAMailThatHasMovedAsksForItsPlaceByTheKeyOfItsRecord) {
    statementsOf(1);
    registerPlugin("eml", "TyTest.Mail");
    const std::string key = rows("SELECT id FROM document_object", {"id"}).at(0);
    infra::tysDataBase database(*services);
    database.initialise();
    EXPECT_TRUE(indexer->UpdateIndexForMove(riverPath, "eml", 7, database)) << logText();
    EXPECT_EQ(rows("SELECT source_url FROM document_object", {"source_url"}),
              Statements{"mail://archive/" + key});
    EXPECT_THAT(rows("SELECT word FROM root_word", {"word"}), testing::Contains("archive"));
}

TEST_P(WindowsJob, ReadsAPluginThatStreamsItsSentences) {
    registerPlugin("txt", "TyTest.Stream");
    expectStatements(1, newRiver() + textOfRiver());
}

TEST_P(WindowsJob, LogsWhyAPluginCannotBeCreated) {
    registerPlugin("txt", "TyTest.Nothing");
    statementsOf(1);
    EXPECT_NE(logText().find(
                  "ERROR Indexing failed - The automation object \"TyTest.Nothing\" is not registered: "),
              std::string::npos)
        << logText();
    EXPECT_EQ(rows("SELECT COUNT(id) AS n FROM document_object", {"n"}), Statements{"0"});
}

TEST_P(WindowsJob, LogsTheErrorOfAnObjectThatIsNoPlugin) {
    registerPlugin("txt", "TyTest.Probe");
    statementsOf(1);
    EXPECT_NE(logText().find("SetDocumentID failed. - TyTest.Probe.SetDocumentID: "), std::string::npos)
        << logText();
}

TEST_P(WindowsJob, LeavesTheRowsOfTheDocument) {
    writeRiver("# River rules\n> bridge | see pier\n@user Low tide\n");
    statementsOf(1);
    EXPECT_EQ(rows("SELECT saved_location, title, data_type, data_size, id_owning_user, time_stamp "
                   "FROM document_object",
                   {"saved_location", "title", "data_type", "data_size", "id_owning_user", "time_stamp"}),
              Statements{"docs\\o'ki\\river.txt The Ki's river txt 1000 7 2002-03-05 09:07:04"});
    EXPECT_EQ(rows("SELECT word FROM root_word ORDER BY id", {"word"}),
              (Statements{"river", "ki", "rises", "boat", "docs", "txt", "rules", "bridge", "see", "pier",
                          "low", "tide"}));
    EXPECT_EQ(rows("SELECT content FROM ascii_sentences ORDER BY num_sentence", {"content"}),
              (Statements{" ", " ", "The river Ki rises; a 'q'.", "A boat, a river.", "River rules", "bridge",
                          "see pier"}));
    EXPECT_EQ(rows("SELECT COUNT(id_root_word) AS n FROM word_index", {"n"}), Statements{"17"});
    EXPECT_EQ(rows("SELECT last_prv FROM prv", {"last_prv"}), Statements{"100"});
    EXPECT_EQ(rows("SELECT anno_points FROM document_share", {"anno_points"}), Statements{"11"});
    EXPECT_EQ(rows("SELECT COUNT(id) AS n FROM file_index_queue", {"n"}), Statements{"0"});
}

TEST_P(WindowsJob, IndexesADocumentInTheDocumentAndDeletesItsFileThoughItIsReadOnly) {
    const std::string letter = work.folder.write("letter.txt", "Title: Letter\nThe boat sails.\n");
    std::filesystem::permissions(letter, std::filesystem::perms::owner_read);
    writeRiver("+ letter.txt\n");
    statementsOf(1);
    EXPECT_EQ(
        rows("SELECT title, saved_location FROM document_object ORDER BY id", {"title", "saved_location"}),
        (Statements{"The Ki's river docs\\o'ki\\river.txt",
                    "The Ki's river - Letter docs\\o'ki\\river.txt?attach=1"}));
    EXPECT_FALSE(std::filesystem::exists(letter)) << logText();
    std::string name;
    platform::ValueType type{};
    EXPECT_FALSE(services->registry.EnumValues(platform::RootKey::currentUser, infra::temporaryFilesKey, 0,
                                               name, type));
}

TEST_P(WindowsJob, OpensTheLibraryWithTheBuiltInLogIn) {
    statementsOf(1);
    EXPECT_EQ(engine->asked.dataSource, made.library->settings().dataSource);
    EXPECT_EQ(engine->asked.user.size(), 6U);
    EXPECT_EQ(engine->asked.password.size(), 10U);
}

INSTANTIATE_TEST_SUITE_P(StandIn, WindowsJob, ::testing::Values(&ado_tests::standInLibrary));
INSTANTIATE_TEST_SUITE_P(Jet, WindowsJob, ::testing::Values(&ado_tests::jetLibrary));

}  // namespace
}  // namespace job_tests
