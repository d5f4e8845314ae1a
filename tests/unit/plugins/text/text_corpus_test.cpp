#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string_view>

#include "base/text.h"
#include "shared/charset.h"
#include "shared/sentences.h"
#include "text/text_document.h"
#include "unit/plugins/corpus.h"

namespace {

std::string substanceOf(std::string_view text) {
    return base::replaceAll(shared::foldWhiteSpace(text), " ", "");
}

TEST(TextCorpus, LosesNoCharacterButWhiteSpace) {
    const auto files = corpus::filesBelow(TYINDEXER_CORPUS, "text");
    if (files.empty()) {
        GTEST_SKIP() << "no corpus at " << TYINDEXER_CORPUS
                     << "; set TYINDEXER_CORPUS to a folder that has one";
    }
    for (const std::string& path : files) {
        std::ifstream file(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        std::string sentences;
        sdk::Document document = text::readTextDocument(path, 30000);
        document.finish();
        for (const std::string& sentence : document.sentences) {
            sentences += sentence;
        }
        EXPECT_TRUE(shared::isUtf8(sentences)) << path;
        EXPECT_TRUE(substanceOf(sentences) == substanceOf(shared::toUtf8(bytes))) << path;
    }
}

}  // namespace
