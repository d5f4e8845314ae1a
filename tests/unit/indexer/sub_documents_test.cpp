// Attachments: how they are indexed, and what becomes of their temporary files.
#include <filesystem>

#include "base/runtime_error.h"
#include "unit/indexer/indexer_fixture.h"

namespace {

using indexer_tests::ScriptedDocument;
using Lines = std::vector<std::string>;
using Rows = std::vector<std::vector<std::string>>;

class SubDocuments : public indexer_tests::IndexerTest {
  protected:
    fakes::ScriptedPlugin& give(const ScriptedDocument& document) {
        return givePlugin("txt", "Test.Text", document);
    }
    fakes::ScriptedPlugin& plugin() { return library.automation.plugins["Test.Text"]; }
    void indexAttachment(const std::string& path, const std::string& dataType = "txt") {
        auto attachment = job(path);
        attachment.dataType = dataType;
        attachment.isTemporaryFile = true;
        attachment.parentPath = "/docs/parent.txt";
        attachment.subDocumentName = "1";
        indexer.IndexDocument(attachment, database);
    }
    bool anyLineStartsWith(const std::string& start) {
        for (const std::string& line : log()) {
            if (line.starts_with(start)) {
                return true;
            }
        }
        return false;
    }
    std::string temporaryFileOf(const std::string& name) {
        return library.settings.text(infra::temporaryFilesKey, name).value_or("(none)");
    }
};

TEST_F(SubDocuments, SubDocumentsAreKeptUnderTheirParentsPathAndNumber) {
    const std::string first = library.folder.write("attached/first.txt", "one");
    const std::string third = library.folder.write("attached/third.txt", "three");
    ScriptedDocument parent;
    parent.subDocuments = {{first, ""}, {"", "http://elsewhere/second.txt"}, {third, ""}};
    give(parent);
    // The attachments are read through the same plug-in class; they hold no further ones.
    plugin().methods["GetNumberofSubDocuments"] = [this](std::span<base::Variant>) -> base::Variant {
        return plugin().created == 1 ? std::int32_t{3} : std::int32_t{0};
    };
    indexDocument("/docs/parent.txt");
    EXPECT_EQ(library.rows("SELECT saved_location, id_parent FROM document_object ORDER BY id"),
              (Rows{{"/docs/parent.txt", "-1"},
                    {"/docs/parent.txt?attach=1", "1"},
                    {"/docs/parent.txt?attach=2", "1"},
                    {"/docs/parent.txt?attach=3", "1"}}));
    EXPECT_FALSE(std::filesystem::exists(first));
    EXPECT_FALSE(std::filesystem::exists(third));
    EXPECT_TRUE(logged("Logic: Indexer::IndexDocument - Sub Doc: " + first));
    EXPECT_TRUE(logged("Logic: Indexer::IndexDocument - Sub Doc: "));
    EXPECT_TRUE(logged("Interest: Indexer::IndexDocument - Starting: http://elsewhere/second.txt"));
}

TEST_F(SubDocuments, OnlyTheReadingOfTheQueueEntryIsAnnounced) {
    Lines announced;
    library.automation.onExpectReading = [&](const std::string& path) { announced.push_back(path); };
    ScriptedDocument parent;
    parent.subDocuments = {{library.folder.write("attached/first.txt", "one"), ""}};
    give(parent);
    plugin().methods["GetNumberofSubDocuments"] = [this](std::span<base::Variant>) -> base::Variant {
        return plugin().created == 1 ? std::int32_t{1} : std::int32_t{0};
    };
    EXPECT_TRUE(indexer.DoIndex(queue("/docs/parent.txt")));
    EXPECT_EQ(plugin().created, 2);
    EXPECT_EQ(announced, (Lines{"/docs/parent.txt"}));
}

TEST_F(SubDocuments, AttachmentsOfMessagesCanBeSwitchedOffForMessagesOnly) {
    library.settings.put(infra::indexerKey, "IndexEmailAttachments", 0);
    auto& mail = givePlugin("eml", "Test.Mail", ScriptedDocument());
    auto message = job("/docs/a.eml");
    message.dataType = "eml";
    indexer.IndexDocument(message, database);
    EXPECT_EQ(std::count(mail.calls.begin(), mail.calls.end(), "GetNumberofSubDocuments"), 0);
    indexDocument();
    const Lines& calls = plugin().calls;
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "GetNumberofSubDocuments"), 1);
}

TEST_F(SubDocuments, AFailingSubDocumentIsLoggedAndTheNextOneIndexed) {
    ScriptedDocument parent;
    parent.subDocuments = {{"", ""}, {"", "http://second.xyz"}};
    give(parent);
    plugin().methods["GetSubDocumentTempPath"] = [](std::span<base::Variant> arguments) -> base::Variant {
        if (arguments[0].toInt16() == 1) {
            throw base::RuntimeError(440, "broken attachment");
        }
        return "";
    };
    indexDocument();
    EXPECT_TRUE(logged("Error: Failed to index sub-document 1 - broken attachment"));
    EXPECT_TRUE(logged("Interest: Indexer::IndexDocument - Starting: http://second.xyz"));
    EXPECT_TRUE(logged("Logic: Close plugin"));
}

TEST_F(SubDocuments, AnErrorInTheCountOfSubDocumentsIsLoggedAndTheDocumentClosed) {
    plugin().fail("GetNumberofSubDocuments", "cannot count");
    indexDocument();
    EXPECT_TRUE(logged("Error: ERROR Indexing failed - cannot count"));
    EXPECT_TRUE(logged("Logic: Close plugin"));
    EXPECT_TRUE(logged("Interest: Indexer::IndexDocument - Completed: /docs/river.txt"));
}

TEST_F(SubDocuments, ATemporaryFileIsRegisteredWhileItIsIndexedAndThenDeleted) {
    const std::string file = library.folder.write("attached.txt", "text");
    std::string registered;
    plugin().methods["GetNumberofMetaTags"] = [&](std::span<base::Variant>) -> base::Variant {
        registered = temporaryFileOf("16014703");
        return std::int32_t{0};
    };
    indexAttachment(file);
    EXPECT_EQ(registered, file);
    EXPECT_EQ(temporaryFileOf("16014703"), "(none)");
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(SubDocuments, ATemporaryFileThatCannotBeDeletedStaysRegistered) {
    indexAttachment(library.folder / "gone.txt");
    EXPECT_TRUE(logged("Unknown: Indexer.IndexDocument - Could not delete temp file: " +
                       (library.folder / "gone.txt")));
    EXPECT_EQ(temporaryFileOf("16014703"), library.folder / "gone.txt");
    EXPECT_TRUE(anyLineStartsWith("Interest: Indexer::IndexDocument - Completed"));
}

TEST_F(SubDocuments, AnEarlyReturnLeavesTheTemporaryFileToTheNextStart) {
    library.settings.put(std::string(infra::dataTypesKey) + "png", "IndexPlugin", "NULL");
    const std::string file = library.folder.write("attached.png", "picture");
    indexAttachment(file, "png");
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_EQ(temporaryFileOf("16014703"), file);
}

TEST_F(SubDocuments, EveryEarlyReturnLeavesTheTemporaryFile) {
    const std::string file = library.folder.write("attached.xyz", "?");
    const auto stays = [&] { return std::filesystem::exists(file) && temporaryFileOf("16014703") == file; };
    indexAttachment(file, "xyz");  // no plug-in at all
    EXPECT_TRUE(stays());
    auto& refusing = givePlugin("xyz", "Test.Refusing", ScriptedDocument());
    refusing.answer("SetDocumentID", false);
    indexAttachment(file, "xyz");
    EXPECT_TRUE(stays());
    auto& failing = givePlugin("xyz", "Test.Failing", ScriptedDocument());
    failing.answer("GetLastErrorNumber", std::int32_t{5});
    indexAttachment(file, "xyz");
    EXPECT_TRUE(stays());
    EXPECT_FALSE(anyLineStartsWith("Interest: Indexer::IndexDocument - Completed"));
}

TEST_F(SubDocuments, FilesOfOneSecondDoNotPushEachOtherOutOfTheRegister) {
    const std::string first = library.folder.write("first.xyz", "?");
    const std::string second = library.folder.write("second.xyz", "?");
    indexAttachment(first, "xyz");
    indexAttachment(second, "xyz");
    EXPECT_EQ(temporaryFileOf("16014703"), first);
    EXPECT_EQ(temporaryFileOf("16014704"), second);
}

TEST_F(SubDocuments, InheritTheFlagAndTheUserAndTakeTheirTypeFromTheirName) {
    ScriptedDocument parent;
    parent.subDocuments = {{"", "http://elsewhere/inner.abc"}};
    give(parent);
    givePlugin("abc", "Test.Inner", ScriptedDocument());
    auto asNew = job("/docs/parent.txt");
    asNew.createNew = true;
    indexer.IndexDocument(asNew, database);
    indexer.IndexDocument(asNew, database);
    EXPECT_EQ(library.rows("SELECT data_type, id_owning_user, location_invalid FROM document_object WHERE "
                           "saved_location LIKE '%attach%' ORDER BY id"),
              (Rows{{"abc", "7", "1"}, {"abc", "7", "0"}}));
}

TEST_F(SubDocuments, ADocumentThatHoldsItselfEndsAtADepth) {
    ScriptedDocument endless;
    endless.subDocuments = {{"", "/docs/endless.txt"}};
    give(endless);
    indexDocument("/docs/endless.txt");
    EXPECT_TRUE(logged("Error: Failed to index sub-document 1 - sub-documents are nested more than 32 deep"));
    EXPECT_EQ(plugin().created, 33);
    EXPECT_EQ(plugin().released, 33);
}

}  // namespace
