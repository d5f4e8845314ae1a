#include "text/text_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/temporary_folder.h"
#include "shared/charset.h"
#include "shared/sentences.h"
#include "text/text_extractor.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

sdk::Document read(const std::string& path) {
    sdk::Document document = text::readTextDocument(path, 30000);
    document.finish();
    return document;
}

TEST(TextDocument, OfPlainTextHasSentencesAndNoTitle) {
    const fakes::TemporaryFolder folder;
    const sdk::Document document = read(folder.write("a.txt", "# One.\nTwo and\nthree."));
    EXPECT_THAT(document.sentences, ElementsAre("# One.", "Two and three."));
    EXPECT_EQ(document.properties.at("title"), base::Variant(""));
    EXPECT_EQ(document.properties.at("data_size"), base::Variant(21));
    EXPECT_EQ(document.properties.at("source_url"), base::Variant(""));
    EXPECT_TRUE(document.properties.at("last_time_modified").isDate());
    EXPECT_THAT(document.importantText, IsEmpty());
}

TEST(TextDocument, OfMarkdownHasItsFirstHeadingAsTitle) {
    const fakes::TemporaryFolder folder;
    for (const char* name : {"a.md", "b.MARKDOWN"}) {
        const sdk::Document document = read(folder.write(name, "Intro\n\n## Tides\n\n# Gauges\n"));
        EXPECT_EQ(document.properties.at("title"), base::Variant("Tides"));
        ASSERT_EQ(document.importantText.size(), 2U);
        EXPECT_EQ(document.importantText[1].text, "Gauges");
        EXPECT_EQ(document.importantText[1].type, "heading");
        EXPECT_THAT(document.sentences, ElementsAre("Intro", "Tides", "Gauges"));
    }
}

TEST(TextDocument, OfMarkdownWithoutHeadingsHasNoTitle) {
    const fakes::TemporaryFolder folder;
    const sdk::Document document = read(folder.write("a.md", "Just *text*."));
    EXPECT_EQ(document.properties.at("title"), base::Variant(""));
    EXPECT_THAT(document.importantText, IsEmpty());
    EXPECT_THAT(document.sentences, ElementsAre("Just text."));
}

TEST(TextDocument, OfAnEmptyFileHasNoSentences) {
    const fakes::TemporaryFolder folder;
    EXPECT_THAT(read(folder.write("a.txt", "")).sentences, IsEmpty());
    EXPECT_THAT(read(folder.write("a.md", "\xEF\xBB\xBF")).sentences, IsEmpty());
}

TEST(TextDocument, ReadsOtherEncodings) {
    const fakes::TemporaryFolder folder;
    EXPECT_THAT(read(folder.write("a.txt", std::string("\xFF\xFE\xC9\0t\0\xE9\0", 8))).sentences,
                ElementsAre("Été"));
    EXPECT_THAT(read(folder.write("b.txt", "caf\xE9 ferm\xE9")).sentences, ElementsAre("café fermé"));
}

TEST(TextDocument, IsDecodedWhenItsSentencesAreAskedFor) {
    const fakes::TemporaryFolder folder;
    sdk::Document document = text::readTextDocument(folder.write("a.txt", "caf\xE9"), 30000);
    EXPECT_THAT(document.sentences, IsEmpty());
    document.finish();
    EXPECT_THAT(document.sentences, ElementsAre("café"));
}

TEST(TextDocument, ReadsAFileThatIsLargerThanWhatItsKindIsToldBy) {
    const fakes::TemporaryFolder folder;
    std::string content;
    std::vector<std::string> expected;
    while (content.size() < 3 * shared::binarySample) {
        expected.push_back("Line " + std::to_string(expected.size()));
        content += expected.back() + "\n\n";
    }
    EXPECT_EQ(read(folder.write("a.txt", content)).sentences, expected);
    EXPECT_EQ(read(folder.write("a.md", content)).sentences, expected);
}

TEST(TextDocument, OfUtf16WithoutAMarkMayBeLarge) {
    const fakes::TemporaryFolder folder;
    std::string content;
    for (std::size_t i = 0; i < shared::binarySample; ++i) {
        content.append("a\0", 2);
    }
    const sdk::Document document = read(folder.write("a.txt", content));
    ASSERT_EQ(document.sentences.size(), 3U);
    EXPECT_EQ(document.sentences[0], std::string(shared::SentenceCollector::longestSentence, 'a'));
}

TEST(TextDocument, IsRefusedWhenTheFileIsBinary) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder.write("a.txt", std::string("GIF89a\x01\0\x01\0", 10));
    try {
        read(path);
        FAIL() << "a picture was read as text";
    } catch (const sdk::ExtractionError& error) {
        EXPECT_EQ(error.what(), path + ": this is binary data, not text");
        EXPECT_NE(error.number(), 0);
    }
}

TEST(TextDocument, IsRefusedWhenBinaryDataFollowsMuchText) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder.write("a.txt", std::string(100000, 'a') + std::string(1, '\0'));
    EXPECT_THROW(read(path), sdk::ExtractionError);
}

TEST(TextDocument, NeverHasMoreSentencesThanAllowed) {
    const fakes::TemporaryFolder folder;
    std::string many;
    for (int i = 0; i < 5000; ++i) {
        many += "# h\n\nx\n\n";
    }
    const sdk::Document document = text::readTextDocument(folder.write("a.md", many), 100);
    EXPECT_LE(document.sentences.size(), 100U);
    EXPECT_EQ(document.importantText.size(), text::mostHeadings);
}

TEST(TextExtractor, AnswersTheContractForADocument) {
    const fakes::TemporaryFolder folder;
    text::TextExtractor extractor;
    ASSERT_TRUE(extractor.SetDocumentID(folder.write("a.md", "# Tides\n\nHigh. Low.")));
    EXPECT_EQ(extractor.GetLastErrorNumber(), 0);
    ASSERT_EQ(extractor.GetNumberOfSentences(), 3);
    EXPECT_EQ(extractor.GetSentenceText(3), "Low.");
    ASSERT_EQ(extractor.GetNumberofImportantText(), 1);
    EXPECT_EQ(extractor.GetImportantTextType(1), "heading");
    EXPECT_EQ(extractor.GetNumberofSubDocuments(), 0);
}

TEST(TextExtractor, AnswersAFileThatCannotBeOpenedWithItsError) {
    const fakes::TemporaryFolder folder;
    text::TextExtractor extractor;
    EXPECT_FALSE(extractor.SetDocumentID(folder / "missing.txt"));
    EXPECT_NE(extractor.GetLastErrorNumber(), 0);
    EXPECT_THAT(extractor.GetLastErrorString(), HasSubstr("No such file"));
}

}  // namespace
