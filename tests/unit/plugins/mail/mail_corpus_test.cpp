#include <gtest/gtest.h>

#include "shared/charset.h"
#include "unit/plugins/corpus.h"
#include "unit/plugins/mail/mail_samples.h"

namespace {

TEST(MailCorpus, OpensEveryMessageOrSaysWhyNot) {
    const auto files = corpus::filesBelow(TYINDEXER_CORPUS, "eml");
    if (files.empty()) {
        GTEST_SKIP() << "no corpus at " << TYINDEXER_CORPUS
                     << "; set TYINDEXER_CORPUS to a folder that has one";
    }
    const samples::MailFolder folder;
    std::size_t attachments = 0;
    for (const std::string& path : files) {
        SCOPED_TRACE(path);
        const sdk::Document document = mail::readMailDocument(path, 30000);
        attachments += document.subDocuments.size();
        for (const auto& attachment : document.subDocuments) {
            EXPECT_TRUE(std::filesystem::exists(attachment.makeFile()));
        }
        EXPECT_FALSE(document.sentences.empty() && document.metaTags.empty() &&
                     document.subDocuments.empty());
        for (const std::string& sentence : document.sentences) {
            EXPECT_FALSE(sentence.empty());
            EXPECT_TRUE(shared::isUtf8(sentence));
        }
    }
    EXPECT_EQ(folder.attachmentCount(), attachments);
}

}  // namespace
