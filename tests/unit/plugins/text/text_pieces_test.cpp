#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/temporary_folder.h"
#include "shared/charset.h"
#include "shared/sentences.h"
#include "text/text_document.h"
#include "text/text_extractor.h"
#include "unit/plugins/corpus.h"

namespace {

constexpr std::size_t most = 30000;

/// The sentences of a text that is cut as a whole.
std::vector<std::string> cutWhole(const std::string& bytes) {
    shared::SentenceCollector collector(most);
    shared::addPlainText(collector, shared::toUtf8(bytes));
    return collector.take();
}

/// The sentences as the service reads them.
std::vector<std::string> readAll(const std::string& path) {
    text::TextExtractor extractor;
    EXPECT_TRUE(extractor.SetDocumentID(path)) << extractor.GetLastErrorString();
    std::vector<std::string> sentences;
    const int count = extractor.GetNumberOfSentences();
    while (count == -1 && extractor.MoreSentences()) {
        sentences.push_back(extractor.GetNextSentence());
    }
    for (int i = 1; i <= count; ++i) {
        sentences.push_back(extractor.GetSentenceText(static_cast<std::int16_t>(i)));
    }
    return sentences;
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

std::string wide(std::string_view text) {
    std::string all("\xFF\xFE", 2);
    for (const char c : text) {
        all.append({c, '\0'});
    }
    return all;
}

class TextInPieces : public testing::Test {
  protected:
    void expectTheSame(const std::string& bytes) {
        EXPECT_TRUE(readAll(folder_.write("a.txt", bytes)) == cutWhole(bytes))
            << bytes.size() << " bytes: " << bytes.substr(0, 200);
    }
    int countOf(const std::string& name, const std::string& bytes) {
        text::TextExtractor extractor;
        EXPECT_TRUE(extractor.SetDocumentID(folder_.write(name, bytes)));
        return extractor.GetNumberOfSentences();
    }

    fakes::TemporaryFolder folder_;
};

TEST_F(TextInPieces, HasTheSentencesOfTheWhole) {
    const std::string prose =
        "It rose. It fell, e.g. twice! Did it?\n(Yes.) No\n\n 1. One\n- Two\n-----\nEnd";
    for (const std::string& bytes : std::vector<std::string>{
             "", "\n", " ", "One line without an end", "One. Two.\r\nThree\r\n\r\nFour.\r\n",
             "One. Two.\rThree\r\rFour.\r", "One\n\r\n\rTwo", prose, repeated(prose, 200),
             repeated("A sentence. ", 4000), std::string(59000, 'a'), std::string("a\0b\n\nc", 6),
             wide(repeated(prose, 100)), "caf\xE9 ferm\xE9. " + repeated("\xC9t\xE9.\n\n", 2000),
             "\xEF\xBB\xBF" + prose, repeated("\xE3\x81\x82\xE3\x80\x82", 5000), "\xFF\xFE"}) {
        expectTheSame(bytes);
    }
}

TEST_F(TextInPieces, HasTheSentencesOfTheWholeWhereThatIsLong) {
    expectTheSame(repeated("Words of a line without an end. ", 10000));
    expectTheSame(std::string(300000, 'a'));
    expectTheSame(repeated("Line.\n\n", 20000));
    expectTheSame(repeated("a\n\n", 50000));
}

TEST_F(TextInPieces, HasTheSentencesOfTheWholeForAnyText) {
    const std::vector<std::string> parts{
        "a",   "Word",          " ",  ". ", "! ",    "?",    "\n",       "\r\n",
        "\r",  "\n\n",          "- ", "1.", "(2)\n", "--\n", "\xC3\xA9", "\xE3\x80\x82",
        "Dr.", "\xE2\x80\xA2 ", "\t", "\"", "\xA0",
    };
    std::mt19937 random(4711);
    for (int text = 0; text < 400; ++text) {
        std::string bytes;
        const std::size_t count = random() % 300;
        for (std::size_t i = 0; i < count; ++i) {
            bytes += parts[random() % (parts.size() - (text % 4 == 0 ? 0 : 1))];
        }
        expectTheSame(bytes);
    }
}

TEST_F(TextInPieces, HasNoMoreSentencesThanAllowed) {
    // The smallest sentences that there are, in the longest text that is cut in pieces, and in the next one.
    for (const std::string_view sentence : {"a\r\r", "a! ", "- \n", "--\n", "\xC3\xA9!"}) {
        for (const std::size_t size : {2 * most - 1, 2 * most, 2 * most + 1}) {
            const std::string bytes = repeated(sentence, size / sentence.size() + 1).substr(0, size);
            EXPECT_EQ(countOf("a.txt", bytes) == -1, size < 2 * most);
            expectTheSame(bytes);
            EXPECT_LE(readAll(folder_ / "a.txt").size(), most);
        }
    }
}

TEST_F(TextInPieces, IsNotMarkdown) {
    EXPECT_EQ(countOf("a.md", "# One\n\nTwo. Three."), 3);
}

TEST_F(TextInPieces, HasTheSentencesOfTheWholeForRealDocuments) {
    for (const std::string& path : corpus::filesBelow(TYINDEXER_CORPUS, "text")) {
        if (path.ends_with(".md")) {
            continue;
        }
        std::ifstream file(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        EXPECT_TRUE(readAll(path) == cutWhole(bytes)) << path;
    }
}

}  // namespace
