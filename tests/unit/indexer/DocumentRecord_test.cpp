// Document setup: finding, purging, refreshing and creating a document's record.
#include <filesystem>

#include "unit/indexer/indexer_fixture.h"

namespace {

using indexer_tests::ScriptedDocument;
using Rows = std::vector<std::vector<std::string>>;

class DocumentSetup : public indexer_tests::IndexerTest {
  protected:
    void setTitle(const std::string& title) {
        ScriptedDocument document;
        document.title = title;
        givePlugin("txt", "Test.Text", document);
    }
    void indexAs(const std::string& sourceUrl) {
        ScriptedDocument document;
        document.sourceUrl = sourceUrl;
        givePlugin("txt", "Test.Text", document);
        indexDocument();
    }
};

TEST_F(DocumentSetup, ANewDocumentGetsItsRecordRelevanceValueAndShare) {
    indexDocument();
    EXPECT_EQ(
        library.rows("SELECT source_url, title, data_type, saved_location, data_size, snapshot, time_stamp, "
                     "first_saved, id_parent, id_owning_user, location_invalid, flag_user_set_title, "
                     "flag_indexing_failed FROM document_object"),
        (Rows{{"/docs/river.txt", "A title", "txt", "/docs/river.txt", "1000", "0", "2002-03-05 09:07:04",
               "2026-11-16 01:47:03", "-1", "7", "0", "0", "0"}}));
    EXPECT_EQ(library.rows("SELECT id_document, id_user, id_prv FROM document_share"),
              (Rows{{"1", "7", "1"}}));
    EXPECT_EQ(number("SELECT count(*) FROM prv"), 1);
    EXPECT_EQ(value("SELECT action_description FROM prv_history"), "Document Created");
}

TEST_F(DocumentSetup, ADocumentIndexedAgainKeepsItsRecord) {
    indexDocument();
    indexDocument();
    EXPECT_EQ(number("SELECT count(*) FROM document_object"), 1);
    EXPECT_EQ(number("SELECT count(*) FROM document_share"), 1);
    EXPECT_EQ(number("SELECT count(*) FROM ascii_sentences WHERE num_sentence = 1"), 1);
}

TEST_F(DocumentSetup, OfTwoValidRowsTheOneWithTheSameSourceIsReusedAndTheOtherMadeStale) {
    indexAs("http://a");
    library.exec(
        "INSERT INTO document_object(source_url, saved_location, location_invalid) VALUES('http://b', "
        "'/docs/river.txt', 0)");
    indexAs("http://b");
    EXPECT_EQ(
        library.rows("SELECT id, location_invalid, location_invalid_date FROM document_object ORDER BY id"),
        (Rows{{"1", "1", "2026-11-16 01:47:03"}, {"2", "0", "NULL"}}));
    EXPECT_EQ(number("SELECT count(*) FROM word_index WHERE id_document_object = 2 AND id_root_word = "
                     "(SELECT id FROM root_word WHERE word='boats')"),
              1);
}

TEST_F(DocumentSetup, WithTheCreateNewFlagEveryRowAtTheLocationIsInvalidated) {
    indexDocument();
    library.exec(
        "INSERT INTO document_object(source_url, saved_location, location_invalid) VALUES('http://b', "
        "'/docs/river.txt', 0)");
    statements();
    auto again = job("/docs/river.txt");
    again.createNew = true;
    indexer.IndexDocument(again, database);
    EXPECT_EQ(
        library.rows("SELECT id, location_invalid, location_invalid_date FROM document_object ORDER BY id"),
        (Rows{{"1", "1", "2026-11-16 01:47:03"}, {"2", "1", "2026-11-16 01:47:03"}, {"3", "0", "NULL"}}));
    for (const std::string& statement : statements()) {
        EXPECT_FALSE(statement.starts_with("SELECT id, source_url FROM document_object")) << statement;
    }
}

TEST_F(DocumentSetup, APluginTitleReplacesAnOrdinaryOneCutTo250Characters) {
    indexDocument();
    setTitle(std::string(300, 't'));
    indexDocument();
    EXPECT_EQ(value("SELECT title FROM document_object"), std::string(250, 't'));
}

TEST_F(DocumentSetup, AUserSetTitleSurvivesAndIsTheOneThatIsIndexed) {
    indexDocument();
    library.exec("UPDATE document_object SET title = 'Chosen heron', flag_user_set_title = 1");
    setTitle("Replaced");
    indexDocument();
    EXPECT_EQ(value("SELECT title FROM document_object"), "Chosen heron");
    EXPECT_EQ(number("SELECT count(*) FROM word_index WHERE id_root_word = (SELECT id FROM root_word WHERE "
                     "word='heron')"),
              1);
    EXPECT_EQ(number("SELECT count(*) FROM root_word WHERE word='replaced'"), 0);
}

TEST_F(DocumentSetup, WhatUsersAddedSurvivesAReindexing) {
    indexDocument();
    const auto typeOf = [this](const std::string& name) {
        return value("SELECT type FROM search_weight WHERE description='" + name + "'");
    };
    const auto addWord = [this](int word, int component, const std::string& type) {
        library.exec(
            "INSERT INTO word_index(id_document_object, hit_count, comp_type, type, id_root_word, "
            "first_matching_sentence) VALUES(1, 1, " +
            std::to_string(component) + ", " + type + ", " + std::to_string(word) + ", -1)");
    };
    addWord(901, 4, typeOf("user"));
    addWord(902, 3, typeOf("external_comment"));
    addWord(903, 4, typeOf("external_comment"));
    for (const char* kind : {"user", "anti", "keywords"}) {
        library.exec(
            "INSERT INTO meta_tags(id_document_share, type) SELECT 1, type FROM search_weight WHERE "
            "comp_type=4 AND description='" +
            std::string(kind) + "'");
    }
    library.exec("INSERT INTO important_text(id_document, type) VALUES(1, 99)");
    indexDocument();
    EXPECT_EQ(library.rows("SELECT id_root_word FROM word_index WHERE id_root_word > 900 ORDER BY 1"),
              (Rows{{"901"}, {"902"}}));
    EXPECT_EQ(
        library.rows(
            "SELECT description FROM meta_tags JOIN search_weight USING(type) WHERE comp_type=4 ORDER BY 1"),
        (Rows{{"anti"}, {"user"}}));
    EXPECT_EQ(number("SELECT count(*) FROM important_text WHERE type=99"), 0);
}

TEST_F(DocumentSetup, PurgeAndRefreshKeepTheTextThatOtherProgramsKnow) {
    indexDocument("/docs/O'Brien.txt");
    statements();
    indexDocument("/docs/O'Brien.txt");
    const auto run = statements();
    const std::vector<std::string> setup(run.begin(), run.begin() + 10);
    EXPECT_EQ(setup,
              (std::vector<std::string>{
                  "BEGIN TRANSACTION",
                  std::string("SELECT id, source_url FROM document_object WHERE ") + " saved_location = '" +
                      "/docs/O''Brien.txt" + "' AND location_invalid = FALSE",
                  "DELETE * FROM ascii_sentences WHERE id_document_object = 1",
                  std::string("DELETE * FROM word_index WHERE id_document_object = ") + "1" + " AND (" +
                      " word_index.comp_type <> " + "4" + " OR word_index.type NOT IN" +
                      " (SELECT type FROM search_weight WHERE  description = 'user'))" + " AND (" +
                      " word_index.comp_type <> " + "3" + " OR word_index.type NOT IN" +
                      " (SELECT type FROM search_weight WHERE  description = 'external_comment'))",
                  "DELETE * FROM important_text WHERE id_document = 1",
                  std::string("DELETE * FROM annotation_section WHERE id_document_share in ") +
                      " (select id_document from document_share " + "  where id_document=" + "1" +
                      " and id_user=" + "7" + ")",
                  std::string("DELETE * FROM meta_tags WHERE id_document_share IN ") +
                      " (SELECT id FROM document_share WHERE id_document=" + "1" + " AND id_user=" + "7" +
                      ")" + " AND type NOT IN ( SELECT type FROM search_weight WHERE comp_type = 4" +
                      " AND (description = 'user' OR description = 'anti') )",
                  std::string("SELECT flag_user_set_title, title FROM document_object") + " WHERE id = 1",
                  std::string("UPDATE document_object SET") + " title = '" + "A title" + "', " +
                      " data_size = " + "1000" + ", time_stamp = '" + "05 Mar 2002 09:07:04" + "'" +
                      " WHERE " + "id = 1",
                  "COMMIT TRANSACTION"}));
}

TEST_F(DocumentSetup, ADateThatThePluginDoesNotKnowIsThePresentMoment) {
    ScriptedDocument document;
    document.lastModified = "no date";
    givePlugin("txt", "Test.Text", document);
    indexDocument();
    EXPECT_EQ(value("SELECT time_stamp FROM document_object"), "2026-11-16 01:47:03");
    EXPECT_TRUE(logged("Logic: tysDocument.createDocument - 0 time_stamp, reset."));
    library.clock.advance(3600);
    indexDocument();
    EXPECT_EQ(value("SELECT time_stamp FROM document_object"), "2026-11-16 02:47:03");
}

TEST_F(DocumentSetup, TheLogFollowsTheCreationOfARecord) {
    indexDocument();
    const auto lines = log();
    const auto start = std::find(lines.begin(), lines.end(), "Logic: Document Setup");
    ASSERT_GE(std::distance(start, lines.end()), 7);
    EXPECT_EQ(
        std::vector<std::string>(start, start + 7),
        (std::vector<std::string>{
            "Logic: Document Setup", "Logic: CD: Doc Setup - Start", "Logic: CD: Doc Setup - Date",
            "Logic: CD: Doc Setup - Purged previous instances",
            "Logic: CD: Doc Setup - (creating) /docs/river.txt~A title~2002-03-05 "
            "09:07:04~txt~/docs/river.txt~1000~False~-1~7",
            "Logic: CD: Doc Setup - Document Created", "Logic: CD: Doc Setup - Created PRV and Doc Share"}));
}

TEST_F(DocumentSetup, AnnotationSectionsArePurgedByTheDocumentsKey) {
    library.exec("INSERT INTO document_share(id_document, id_user, id_prv) VALUES(90, 7, 1)");
    indexDocument();  // document 1, share 2
    library.exec("INSERT INTO annotation_section(id_document_share, type, sequence) VALUES(1, 1, 1)");
    library.exec("INSERT INTO annotation_section(id_document_share, type, sequence) VALUES(2, 1, 1)");
    indexDocument();
    EXPECT_EQ(library.rows("SELECT id_document_share FROM annotation_section"), (Rows{{"2"}}));
}

TEST_F(DocumentSetup, AStaleRowIsMarkedByAStatementOfItsOwn) {
    indexAs("http://a");
    statements();
    indexAs("http://b");
    EXPECT_EQ(statements()[2], std::string("UPDATE document_object SET location_invalid = TRUE, "
                                           "location_invalid_date = '") +
                                   "2026-11-16 01:47:03" + "' WHERE id = " + "1");
}

class SubDocumentTitle : public DocumentSetup {
  protected:
    /// Indexes attachment 3 of /docs/parent.txt without a title of its own, and gives its title.
    std::string titleOf(const std::string& path) {
        ScriptedDocument parent;
        parent.title = "Parent";
        givePlugin("txt", "Test.Text", parent);
        indexDocument("/docs/parent.txt");
        setTitle("");
        auto attachment = job(path);
        attachment.parentPath = "/docs/parent.txt";
        attachment.subDocumentName = "3";
        attachment.idParent = 1;
        indexer.IndexDocument(attachment, database);
        return value("SELECT title FROM document_object WHERE saved_location = '/docs/parent.txt?attach=3'");
    }
};

TEST_F(SubDocumentTitle, DropsTheTimePrefixAndStandsBehindTheParents) {
    EXPECT_EQ(titleOf("C:\\temp\\20021105123456report.doc"), "Parent - report");
}

TEST_F(SubDocumentTitle, TheParentsTitleIsLookedUpByItsLocation) {
    titleOf("report.doc");
    const auto run = statements();
    EXPECT_NE(std::find(run.begin(), run.end(),
                        "SELECT title FROM document_object WHERE saved_location = '/docs/parent.txt' AND "
                        "location_invalid = false"),
              run.end());
}

TEST_F(SubDocumentTitle, IsFoundBehindTheSystemsOwnSeparator) {
    const bool slash = std::filesystem::path::preferred_separator == '/';
    EXPECT_EQ(titleOf("/tmp/20021105123456report.doc"), slash ? "Parent - report" : "Parent - Attachment: 3");
}

TEST_F(SubDocumentTitle, KeepsANameOfFourteenCharacters) {
    EXPECT_EQ(titleOf("C:\\temp\\20021105123456.doc"), "Parent - 20021105123456");
}

TEST_F(SubDocumentTitle, KeepsANameWhoseFourteenthCharacterIsNoDigit) {
    EXPECT_EQ(titleOf("C:\\temp\\2002110512345xreport.doc"), "Parent - 2002110512345xreport");
}

TEST_F(SubDocumentTitle, OfAPathWithoutASeparatorNamesTheAttachment) {
    EXPECT_EQ(titleOf("report.doc"), "Parent - Attachment: 3");
}

}  // namespace
