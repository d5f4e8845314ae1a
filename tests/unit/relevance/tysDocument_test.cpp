#include "relevance/tysDocument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/runtime_error.h"
#include "fakes/test_library.h"

namespace {

using base::DateTime;
using base::Variant;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class TysDocument : public ::testing::Test {
  protected:
    void SetUp() override { database.initialise(); }

    Variant create(const std::string& title, const std::string& dataType = "txt") {
        return relevance::createDocument("url", title, date, dataType, "/d/a.txt", 1, false, 0, 1, database);
    }

    fakes::TestLibrary library;
    infra::tysDataBase database{library.services};
    DateTime date = *DateTime::parse("2002-03-05 09:07:04");
};

TEST_F(TysDocument, WritesTheDocumentInOneStatementAndReadsItsKey) {
    const Variant key = relevance::createDocument("http://x/o'b", "O'Brien's notes", date, "eml",
                                                  "/d/it's.eml", 1234, true, -1, 7, database);
    EXPECT_THAT(
        library.trace,
        ElementsAre("INSERT INTO document_object (source_url,first_saved, title, data_type, saved_location, "
                    "data_size, snapshot, time_stamp, id_parent, id_owning_user ) VALUES ('http://x/o''b',"
                    "'16 Nov 2026 01:47:03', 'O''Brien''s notes', 'eml', '/d/it''s.eml', 1234, true, "
                    "'05 Mar 2002 09:07:04', -1, 7 ) ",
                    "SELECT @@IDENTITY AS id_document FROM document_object"));
    EXPECT_EQ(key, Variant(std::int32_t{1}));
    EXPECT_THAT(
        library.rows("SELECT id, source_url, first_saved, title, data_type, saved_location, data_size, "
                     "snapshot, time_stamp, id_parent, id_owning_user FROM document_object"),
        ElementsAre(ElementsAre("1", "http://x/o'b", "2026-11-16 01:47:03", "O'Brien's notes", "eml",
                                "/d/it's.eml", "1234", "1", "2002-03-05 09:07:04", "-1", "7")));
    EXPECT_THAT(library.logLines(), IsEmpty());
}

TEST_F(TysDocument, GivesEveryDocumentAKeyOfItsOwn) {
    EXPECT_EQ(create("first").toInt32(), 1);
    EXPECT_EQ(create("second").toInt32(), 2);
    EXPECT_EQ(library.value("SELECT title FROM document_object WHERE id = 2"), "second");
}

TEST_F(TysDocument, MakesADocumentThatIsLive) {
    create("title");
    EXPECT_THAT(library.rows("SELECT location_invalid, location_invalid_date, flag_user_set_title, "
                             "flag_indexing_failed FROM document_object"),
                ElementsAre(ElementsAre("0", "NULL", "0", "0")));
}

TEST_F(TysDocument, CutsTheTitleTo250Characters) {
    const std::string wide = "é";
    std::string title;
    for (int i = 0; i < 300; ++i) {
        title += wide;
    }
    create(title);
    EXPECT_EQ(library.value("SELECT title FROM document_object"), title.substr(0, 250 * wide.size()));
}

TEST_F(TysDocument, KeepsAQuoteAtTheCut) {
    create(std::string(249, 'x') + "'" + std::string(50, 'y'));
    EXPECT_EQ(library.value("SELECT title FROM document_object"), std::string(249, 'x') + "'");
}

TEST_F(TysDocument, CutsTheDataTypeToThreeCharacters) {
    create("title", "html");
    EXPECT_EQ(library.value("SELECT data_type FROM document_object"), "htm");
}

TEST_F(TysDocument, WritesTheSnapshotAsAWord) {
    relevance::createDocument("", "t", date, "txt", "p", 0, true, 0, 1, database);
    EXPECT_THAT(library.trace.at(0), HasSubstr("'p', 0, true, '05 Mar 2002"));
    relevance::createDocument("", "t", date, "txt", "p", 0, false, 0, 1, database);
    EXPECT_THAT(library.trace.at(2), HasSubstr("'p', 0, false, '05 Mar 2002"));
    EXPECT_THAT(library.rows("SELECT snapshot FROM document_object ORDER BY id"),
                ElementsAre(ElementsAre("1"), ElementsAre("0")));
}

TEST_F(TysDocument, ReplacesAZeroDateForTheCallerTooAndSaysSoOnce) {
    date = DateTime();
    create("title");
    EXPECT_EQ(date, library.clock.moment);
    EXPECT_EQ(library.value("SELECT time_stamp FROM document_object"), "2026-11-16 01:47:03");
    EXPECT_THAT(library.logLines(), ElementsAre("Logic: tysDocument.createDocument - 0 time_stamp, reset."));
}

TEST_F(TysDocument, LogsAFailedInsertAndGivesAnEmptyKey) {
    library.exec("DROP TABLE document_object");
    date = DateTime();
    EXPECT_TRUE(create("title").isEmpty());
    EXPECT_EQ(date, library.clock.moment);
    ASSERT_EQ(library.logLines().size(), 2U);
    EXPECT_THAT(library.logLines()[1], ::testing::StartsWith("Error: tysDocument.createDocument - "));
    EXPECT_THAT(library.logLines()[1], HasSubstr("document_object"));
}

TEST_F(TysDocument, GivesAnEmptyKeyWithoutAConnection) {
    database.finalise();
    EXPECT_TRUE(create("title").isEmpty());
    EXPECT_THAT(library.logLines(),
                ElementsAre("Error: tysDocument.createDocument - Object variable not set"));
}

TEST_F(TysDocument, WritesTheShareInOneStatement) {
    relevance::createDocumentShare(12, 7, 3, database);
    EXPECT_THAT(library.trace,
                ElementsAre("INSERT INTO document_share (id_document, id_user, id_prv ) VALUES "
                            "(12, 7, 3 ) "));
    EXPECT_THAT(library.rows("SELECT id_document, id_user, id_prv, id_annotation FROM document_share"),
                ElementsAre(ElementsAre("12", "7", "3", "-1")));
}

TEST_F(TysDocument, RaisesTheErrorOfAShareThatCannotBeWritten) {
    library.exec("DROP TABLE document_share");
    EXPECT_THROW(relevance::createDocumentShare(12, 7, 3, database), base::RuntimeError);
    EXPECT_THAT(library.logLines(), IsEmpty());
}

}  // namespace
