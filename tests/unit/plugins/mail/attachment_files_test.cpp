#include "mail/attachment_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "unit/plugins/mail/mail_samples.h"

namespace {

using mail::attachmentBaseName;
using mail::attachmentExtension;
using samples::MailFolder;

bool writeNothing(int /*descriptor*/) {
    return true;
}

TEST(AttachmentExtension, IsThatOfTheNameWhereItIsAGoodOne) {
    EXPECT_EQ(attachmentExtension("a.tar.GZ", "text/plain"), "gz");
    EXPECT_EQ(attachmentExtension("a.abcdefghij", ""), "abcdefghij");
    EXPECT_EQ(attachmentExtension("a.abcdefghijk", ""), "bin");
    EXPECT_EQ(attachmentExtension("a.t/../x", "text/html"), "html");
    EXPECT_EQ(attachmentExtension("a.", "TEXT/Plain"), "txt");
    EXPECT_EQ(attachmentExtension("", "message/rfc822"), "eml");
    EXPECT_EQ(attachmentExtension("dir.d/readme", ""), "bin");
}

TEST(AttachmentBaseName, IsCleanShortAndNeverEmpty) {
    EXPECT_EQ(attachmentBaseName("/tmp/../my report.v2.doc"), "my report.v2");
    EXPECT_EQ(attachmentBaseName("..\\..\\boot.ini"), "boot");
    EXPECT_EQ(attachmentBaseName("a:b*c?\n\x7F|d.txt"), "a_b_c____d");
    EXPECT_EQ(attachmentBaseName("  .hidden.txt "), "hidden");
    EXPECT_EQ(attachmentBaseName(".."), "attachment");
    EXPECT_EQ(attachmentBaseName(""), "attachment");
    EXPECT_EQ(attachmentBaseName(std::string(500, 'x') + ".txt"), std::string(80, 'x'));
}

TEST(AttachmentFiles, NumberNamesThatRepeat) {
    const MailFolder folder;
    mail::AttachmentFiles first(0);
    mail::AttachmentFiles second(0);
    const std::string path = first.add("a.txt", "", writeNothing);
    EXPECT_EQ(samples::nameOf(path), "a.txt");
    EXPECT_EQ(samples::nameOf(first.add("a.txt", "", writeNothing)), "a~1.txt");
    EXPECT_EQ(samples::nameOf(second.add("a.txt", "", writeNothing)), "a~2.txt");
}

TEST(AttachmentFiles, SayWhyOneCannotBeWritten) {
    const MailFolder folder;
    mail::AttachmentFiles files(0);
    try {
        files.add("a.txt", "", [](int /*descriptor*/) {
            errno = ENOSPC;
            return false;
        });
        FAIL() << "a full disk went unnoticed";
    } catch (const sdk::ExtractionError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("a.txt: cannot write the attachment: No space left"));
    }
    EXPECT_EQ(folder.attachmentCount(), 0U);
}

}  // namespace
