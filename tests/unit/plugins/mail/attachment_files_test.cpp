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

/// Makes a folder for temporary files whose path has this many bytes.
void useFolderOfLength(const MailFolder& folder, std::size_t length) {
    std::string path = folder.attachments();
    while (path.size() < length) {
        const std::size_t left = length - path.size() - 1;
        path += "/" + std::string(left > 101 ? 100 : left, 'd');
    }
    ASSERT_EQ(path.size(), length);
    std::filesystem::create_directories(path);
    setenv("TMPDIR", path.c_str(), 1);
}

TEST(AttachmentFiles, HaveAPathOfAtMost250Bytes) {
    const MailFolder folder;
    useFolderOfLength(folder, 180);
    std::string name;
    for (int i = 0; i < 80; ++i) {
        name += "\xE6\x96\x87";
    }
    mail::AttachmentFiles files(0);
    const std::string first = files.add(name + ".docx", "", writeNothing);
    const std::string second = files.add(name + ".docx", "", writeNothing);
    EXPECT_THAT(first.size(), testing::AllOf(testing::Le(250U), testing::Gt(250U - 3)));
    EXPECT_LE(second.size(), 250U);
    EXPECT_THAT(samples::nameOf(first), testing::MatchesRegex("(\xE6\x96\x87)+\\.docx"));
    EXPECT_THAT(samples::nameOf(second), testing::MatchesRegex("(\xE6\x96\x87)+~1\\.docx"));
}

TEST(AttachmentFiles, SayThatTheFolderLeavesNoRoomForAName) {
    const MailFolder folder;
    useFolderOfLength(folder, 240);
    mail::AttachmentFiles files(0);
    try {
        files.add("a.txt", "", writeNothing);
        FAIL() << "a path that the service cannot note went unnoticed";
    } catch (const sdk::ExtractionError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("too long; set TMPDIR to a folder with a shorter one"));
    }
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
