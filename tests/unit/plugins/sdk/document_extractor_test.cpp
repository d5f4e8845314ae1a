#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <numeric>

#include "unit/plugins/sdk/sample_extractor.h"

namespace {

using sdk_test::SampleExtractor;

TEST(DocumentExtractor, AnswersWhatWasExtracted) {
    sdk::Document document;
    document.properties["title"] = "A title";
    document.sentences = {"First.", "Second."};
    document.importantText = {{"Heading", "heading1"}};
    document.annotations = {{"comment", "anchor", "note"}};
    document.metaTags = {{"Ann", "author"}};
    document.subDocuments = {{"/tmp/part.txt", ""}};
    SampleExtractor extractor(document);

    EXPECT_TRUE(extractor.SetDocumentID("document"));
    EXPECT_EQ(extractor.GetDocumentProperty("title"), base::Variant("A title"));
    EXPECT_EQ(extractor.GetNumberOfSentences(), 2);
    EXPECT_EQ(extractor.GetSentenceText(2), "Second.");
    EXPECT_EQ(extractor.GetNumberofImportantText(), 1);
    EXPECT_EQ(extractor.GetImportantTextText(1) + "/" + extractor.GetImportantTextType(1),
              "Heading/heading1");
    EXPECT_EQ(extractor.GetNumberofAnnotations(), 1);
    EXPECT_EQ(extractor.GetAnnotationType(1), "comment");
    EXPECT_EQ(extractor.GetAnnotationAnchor(1), "anchor");
    EXPECT_EQ(extractor.GetAnnotationText(1), "note");
    EXPECT_EQ(extractor.GetNumberofMetaTags(), 1);
    EXPECT_EQ(extractor.GetMetaTagText(1) + "/" + extractor.GetMetaTagType(1), "Ann/author");
    EXPECT_EQ(extractor.GetNumberofSubDocuments(), 1);
    EXPECT_EQ(extractor.GetSubDocumentTempPath(1), "/tmp/part.txt");
    EXPECT_EQ(extractor.GetSubDocumentPath(1), "");
}

TEST(DocumentExtractor, MakesSentencesOnceAndWhenTheyAreAskedFor) {
    int made = 0;
    sdk::Document document;
    document.makeSentences = [&made] {
        ++made;
        return std::vector<std::string>{"First.", "Second."};
    };
    SampleExtractor extractor(document);
    EXPECT_TRUE(extractor.SetDocumentID("document"));
    extractor.GetDocumentProperty("title");
    EXPECT_EQ(made, 0);
    EXPECT_EQ(extractor.GetNumberOfSentences(), 2);
    EXPECT_EQ(extractor.GetSentenceText(2), "Second.");
    EXPECT_TRUE(extractor.MoreSentences());
    EXPECT_EQ(extractor.GetNextSentence(), "First.");
    EXPECT_EQ(made, 1);
}

TEST(DocumentExtractor, RaisesTheErrorOfSentencesThatCannotBeMadeEachTime) {
    sdk::Document document;
    document.makeSentences = []() -> std::vector<std::string> { throw sdk::ExtractionError(7, "no rules"); };
    SampleExtractor extractor(document);
    EXPECT_TRUE(extractor.SetDocumentID("document"));
    EXPECT_THROW(extractor.GetNumberOfSentences(), sdk::ExtractionError);
    EXPECT_THROW(extractor.GetSentenceText(1), sdk::ExtractionError);
}

/// Sentences in two pieces; `made` counts the calls.
std::function<std::vector<std::string>()> inTwoPieces(int& made) {
    return [&made]() -> std::vector<std::string> {
        ++made;
        return made == 1   ? std::vector<std::string>{"First.", "Second."}
               : made == 2 ? std::vector<std::string>{"Third."}
                           : std::vector<std::string>{};
    };
}

TEST(DocumentExtractor, MakesTheNextSentencesWhenThoseBeforeHaveBeenRead) {
    int made = 0;
    sdk::Document document;
    document.nextSentences = inTwoPieces(made);
    SampleExtractor extractor(document);
    EXPECT_TRUE(extractor.SetDocumentID("document"));
    EXPECT_EQ(extractor.GetNumberOfSentences(), -1);
    EXPECT_EQ(made, 0);
    EXPECT_TRUE(extractor.MoreSentences());
    EXPECT_EQ(extractor.GetNextSentence(), "First.");
    EXPECT_EQ(extractor.GetNextSentence(), "Second.");
    EXPECT_EQ(made, 1);
    EXPECT_TRUE(extractor.MoreSentences());
    EXPECT_EQ(extractor.GetNextSentence(), "Third.");
    EXPECT_FALSE(extractor.MoreSentences());
    EXPECT_FALSE(extractor.MoreSentences());
    EXPECT_EQ(made, 3) << "it was asked again behind the end";
    EXPECT_THROW(extractor.GetNextSentence(), sdk::ExtractionError);
}

TEST(DocumentExtractor, MakesAllSentencesWhenOneIsAskedForByItsIndex) {
    int made = 0;
    sdk::Document document;
    document.nextSentences = inTwoPieces(made);
    SampleExtractor extractor(document);
    EXPECT_TRUE(extractor.SetDocumentID("document"));
    EXPECT_EQ(extractor.GetNextSentence(), "First.");
    EXPECT_EQ(extractor.GetSentenceText(3), "Third.");
    EXPECT_EQ(extractor.GetNextSentence(), "Second.");
    EXPECT_THROW(extractor.GetSentenceText(4), sdk::ExtractionError);
}

TEST(DocumentExtractor, JoinsSentencesThatAreMadeLater) {
    sdk::Document document;
    document.makeSentences = [] { return std::vector<std::string>(60000, "x"); };
    SampleExtractor extractor(document);
    EXPECT_TRUE(extractor.SetDocumentID("document"));
    EXPECT_EQ(extractor.GetSentenceText(1), "x x");
    EXPECT_EQ(extractor.GetNumberOfSentences(), 30000);
}

TEST(DocumentExtractor, AnswersAnUnknownPropertyWithAnEmptyValue) {
    SampleExtractor extractor({});
    extractor.SetDocumentID("document");
    EXPECT_TRUE(extractor.GetDocumentProperty("source_url").isEmpty());
}

TEST(DocumentExtractor, KeepsTheErrorOfADocumentThatCannotBeOpened) {
    SampleExtractor extractor({});
    EXPECT_FALSE(extractor.SetDocumentID("missing"));
    EXPECT_EQ(extractor.GetLastErrorNumber(), 53);
    EXPECT_EQ(extractor.GetLastErrorString(), "missing: no such file");
}

TEST(DocumentExtractor, NeverReportsAFailureAsNumberZero) {
    SampleExtractor extractor({});
    EXPECT_FALSE(extractor.SetDocumentID("unnumbered"));
    EXPECT_NE(extractor.GetLastErrorNumber(), 0);
}

TEST(DocumentExtractor, HasNoErrorAfterAPropertyOrACount) {
    SampleExtractor extractor({});
    extractor.SetDocumentID("missing");
    extractor.GetDocumentProperty("source_url");
    EXPECT_EQ(extractor.GetLastErrorNumber(), 0);

    extractor.SetDocumentID("missing");
    extractor.GetNumberofMetaTags();
    EXPECT_EQ(extractor.GetLastErrorNumber(), 0);
    EXPECT_EQ(extractor.GetLastErrorString(), "");
}

TEST(DocumentExtractor, ForgetsTheDocumentBeforeTheNextIsOpened) {
    sdk::Document document;
    document.sentences = {"Only."};
    SampleExtractor extractor(document);
    extractor.SetDocumentID("document");
    extractor.SetDocumentID("missing");
    EXPECT_EQ(extractor.GetNumberOfSentences(), 0);
}

TEST(DocumentExtractor, JoinsNeighboursOfMoreSentencesThanTheContractCanNumber) {
    sdk::Document document;
    for (int i = 1; i <= 70001; ++i) {
        document.sentences.push_back(std::to_string(i));
    }
    SampleExtractor extractor(document);
    extractor.SetDocumentID("document");

    EXPECT_EQ(extractor.GetNumberOfSentences(), 23334);
    EXPECT_EQ(extractor.GetSentenceText(1), "1 2 3");
    EXPECT_EQ(extractor.GetSentenceText(23334), "70000 70001");
}

TEST(DocumentExtractor, ReadsSentencesOneAfterTheOtherToo) {
    sdk::Document document;
    document.sentences = {"One.", "Two."};
    SampleExtractor extractor(document);
    extractor.SetDocumentID("document");

    EXPECT_TRUE(extractor.MoreSentences());
    EXPECT_EQ(extractor.GetNextSentence(), "One.");
    EXPECT_EQ(extractor.GetNextSentence(), "Two.");
    EXPECT_FALSE(extractor.MoreSentences());
    EXPECT_THROW(extractor.GetNextSentence(), sdk::ExtractionError);
}

TEST(DocumentExtractor, RefusesAnIndexWithoutAnItemAndNamesIt) {
    sdk::Document document;
    document.sentences = {"One.", "Two."};
    SampleExtractor extractor(document);
    extractor.SetDocumentID("document");

    EXPECT_THROW(extractor.GetSentenceText(0), sdk::ExtractionError);
    EXPECT_THROW(extractor.GetMetaTagText(1), sdk::ExtractionError);
    try {
        extractor.GetSentenceText(3);
        FAIL() << "no error was raised";
    } catch (const sdk::ExtractionError& error) {
        EXPECT_STREQ(error.what(), "index 3 is outside 1..2");
    }
}

}  // namespace
