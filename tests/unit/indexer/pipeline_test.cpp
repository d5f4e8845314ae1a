// One document's way through the pipeline.
#include "base/runtime_error.h"
#include "fakes/recording_process.h"
#include "unit/indexer/indexer_fixture.h"

namespace {

using indexer_tests::ScriptedDocument;
using Lines = std::vector<std::string>;
using Rows = std::vector<std::vector<std::string>>;

class Pipeline : public indexer_tests::IndexerTest {
  protected:
    fakes::ScriptedPlugin& give(const ScriptedDocument& document) {
        return givePlugin("txt", "Test.Text", document);
    }
    fakes::ScriptedPlugin& plugin() { return library.automation.plugins["Test.Text"]; }
    void useDefault(const std::string& progId) {
        library.settings.put(std::string(infra::dataTypesKey) + "Default", "IndexPlugin", progId);
    }
    bool anyLineStartsWith(const std::string& start) {
        for (const std::string& line : log()) {
            if (line.starts_with(start)) {
                return true;
            }
        }
        return false;
    }
};

TEST_F(Pipeline, AWholeDocumentIsLoggedStepByStep) {
    indexDocument();
    EXPECT_EQ(log(), (Lines{"Interest: Indexer::IndexDocument - Starting: /docs/river.txt",
                            "Logic: Attempting to create plugin: Test.Text",
                            "Logic: Created plugin: Test.Text",
                            "Logic: Document Opened",
                            "Logic: Document Setup",
                            "Logic: CD: Doc Setup - Start",
                            "Logic: CD: Doc Setup - Date",
                            "Logic: CD: Doc Setup - Purged previous instances",
                            "Logic: CD: Doc Setup - (creating) /docs/river.txt~A title~2002-03-05 "
                            "09:07:04~txt~/docs/river.txt~1000~False~-1~7",
                            "Logic: CD: Doc Setup - Document Created",
                            "Logic: CD: Doc Setup - Created PRV and Doc Share",
                            "Logic: Start Normal",
                            "Logic: Normal sentences 2",
                            "Logic: Start Important",
                            "Logic: End Important",
                            "Logic: Start Anno",
                            "Logic: End Anno",
                            "Logic: Start Meta",
                            "Logic: End Meta",
                            "Logic: Commit Words",
                            "Logic: End Commit Words",
                            "Logic: Commit sentences",
                            "Logic: End Commit Sentences",
                            "Logic: Close plugin",
                            "Interest: Indexer::IndexDocument - Completed: /docs/river.txt"}));
}

TEST_F(Pipeline, ThePluginIsCalledInTheOrderOfTheContract) {
    auto& calls = give(ScriptedDocument()).calls;
    calls.clear();
    indexDocument();
    EXPECT_EQ(calls,
              (Lines{"SetDocumentID(/docs/river.txt)", "GetDocumentProperty(source_url)",
                     "GetLastErrorNumber", "GetDocumentProperty(data_size)", "GetDocumentProperty(title)",
                     "GetDocumentProperty(last_time_modified)", "GetNumberOfSentences", "GetSentenceText(1)",
                     "GetSentenceText(2)", "GetNumberofImportantText", "GetLastErrorNumber",
                     "GetNumberofAnnotations", "GetLastErrorNumber", "GetNumberofMetaTags",
                     "GetLastErrorNumber", "GetNumberofSubDocuments"}));
    EXPECT_EQ(plugin().created, plugin().released);
}

TEST_F(Pipeline, APluginThatDoesNotKnowItsCountIsReadSentenceBySentence) {
    ScriptedDocument document;
    document.countIsKnown = false;
    give(document);
    indexDocument();
    const Lines& calls = plugin().calls;
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "MoreSentences"), 3);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "GetNextSentence"), 2);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "GetSentenceText(1)"), 0);
    EXPECT_TRUE(logged("Logic: Normal sentences -1"));
    EXPECT_EQ(
        library.rows("SELECT num_sentence, content FROM ascii_sentences WHERE num_sentence > 0 ORDER BY 1"),
        (Rows{{"1", "The river rises early."}, {"2", "Boats go down the river."}}));
}

TEST_F(Pipeline, ACountOfZeroMakesNoItemCall) {
    ScriptedDocument document;
    document.sentences.clear();
    give(document);
    indexDocument();
    for (const std::string& call : plugin().calls) {
        EXPECT_FALSE(call.ends_with("(1)")) << call;
    }
}

TEST_F(Pipeline, MoreSentencesThanTheLibraryCanNumberEndThePhases) {
    give(ScriptedDocument());
    plugin().answer("GetNumberOfSentences", std::int32_t{40000});
    indexDocument();
    EXPECT_TRUE(logged("Error: ERROR Indexing failed - Overflow"));
    EXPECT_EQ(number("SELECT count(*) FROM ascii_sentences"), 2);
}

TEST_F(Pipeline, SentenceNumbersGoOnAfterTheBody) {
    ScriptedDocument document;
    document.importantText = {{"heading", "Rapids"}};
    document.annotations = {{"comment", "weir", "salmon leap"}};
    document.metaTags = {{"keywords", "angling"}};
    give(document);
    indexDocument();
    EXPECT_EQ(library.rows("SELECT num_sentence, content FROM ascii_sentences ORDER BY 1"),
              (Rows{{"-1", " "},
                    {"0", " "},
                    {"1", "The river rises early."},
                    {"2", "Boats go down the river."},
                    {"3", "Rapids"},
                    {"4", "weir"},
                    {"5", "salmon leap"}}));
    EXPECT_EQ(library.rows(
                  "SELECT word, comp_type, first_matching_sentence FROM word_index JOIN root_word ON "
                  "root_word.id = id_root_word WHERE word IN ('title', 'docs', 'rapids', 'weir', 'salmon', "
                  "'angling') ORDER BY word"),
              (Rows{{"angling", "4", "-1"},
                    {"docs", "2", "0"},
                    {"rapids", "2", "3"},
                    {"salmon", "3", "5"},
                    {"title", "2", "0"},
                    {"weir", "3", "4"}}));
}

TEST_F(Pipeline, EventsAreHandledEveryFiftySentences) {
    auto& form = library.toolkit.createForm("Main", "", 100, 100);
    auto& button = form.addButton({.name = "cmdStop", .bounds = {}, .tabIndex = 0}, "Stop");
    int clicksHandled = 0;
    button.onClick([&clicksHandled] { ++clicksHandled; });
    ScriptedDocument document;
    document.sentences.assign(120, "Water flows on.");
    give(document);
    Lines handledAt;
    plugin().methods["GetSentenceText"] = [&](std::span<base::Variant> arguments) -> base::Variant {
        handledAt.push_back(arguments[0].toText() + ":" + std::to_string(clicksHandled));
        library.toolkit.click("cmdStop");
        return "Water flows on.";
    };
    indexDocument();
    EXPECT_EQ(handledAt[49], "50:0");
    EXPECT_EQ(handledAt[50], "51:50");
    EXPECT_EQ(handledAt[99], "100:50");
    EXPECT_EQ(handledAt[100], "101:100");
    EXPECT_EQ(handledAt[119], "120:100");
}

TEST_F(Pipeline, AnAnnotationIsAcceptedInAnyLetterCaseAndOthersAreIgnored) {
    ScriptedDocument document;
    document.annotations = {{"Comment", "weir", "leap"}, {"note", "ignored", "ignored"}};
    give(document);
    indexDocument();
    EXPECT_EQ(number("SELECT count(*) FROM annotation_section WHERE sequence = 1"), 2);
    EXPECT_EQ(number("SELECT count(*) FROM annotation_section"), 2);
    EXPECT_EQ(value("SELECT DISTINCT type FROM annotation_section"),
              value("SELECT type FROM search_weight WHERE description='comment' AND comp_type=3"));
    EXPECT_EQ(number("SELECT count(*) FROM root_word WHERE word='ignored'"), 0);
}

TEST_F(Pipeline, AnAnnotationInADocumentOfSizeZeroEndsThePhasesAndTheCommitsStillRun) {
    ScriptedDocument document;
    document.dataSize = "unknown";
    document.annotations = {{"comment", "weir", "leap"}};
    document.metaTags = {{"keywords", "angling"}};
    give(document);
    indexDocument();
    EXPECT_TRUE(logged("Error: ERROR Indexing failed - Division by zero"));
    EXPECT_TRUE(logged("Logic: End Commit Sentences"));
    EXPECT_FALSE(logged("Logic: End Anno"));
    EXPECT_FALSE(logged("Logic: Close plugin"));
    EXPECT_EQ(number("SELECT count(*) FROM word_index JOIN root_word ON root_word.id = id_root_word WHERE "
                     "word='leap'"),
              1);
    EXPECT_EQ(number("SELECT count(*) FROM meta_tags"), 0);
}

TEST_F(Pipeline, AKnownMetaTagIsNeitherStoredNorIndexedAgain) {
    ScriptedDocument document;
    document.metaTags = {{"keywords", "angling"}, {"keywords", "angling"}};
    give(document);
    indexDocument();
    EXPECT_EQ(number("SELECT count(*) FROM meta_tags"), 1);
    EXPECT_EQ(number("SELECT hit_count FROM word_index JOIN root_word ON root_word.id = id_root_word WHERE "
                     "word='angling'"),
              1);
}

TEST_F(Pipeline, APluginErrorAfterACountSkipsThatPhaseOnly) {
    ScriptedDocument document;
    document.importantText = {{"heading", "Rapids"}};
    document.metaTags = {{"keywords", "angling"}};
    give(document);
    auto error = std::make_shared<int>(0);
    const auto failing = [error](const char*, int number) {
        return [error, number](std::span<base::Variant>) -> base::Variant {
            *error = number;
            return std::int32_t{1};
        };
    };
    plugin().methods["GetNumberofImportantText"] = failing("", 17);
    plugin().methods["GetNumberofAnnotations"] = failing("", 18);
    plugin().methods["GetNumberofMetaTags"] = failing("", 19);
    plugin().methods["GetLastErrorNumber"] = [error](std::span<base::Variant>) -> base::Variant {
        return *error;
    };
    plugin().answer("GetLastErrorString", "cannot say");
    indexDocument();
    EXPECT_TRUE(logged("Error: ERROR 17:cannot say (Retrieving Important Text)"));
    EXPECT_TRUE(logged("Error: ERROR 18:cannot say (Retrieving Annotations)"));
    EXPECT_TRUE(logged("Error: ERROR 19:cannot say (Retrieving Meta-tags)"));
    EXPECT_TRUE(logged("Logic: End Meta"));
    EXPECT_EQ(number("SELECT count(*) FROM meta_tags"), 0);
}

TEST_F(Pipeline, ANullPluginAbandonsTheDocumentAndTouchesNoTable) {
    indexer.LoadCachesOnce(database);
    library.settings.put(std::string(infra::dataTypesKey) + "txt", "IndexPlugin", "NULL");
    statements();
    indexDocument();
    EXPECT_TRUE(logged("Logic: NULL Plugin specified abandoning indexing for this document."));
    EXPECT_TRUE(statements().empty());
    EXPECT_FALSE(anyLineStartsWith("Interest: Indexer::IndexDocument - Completed"));
}

TEST_F(Pipeline, WithoutAnyPluginNothingIsDone) {
    auto unknown = job("/docs/a.xyz");
    unknown.dataType = "xyz";
    indexer.IndexDocument(unknown, database);
    EXPECT_EQ(log(), (Lines{"Interest: Indexer::IndexDocument - Starting: /docs/a.xyz"}));
}

TEST_F(Pipeline, ADataTypeWithoutAPluginTakesTheDefaultOne) {
    useDefault("Test.Text");
    auto unknown = job("/docs/a.xyz");
    unknown.dataType = "xyz";
    indexer.IndexDocument(unknown, database);
    EXPECT_EQ(value("SELECT saved_location FROM document_object"), "/docs/a.xyz");
    EXPECT_EQ(value("SELECT flag_indexing_failed FROM document_object"), "0");
}

TEST_F(Pipeline, APluginThatCannotBeCreatedLeavesNothingAndTheCommitsRun) {
    library.settings.put(std::string(infra::dataTypesKey) + "txt", "IndexPlugin", "No.Such");
    indexDocument();
    EXPECT_EQ(log(),
              (Lines{"Interest: Indexer::IndexDocument - Starting: /docs/river.txt",
                     "Logic: Attempting to create plugin: No.Such",
                     "Error: ERROR Indexing failed - cannot create No.Such", "Logic: Commit Words",
                     "Logic: End Commit Words", "Logic: Commit sentences", "Logic: End Commit Sentences",
                     "Interest: Indexer::IndexDocument - Completed: /docs/river.txt"}));
    EXPECT_EQ(number("SELECT count(*) FROM ascii_sentences"), 0);
}

TEST_F(Pipeline, ADocumentThatCannotBeOpenedIsTriedOnceWithTheDefaultPlugin) {
    plugin().answer("SetDocumentID", false);
    plugin().answer("GetLastErrorNumber", std::int32_t{53});
    plugin().answer("GetLastErrorString", "not found");
    givePlugin("Default", "Test.Default", ScriptedDocument());
    indexDocument();
    EXPECT_TRUE(logged("Error: ERROR 53:not found"));
    EXPECT_TRUE(logged("Logic: Attempting to create plugin: Test.Default"));
    EXPECT_EQ(value("SELECT flag_indexing_failed FROM document_object"), "1");
    EXPECT_EQ(plugin().released, 1);
    EXPECT_EQ(library.automation.plugins["Test.Default"].released, 1);
}

TEST_F(Pipeline, ASecondFailureToOpenReturnsWithoutAnotherTry) {
    plugin().answer("SetDocumentID", false);
    plugin().answer("GetLastErrorNumber", std::int32_t{53});
    useDefault("Test.Text");
    indexDocument();
    EXPECT_EQ(plugin().created, 2);
    EXPECT_EQ(number("SELECT count(*) FROM document_object"), 0);
    EXPECT_FALSE(anyLineStartsWith("Interest: Indexer::IndexDocument - Completed"));
    EXPECT_FALSE(logged("Logic: Commit Words"));
}

TEST_F(Pipeline, AnErrorWhileOpeningIsLoggedAndTriedWithTheDefaultPlugin) {
    plugin().fail("SetDocumentID", "it hangs");
    givePlugin("Default", "Test.Default", ScriptedDocument());
    indexDocument();
    EXPECT_TRUE(logged("Error: Indexer::IndexDocument - SetDocumentID failed. - it hangs"));
    EXPECT_EQ(number("SELECT count(*) FROM document_object WHERE flag_indexing_failed = 1"), 1);
}

TEST_F(Pipeline, APluginErrorAfterTheSourceIsAlwaysLoggedAndTriedWithTheDefaultPlugin) {
    plugin().answer("GetLastErrorNumber", std::int32_t{5});
    plugin().answer("GetLastErrorString", "no source");
    givePlugin("Default", "Test.Default", ScriptedDocument());
    indexDocument();
    EXPECT_TRUE(logged("Unknown: ERROR 5:no source"));
    EXPECT_EQ(number("SELECT count(*) FROM document_object WHERE flag_indexing_failed = 1"), 1);
}

TEST_F(Pipeline, TheFallbackDoesNotLookPastAnExistingRecord) {
    indexDocument();
    plugin().answer("SetDocumentID", false);
    givePlugin("Default", "Test.Default", ScriptedDocument());
    auto asNew = job("/docs/river.txt");
    asNew.createNew = true;
    indexer.IndexDocument(asNew, database);
    EXPECT_EQ(library.rows("SELECT id, location_invalid, flag_indexing_failed FROM document_object"),
              (Rows{{"1", "0", "1"}}));
}

TEST_F(Pipeline, ADocumentWithoutASourceTakesItsPath) {
    indexDocument();
    EXPECT_EQ(value("SELECT source_url FROM document_object"), "/docs/river.txt");
}

TEST_F(Pipeline, AFailedSetupIsTriedWithTheDefaultPluginAndThenEndsTheProcess) {
    library.exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON document_object BEGIN SELECT RAISE(ABORT, 'refused'); END");
    givePlugin("Default", "Test.Default", ScriptedDocument());
    EXPECT_THROW(indexDocument(), fakes::ProcessEnded);
    EXPECT_EQ(library.process.ended, platform::ExitStatus::setupFailed);
    EXPECT_EQ(library.automation.plugins["Test.Default"].created, 1);
    EXPECT_TRUE(logged("Error: ERROR Document Setup failed - Document record could not be created"));
    EXPECT_TRUE(logged("Error: Transaction rolled back"));
    EXPECT_EQ(number("SELECT count(*) FROM prv"), 0);
}

TEST_F(Pipeline, TheProcessEndsEvenWhenTheDefaultPluginSucceeds) {
    plugin().methods["GetDocumentProperty"] = [](std::span<base::Variant> arguments) -> base::Variant {
        if (arguments[0].toText() == "last_time_modified") {
            throw base::RuntimeError(440, "no date");
        }
        return "";
    };
    givePlugin("Default", "Test.Default", ScriptedDocument());
    EXPECT_THROW(indexDocument(), fakes::ProcessEnded);
    EXPECT_TRUE(logged("Error: ERROR Document Setup failed - no date"));
    EXPECT_TRUE(logged("Interest: Indexer::IndexDocument - Completed: /docs/river.txt"));
    EXPECT_EQ(number("SELECT count(*) FROM document_object WHERE flag_indexing_failed = 1"), 1);
}

TEST_F(Pipeline, AFailedSetupOfAMessageIsNotTriedAgain) {
    library.exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON document_object BEGIN SELECT RAISE(ABORT, 'refused'); END");
    givePlugin("eml", "Test.Mail", ScriptedDocument());
    givePlugin("Default", "Test.Default", ScriptedDocument());
    auto message = job("/docs/a.eml");
    message.dataType = "eml";
    EXPECT_THROW(indexer.IndexDocument(message, database), fakes::ProcessEnded);
    EXPECT_EQ(library.automation.plugins["Test.Default"].created, 0);
}

TEST_F(Pipeline, ASetupThatCannotBeginItsTransactionOpensTheDatabaseAnew) {
    indexer.LoadCachesOnce(database);
    database.getConnection()->beginTrans();
    indexDocument();
    EXPECT_TRUE(logged("Unknown: Forced to retry transaction"));
    EXPECT_EQ(number("SELECT count(*) FROM document_object"), 1);
}

TEST_F(Pipeline, TheTitleIsAsImportantAsThePath) {
    indexDocument();
    EXPECT_EQ(
        library.rows("SELECT description FROM important_text JOIN search_weight ON search_weight.type = "
                     "important_text.type WHERE comp_type = 2 ORDER BY 1"),
        (Rows{{"document_path"}, {"title"}}));
}

TEST_F(Pipeline, AMessagesPathIsNotIndexed) {
    givePlugin("eml", "Test.Mail", ScriptedDocument());
    auto message = job("/docs/heron.eml");
    message.dataType = "eml";
    indexer.IndexDocument(message, database);
    EXPECT_EQ(number("SELECT count(*) FROM root_word WHERE word = 'heron'"), 0);
    EXPECT_EQ(number("SELECT count(*) FROM important_text"), 1);
}

TEST_F(Pipeline, WithoutStoredContextTheSentencesStayUnwritten) {
    library.settings.put(infra::serviceKey, "StoreContext", 0);
    indexDocument();
    EXPECT_EQ(number("SELECT count(*) FROM ascii_sentences"), 0);
    EXPECT_TRUE(logged("Logic: End Commit Sentences"));
}

TEST_F(Pipeline, AnErrorOfTheCommitsReachesTheCaller) {
    library.exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON ascii_sentences BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_THROW(indexDocument(), base::RuntimeError);
}

TEST_F(Pipeline, TheHeartbeatIsWrittenWithItsSeconds) {
    library.settings.writes.clear();
    indexDocument();
    Lines seconds;
    for (const std::string& write : library.settings.writes) {
        if (write.starts_with("DeadMansSwitchSeconds=")) {
            seconds.push_back(write.substr(write.find('=') + 1));
        }
    }
    EXPECT_EQ(seconds, (Lines{"120", "60", "60", "120", "120"}));
    EXPECT_EQ(library.settings.text(infra::indexerKey, "LastTouch"), "16 Nov 2026 01:47:03");
}

TEST_F(Pipeline, CachesThatCannotBeLoadedFailTheDocumentAndAreLoadedForTheNext) {
    library.exec("ALTER TABLE word_noise RENAME TO away");
    indexDocument();
    EXPECT_TRUE(anyLineStartsWith("Error: ERROR Indexing failed - "));
    EXPECT_TRUE(logged("Logic: End Commit Sentences"));
    library.exec("ALTER TABLE away RENAME TO word_noise");
    indexDocument();
    EXPECT_EQ(number("SELECT count(*) FROM document_object"), 1);
}

TEST_F(Pipeline, AQuoteInTheDataTypeIsPartOfItAndNoSql) {
    useDefault("Test.Text");
    auto odd = job("/docs/a.o'");
    odd.dataType = "o' OR 1=1 OR data_type='";
    indexer.IndexDocument(odd, database);
    EXPECT_EQ(value("SELECT data_type FROM document_object"), "o' ");
    EXPECT_EQ(value("SELECT last_prv FROM prv"),
              value("SELECT creation_prv FROM prv_rules WHERE data_type = 'zzzzDef'"));
}

TEST_F(Pipeline, ACommitErrorOfTheSecondTryReachesTheCaller) {
    plugin().answer("SetDocumentID", false);
    givePlugin("Default", "Test.Default", ScriptedDocument());
    library.exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON ascii_sentences BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_THROW(indexDocument(), base::RuntimeError);
    EXPECT_FALSE(anyLineStartsWith("Interest: Indexer::IndexDocument - Completed"));
    EXPECT_FALSE(anyLineStartsWith("Error: ERROR Indexing failed"));
}

TEST_F(Pipeline, TheProcessEndsAfterAFailedSetupEvenWhenTheSecondTrysCommitsFail) {
    plugin().methods["GetDocumentProperty"] = [](std::span<base::Variant> arguments) -> base::Variant {
        if (arguments[0].toText() == "last_time_modified") {
            throw base::RuntimeError(440, "no date");
        }
        return "";
    };
    givePlugin("Default", "Test.Default", ScriptedDocument());
    library.exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON ascii_sentences BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_THROW(indexDocument(), fakes::ProcessEnded);
    EXPECT_EQ(library.process.ended, platform::ExitStatus::setupFailed);
    EXPECT_TRUE(anyLineStartsWith("Error: ERROR Indexing failed - "));
}

TEST_F(Pipeline, APluginErrorIsReadOnce) {
    auto reads = std::make_shared<int>(0);
    plugin().answer("SetDocumentID", false);
    plugin().methods["GetLastErrorNumber"] = [reads](std::span<base::Variant>) -> base::Variant {
        return ++*reads == 1 ? std::int32_t{53} : std::int32_t{0};
    };
    indexDocument();
    EXPECT_TRUE(logged("Error: ERROR 53:"));
}

}  // namespace
