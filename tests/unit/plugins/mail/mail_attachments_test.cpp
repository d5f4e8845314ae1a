#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>

#include "mail/mail_extractor.h"
#include "unit/plugins/mail/mail_samples.h"

namespace {

using samples::MailFolder;
using samples::multipart;
using samples::namesOf;
using testing::ElementsAre;
using testing::HasSubstr;

std::string bytesOf(const sdk::Document::SubDocument& attachment) {
    std::ifstream file(attachment.tempPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(MailAttachments, AreWrittenDecodedAndForTheOwnerAlone) {
    const MailFolder folder;
    const sdk::Document document = folder.read(
        multipart("mixed", {samples::plainPart,
                            "Content-Type: application/octet-stream\nContent-Transfer-Encoding: base64\n"
                            "Content-Disposition: attachment; filename=\"report.final.TXT\"\n\nQW5uYQ=="}));
    ASSERT_THAT(namesOf(document), ElementsAre("report.final.txt"));
    EXPECT_EQ(bytesOf(document.subDocuments[0]), "Anna");
    EXPECT_EQ(document.subDocuments[0].path, "");
    struct stat facts {};
    ASSERT_EQ(stat(document.subDocuments[0].tempPath.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777U, 0600U);
    EXPECT_THAT(document.sentences, ElementsAre("Plain words."));
}

TEST(MailAttachments, TakeEncodedNamesOfBothKinds) {
    const MailFolder folder;
    EXPECT_THAT(namesOf(folder.read(
                    multipart("mixed", {"Content-Type: image/png; name=\"=?utf-8?B?w7xiZXIucG5n?=\"\n\nx",
                                        "Content-Type: image/png\nContent-Disposition: attachment;\n"
                                        " filename*0*=utf-8''%C3%BCb; filename*1*=er.png\n\nx"}))),
                ElementsAre("über.png", "über~1.png"));
}

TEST(MailAttachments, WithoutANameTakeTheExtensionOfTheirType) {
    const MailFolder folder;
    EXPECT_THAT(namesOf(folder.read(multipart("mixed", {"Content-Type: application/pdf\n\nx",
                                                        "Content-Type: application/x-odd\n\nx"}))),
                ElementsAre("attachment.pdf", "attachment.bin"));
}

TEST(MailAttachments, NeverLeaveTheFolder) {
    const MailFolder folder;
    const sdk::Document document =
        folder.read(multipart("mixed", {"Content-Type: a/b; name=\"../../etc/passwd.txt\"\n\nx",
                                        "Content-Type: a/b; name=\"C:\\\\temp\\\\..\\\\x.txt\"\n\nx",
                                        "Content-Type: a/b; name=\"..\"\n\nx"}));
    EXPECT_THAT(namesOf(document), ElementsAre("passwd.txt", "x.txt", "attachment.bin"));
    EXPECT_EQ(folder.attachmentCount(), 3U);
}

TEST(MailAttachments, AreTextsThatAreMarkedOrNamedBehindTheBody) {
    const MailFolder folder;
    const std::string marked = "Content-Type: text/plain\nContent-Disposition: attachment\n\nMarked.";
    const std::string named = "Content-Type: text/markdown; name=notes.md\n\n# Named";
    const sdk::Document document = folder.read(multipart("mixed", {marked, samples::plainPart, named}));
    EXPECT_THAT(document.sentences, ElementsAre("Plain words."));
    EXPECT_THAT(namesOf(document), ElementsAre("attachment.txt", "notes.md"));
}

TEST(MailAttachments, IncludeThoseInAnAlternativeThatIsNotRead) {
    const MailFolder folder;
    const std::string rich =
        multipart("related", {samples::htmlPart, "Content-Type: image/gif; name=logo.gif\n\nx"}, "in");
    const sdk::Document document =
        folder.read(multipart("alternative", {samples::plainPart, rich, "Content-Type: x/y\n\nsame again"}));
    EXPECT_THAT(document.sentences, ElementsAre("Plain words."));
    EXPECT_THAT(namesOf(document), ElementsAre("logo.gif"));
}

TEST(MailAttachments, IncludeNestedMessagesWhole) {
    const MailFolder folder;
    const sdk::Document document = folder.read(multipart(
        "mixed",
        {samples::plainPart, "Content-Type: message/rfc822\n\nSubject: Re: 1/2 weir\n\nInner words.\n",
         "Content-Type: message/rfc822; name=old.eml\n\nSubject: y\n\nz\n"}));
    EXPECT_THAT(document.sentences, ElementsAre("Plain words."));
    ASSERT_THAT(namesOf(document), ElementsAre("Re_ 1_2 weir.eml", "old.eml"));
    EXPECT_THAT(bytesOf(document.subDocuments[0]), HasSubstr("Inner words."));
    EXPECT_THAT(folder.read(bytesOf(document.subDocuments[0])).sentences, ElementsAre("Inner words."));
}

TEST(MailAttachments, IncludeFilesWithinTheText) {
    const MailFolder folder;
    const sdk::Document document =
        folder.read("Subject: x\n\nBefore.\nbegin 644 cat.txt\n#0V%T\n`\nend\nAfter.\n");
    EXPECT_THAT(document.sentences, ElementsAre("Before.", "After."));
    ASSERT_THAT(namesOf(document), ElementsAre("cat.txt"));
    EXPECT_EQ(bytesOf(document.subDocuments[0]), "Cat");
}

const std::string withTwoFiles = multipart("mixed", {"Content-Type: image/png; name=a.png\n\nx",
                                                     "Content-Type: text/plain\n\nWords.\n"
                                                     "begin 644 cat.txt\n#0V%T\n`\nend\n"});

TEST(MailAttachments, AreWrittenWhenTheyAreAskedFor) {
    const MailFolder folder;
    mail::MailExtractor extractor;
    ASSERT_TRUE(extractor.SetDocumentID(folder.write("a.eml", withTwoFiles)));
    EXPECT_EQ(extractor.GetNumberofSubDocuments(), 2);
    EXPECT_EQ(folder.attachmentCount(), 0U);

    const std::string cat = extractor.GetSubDocumentTempPath(2);
    EXPECT_EQ(folder.attachmentCount(), 1U);
    EXPECT_EQ(bytesOf({cat, ""}), "Cat");
    EXPECT_EQ(bytesOf({extractor.GetSubDocumentTempPath(1), ""}), "x");
    EXPECT_EQ(extractor.GetSubDocumentTempPath(2), cat);
    EXPECT_EQ(folder.attachmentCount(), 2U);
}

TEST(MailAttachments, ThatNobodyAsksForLeaveNoFile) {
    const MailFolder folder;
    {
        mail::MailExtractor extractor;
        ASSERT_TRUE(extractor.SetDocumentID(folder.write("a.eml", withTwoFiles)));
        extractor.GetSubDocumentTempPath(1);
    }
    EXPECT_EQ(folder.attachmentCount(), 1U);  // the one that was handed out is the service's to delete
}

TEST(MailAttachments, ThatCannotBeWrittenDoNotCostTheMessage) {
    const MailFolder folder;
    mail::MailExtractor extractor;
    ASSERT_TRUE(extractor.SetDocumentID(folder.write("a.eml", withTwoFiles)));
    setenv("TMPDIR", (folder.attachments() + "/gone").c_str(), 1);
    EXPECT_THROW(extractor.GetSubDocumentTempPath(1), sdk::ExtractionError);
    EXPECT_EQ(extractor.GetSentenceText(1), "Words.");
    setenv("TMPDIR", folder.attachments().c_str(), 1);
    EXPECT_EQ(bytesOf({extractor.GetSubDocumentTempPath(1), ""}), "x");
}

}  // namespace
