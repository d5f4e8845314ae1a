#include "mail/mail_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mail/mail_extractor.h"
#include "shared/files.h"
#include "unit/plugins/mail/mail_samples.h"

namespace {

using samples::MailFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string metaTag(const sdk::Document& document, const std::string& type) {
    for (const auto& tag : document.metaTags) {
        if (tag.type == type) {
            return tag.text;
        }
    }
    return "none";
}

TEST(MailDocument, HasTheSubjectAsTitleAndImportantText) {
    const MailFolder folder;
    const sdk::Document document =
        folder.read("Subject: =?utf-8?Q?R=C3=BCckfluss?=\n =?iso-8859-1?Q?_am_Wehr?=\n\nText.\n");
    EXPECT_EQ(document.properties.at("title"), base::Variant("Rückfluss am Wehr"));
    ASSERT_EQ(document.importantText.size(), 1U);
    EXPECT_EQ(document.importantText[0].text, "Rückfluss am Wehr");
    EXPECT_EQ(document.importantText[0].type, "subject");
}

TEST(MailDocument, WithoutASubjectHasNoTitle) {
    const MailFolder folder;
    const sdk::Document document = folder.read("From: a@b.example\nSubject:\n\nText.\n");
    EXPECT_EQ(document.properties.at("title"), base::Variant(""));
    EXPECT_THAT(document.importantText, IsEmpty());
}

TEST(MailDocument, HasAddressesAndDateAsMetaTags) {
    const MailFolder folder;
    const sdk::Document document = folder.read(
        "From: =?utf-8?Q?J=C3=B6rg?= <joerg@weir.example>\nTo: a@b.example,\n \"Doe, Ann\" <ann@b.example>\n"
        "Cc: \nDate: Fri, 21 Nov 1997 09:55:06 -0600\n\nText.\n");
    EXPECT_EQ(metaTag(document, "from"), "Jörg <joerg@weir.example>");
    EXPECT_EQ(metaTag(document, "to"), "a@b.example, \"Doe, Ann\" <ann@b.example>");
    EXPECT_EQ(metaTag(document, "cc"), "none");
    EXPECT_EQ(metaTag(document, "date"), "Fri, 21 Nov 1997 09:55:06 -0600");
}

TEST(MailDocument, IsAsOldAsItsDateInLocalTime) {
    const MailFolder folder;
    const sdk::Document document = folder.read("Date: Fri, 21 Nov 1997 09:55:06 -0600\n\nText.\n");
    EXPECT_EQ(document.properties.at("last_time_modified"), base::Variant(shared::localTime(880127706)));
}

TEST(MailDocument, WithoutAValidDateIsAsOldAsItsFile) {
    const MailFolder folder;
    const std::string path = folder.write("a.eml", "Subject: x\nDate: soon\n\nText.\n");
    const sdk::Document document = mail::readMailDocument(path, 30000);
    EXPECT_EQ(document.properties.at("last_time_modified"),
              base::Variant(shared::InputFile(path).lastModified()));
    EXPECT_EQ(document.properties.at("data_size"), base::Variant(29));
}

TEST(MailDocument, ReadsThePlainAlternativeOnly) {
    const MailFolder folder;
    using samples::multipart;
    EXPECT_THAT(folder.read(multipart("alternative", {samples::htmlPart, samples::plainPart})).sentences,
                ElementsAre("Plain words."));
    EXPECT_THAT(
        folder.read(multipart("alternative", {samples::htmlPart, "Content-Type: x/y\n\nz"})).sentences,
        ElementsAre("Rich words."));
}

TEST(MailDocument, ReadsNestedParts) {
    const MailFolder folder;
    const std::string inner =
        samples::multipart("alternative", {samples::plainPart, samples::htmlPart}, "in");
    const std::string related = samples::multipart("related", {inner}, "mid");
    EXPECT_THAT(
        folder.read(samples::multipart("signed", {related, "Content-Type: application/pgp-signature\n\nx"}))
            .sentences,
        ElementsAre("Plain words."));
    EXPECT_EQ(folder.attachmentCount(), 0U);
}

TEST(MailDocument, ReadsEveryInlineTextOfAMixedMessage) {
    const MailFolder folder;
    EXPECT_THAT(folder.read(samples::multipart("mixed", {samples::plainPart, samples::htmlPart})).sentences,
                ElementsAre("Plain words.", "Rich words."));
}

TEST(MailDocument, DecodesTransferEncodingsAndCharsets) {
    const MailFolder folder;
    EXPECT_THAT(folder
                    .read("Content-Type: text/plain; charset=iso-8859-1\n"
                          "Content-Transfer-Encoding: quoted-printable\n\ncaf=E9 ferm=E9\n")
                    .sentences,
                ElementsAre("café fermé"));
    EXPECT_THAT(folder.read("Content-Type: text/plain; charset=x-unknown\n\ncaf\xE9\n").sentences,
                ElementsAre("café"));
    EXPECT_THAT(folder
                    .read("Content-Type: text/html\nContent-Transfer-Encoding: base64\n\n"
                          "PG1ldGEgY2hhcnNldD0iaXNvLTg4NTktMSI+Y2Fm6Q==\n")
                    .sentences,
                ElementsAre("café"));
}

TEST(MailDocument, JoinsFlowedLinesAndDropsQuoteMarks) {
    const MailFolder folder;
    EXPECT_THAT(
        folder.read("Content-Type: text/plain; format=flowed; delsp=yes\n\nThe riv \ner rose.\n").sentences,
        ElementsAre("The river rose."));
    EXPECT_THAT(folder.read("Subject: x\n\nAnn wrote\n> the river\n> rose\n>> before\nYes\n").sentences,
                ElementsAre("Ann wrote", "the river rose", "before", "Yes"));
}

TEST(MailDocument, ReadsAMessageBehindAMarkEmptyLinesOrAMailboxLine) {
    const MailFolder folder;
    EXPECT_EQ(folder.read("\xEF\xBB\xBFSubject: x\n\ny\n").properties.at("title"), base::Variant("x"));
    EXPECT_EQ(folder.read("\r\n\r\nSubject: x\r\n\r\ny\r\n").properties.at("title"), base::Variant("x"));
    EXPECT_EQ(folder.read("From a@b Sat Jan  3 01:05:34 1996\nSubject: x\n\ny\n").properties.at("title"),
              base::Variant("x"));
}

TEST(MailDocument, WithBrokenPartsGivesWhatCanBeRead) {
    const MailFolder folder;
    EXPECT_THAT(folder.read("Content-Type: multipart/mixed; boundary=a\n\n--a\n\nfirst\n").sentences,
                ElementsAre("first"));
    EXPECT_THAT(folder.read("Content-Type: multipart/mixed; boundary=a\n\nno boundary\n").sentences,
                ElementsAre("no boundary"));
    EXPECT_THAT(folder.read("Content-Type: multipart/mixed\n\nno boundary\n").sentences,
                ElementsAre("no boundary"));
    EXPECT_THAT(folder.read("Subject: no body\n").sentences, IsEmpty());
    EXPECT_THAT(
        folder.read("Content-Type: text/plain\nContent-Transfer-Encoding: base64\n\nQW5u!!!\n").sentences,
        ElementsAre("Ann"));
}

TEST(MailDocument, IsPlainTextWhereTheFileHasNoHeaders) {
    const MailFolder folder;
    EXPECT_THAT(folder.read("Just a note. Nothing else.\n").sentences,
                ElementsAre("Just a note.", "Nothing else."));
}

TEST(MailDocument, IsRefusedWhenTheFileIsEmptyOrBinary) {
    const MailFolder folder;
    EXPECT_THROW(static_cast<void>(folder.read("")), sdk::ExtractionError);
    EXPECT_THROW(static_cast<void>(folder.read("\n\n\n")), sdk::ExtractionError);
    EXPECT_THROW(static_cast<void>(folder.read(std::string("\x7F"
                                                           "ELF\x02\x01\0\0",
                                                           8))),
                 sdk::ExtractionError);
}

TEST(MailDocument, DoesNotFollowEndlessNesting) {
    const MailFolder folder;
    std::string message = "Subject: deep\n";
    for (int i = 0; i < 5000; ++i) {
        const std::string number = std::to_string(i);
        message.append("Content-Type: multipart/mixed; boundary=b").append(number).append("\n\n--b");
        message.append(number).append("\n");
    }
    EXPECT_EQ(folder.read(message + "\nbottom\n").properties.at("title"), base::Variant("deep"));
}

TEST(MailExtractor, AnswersTheContractForAMessage) {
    const MailFolder folder;
    mail::MailExtractor extractor;
    ASSERT_TRUE(extractor.SetDocumentID(folder.write(
        "a.eml",
        "Subject: Tides\nFrom: a@b.example\n" +
            samples::multipart("mixed", {samples::plainPart, "Content-Type: image/png; name=a.png\n\nx"}))));
    EXPECT_EQ(extractor.GetDocumentProperty("title"), base::Variant("Tides"));
    EXPECT_EQ(extractor.GetSentenceText(1), "Plain words.");
    EXPECT_EQ(extractor.GetImportantTextType(1), "subject");
    EXPECT_EQ(extractor.GetMetaTagType(1), "from");
    ASSERT_EQ(extractor.GetNumberofSubDocuments(), 1);
    EXPECT_THAT(extractor.GetSubDocumentTempPath(1), HasSubstr(folder.attachments()));
    EXPECT_EQ(extractor.GetSubDocumentPath(1), "");
}

}  // namespace
