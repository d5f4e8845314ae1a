// The update of a document that has moved.
#include <utility>

#include "base/runtime_error.h"
#include "unit/indexer/indexer_fixture.h"

namespace {

using indexer_tests::ScriptedDocument;
using Rows = std::vector<std::vector<std::string>>;

class MovedDocument : public indexer_tests::IndexerTest {
  protected:
    MovedDocument() {
        indexDocument("/old/heron.txt");
        library.exec("UPDATE document_object SET saved_location = '/new/egret.txt'");
    }
    bool move(const std::string& dataType = "txt") {
        return indexer.UpdateIndexForMove("/new/egret.txt", dataType, 7, database);
    }
    Rows pathWords() {
        return library.rows(
            "SELECT word, first_matching_sentence FROM word_index JOIN root_word ON root_word.id = "
            "id_root_word WHERE comp_type = 2 AND type = (SELECT type FROM search_weight WHERE "
            "description = 'document_path') ORDER BY word");
    }
    Rows otherWords() {
        return library.rows(
            "SELECT word, hit_count, first_matching_sentence FROM word_index JOIN root_word ON "
            "root_word.id = id_root_word WHERE type <> (SELECT type FROM search_weight WHERE "
            "description = 'document_path') ORDER BY 1");
    }
    int errors() {
        int count = 0;
        for (const std::string& line : log()) {
            count += line.starts_with("Error: Update index for Move: ") ? 1 : 0;
        }
        return count;
    }
};

TEST_F(MovedDocument, OnlyThePathWordsChange) {
    const Rows before = otherWords();
    EXPECT_TRUE(move());
    EXPECT_EQ(pathWords(), (Rows{{"egret", "0"}, {"new", "0"}, {"txt", "0"}}));
    EXPECT_EQ(otherWords(), before);
    EXPECT_EQ(errors(), 0);
}

TEST_F(MovedDocument, ThePathsImportantTextIsReplaced) {
    EXPECT_TRUE(move());
    EXPECT_EQ(number("SELECT count(*) FROM important_text WHERE type = (SELECT type FROM search_weight WHERE "
                     "description = 'document_path')"),
              1);
}

TEST_F(MovedDocument, StatementsKeepTheTextThatOtherProgramsKnow) {
    statements();
    move();
    const auto run = statements();
    const auto at = std::find_if(run.begin(), run.end(), [](const auto& s) {
        return s.starts_with("SELECT id FROM document_object");
    });
    ASSERT_GE(std::distance(at, run.end()), 3);
    EXPECT_EQ(run.front(), "SELECT type, description, comp_type FROM search_weight");
    EXPECT_EQ(*at, std::string("SELECT id FROM document_object WHERE ") +
                       " saved_location = '/new/egret.txt'" + " AND location_invalid = FALSE");
    EXPECT_EQ(at[1], std::string("DELETE * FROM word_index WHERE") + " id_document_object = 1" +
                         " AND comp_type = 2 AND" +
                         " type = (SELECT type FROM search_weight WHERE description = 'document_path')");
    EXPECT_EQ(at[2], std::string("DELETE * FROM important_text WHERE") + " id_document = 1" + " AND" +
                         " type = (SELECT type FROM search_weight WHERE description = 'document_path')");
}

TEST_F(MovedDocument, WithoutStoredContextNoSentencesAreWritten) {
    const int before = number("SELECT count(*) FROM ascii_sentences");
    library.settings.put(infra::serviceKey, "StoreContext", 0);
    EXPECT_TRUE(move());
    EXPECT_EQ(number("SELECT count(*) FROM ascii_sentences"), before);
}

TEST_F(MovedDocument, WithStoredContextTheBlankSentencesAreWrittenAgain) {
    EXPECT_TRUE(move());
    EXPECT_EQ(number("SELECT count(*) FROM ascii_sentences WHERE num_sentence < 1"), 4);
}

TEST_F(MovedDocument, ALocationWithoutALiveDocumentFailsOnceAndIsLogged) {
    library.exec("UPDATE document_object SET location_invalid = 1");
    EXPECT_FALSE(move());
    EXPECT_EQ(errors(), 1);
}

TEST_F(MovedDocument, AFailingStatementIsTriedOnceMore) {
    library.exec(
        "CREATE TRIGGER refuse BEFORE DELETE ON important_text BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_FALSE(move());
    EXPECT_EQ(errors(), 2);
}

TEST_F(MovedDocument, AMessageIsAskedForItsPlaceByItsKey) {
    auto& plugin = givePlugin("eml", "Test.Mail", ScriptedDocument());
    plugin.methods["GetDocumentProperty"] = [](std::span<base::Variant> arguments) -> base::Variant {
        return arguments[0].toText() == "source_url" ? "imap://inbox/5" : "Inbox/Otter";
    };
    EXPECT_TRUE(move("eml"));
    EXPECT_EQ(plugin.calls, (std::vector<std::string>{"SetDocumentID(1)", "GetDocumentProperty(source_url)",
                                                      "GetDocumentProperty(document_path)"}));
    EXPECT_EQ(plugin.released, 1);
    EXPECT_EQ(pathWords(), (Rows{{"inbox", "0"}, {"otter", "0"}}));
    EXPECT_EQ(value("SELECT source_url FROM document_object"), "imap://inbox/5");
    EXPECT_TRUE(logged("Logic: Attempting to create plugin: Test.Mail"));
    EXPECT_TRUE(logged("Logic: Created plugin: Test.Mail"));
}

TEST_F(MovedDocument, TheDataTypeOfMessagesIsComparedCaseSensitively) {
    auto& plugin = givePlugin("EML", "Test.Mail", ScriptedDocument());
    EXPECT_TRUE(move("EML"));
    EXPECT_TRUE(plugin.calls.empty());
    EXPECT_EQ(pathWords().size(), 3U);
}

TEST_F(MovedDocument, AMessageWhosePluginFailsTwiceIsNotMoved) {
    auto& plugin = givePlugin("eml", "Test.Mail", ScriptedDocument());
    plugin.fail("SetDocumentID", "gone");
    EXPECT_FALSE(move("eml"));
    EXPECT_EQ(errors(), 2);
    EXPECT_EQ(plugin.released, 1);
}

TEST_F(MovedDocument, AStatementThatSucceedsAtTheSecondTryLeavesOneLine) {
    auto& plugin = givePlugin("eml", "Test.Mail", ScriptedDocument());
    plugin.methods["SetDocumentID"] = [first = true](std::span<base::Variant>) mutable -> base::Variant {
        if (std::exchange(first, false)) {
            throw base::RuntimeError(440, "busy");
        }
        return true;
    };
    EXPECT_TRUE(move("eml"));
    EXPECT_EQ(errors(), 1);
}

TEST_F(MovedDocument, AMessageWithoutAPluginIsNotMoved) {
    EXPECT_FALSE(move("eml"));
    EXPECT_EQ(errors(), 2);
}

TEST_F(MovedDocument, AMessageThatThePluginCannotFindLosesItsPathAndSource) {
    givePlugin("eml", "Test.Mail", ScriptedDocument()).answer("SetDocumentID", false);
    EXPECT_TRUE(move("eml"));
    EXPECT_TRUE(pathWords().empty());
    EXPECT_EQ(value("SELECT source_url FROM document_object"), "");
}

TEST_F(MovedDocument, ASourceAddressWithAQuoteFailsTheUpdate) {
    ScriptedDocument message;
    message.sourceUrl = "imap://O'Brien/5";
    givePlugin("eml", "Test.Mail", message);
    EXPECT_FALSE(move("eml"));
    EXPECT_EQ(errors(), 2);
    EXPECT_EQ(value("SELECT source_url FROM document_object"), "/old/heron.txt");
}

TEST_F(MovedDocument, CachesThatFailToReloadAreLoadedBeforeTheNextDocument) {
    library.exec("ALTER TABLE word_noise RENAME TO away");
    EXPECT_FALSE(move());
    library.exec("ALTER TABLE away RENAME TO word_noise");
    ScriptedDocument noise;
    noise.sentences = {"The river and the boats."};
    givePlugin("txt", "Test.Text", noise);
    indexDocument("/docs/next.txt");
    EXPECT_EQ(number("SELECT count(*) FROM root_word WHERE word IN ('the', 'and')"), 0);
    EXPECT_EQ(number("SELECT count(*) FROM root_word WHERE word = 'river'"), 1);
}

TEST_F(MovedDocument, CachesThatCannotBeReloadedFailTheNextDocumentToo) {
    library.exec("INSERT INTO search_weight(type, description, comp_type) VALUES(901, 'twice', 2)");
    library.exec("INSERT INTO search_weight(type, description, comp_type) VALUES(902, ' TWICE ', 2)");
    EXPECT_FALSE(move());
    const int words = number("SELECT count(*) FROM root_word");
    indexDocument("/docs/next.txt");
    EXPECT_TRUE(
        logged("Error: ERROR Indexing failed - This key is already associated with an element of this "
               "collection"));
    EXPECT_EQ(number("SELECT count(*) FROM root_word"), words);
}

}  // namespace
