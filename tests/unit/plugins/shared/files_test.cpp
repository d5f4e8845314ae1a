#include "shared/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <filesystem>

#include "fakes/temporary_folder.h"

namespace {

using testing::HasSubstr;

std::string failureOf(const std::string& path) {
    try {
        const shared::InputFile file(path);
    } catch (const sdk::ExtractionError& error) {
        EXPECT_NE(error.number(), 0);
        return error.what();
    }
    return {};
}

TEST(InputFile, SaysWhichFileIsMissing) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder / "missing.txt";
    EXPECT_EQ(failureOf(path), path + ": cannot open: No such file or directory");
}

TEST(InputFile, RefusesAFolder) {
    const fakes::TemporaryFolder folder;
    EXPECT_EQ(failureOf(folder.path()), folder.path() + ": this is a folder, not a document");
}

TEST(InputFile, DoesNotWaitForAPipeOrADevice) {
    const fakes::TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THAT(failureOf(pipe), HasSubstr("not a document"));
    EXPECT_THAT(failureOf("/dev/zero"), HasSubstr("not a document"));
}

TEST(InputFile, GivesSizeHeadAndWhole) {
    const fakes::TemporaryFolder folder;
    const shared::InputFile file(folder.write("a.txt", "0123456789"));
    EXPECT_EQ(file.size(), 10);
    EXPECT_EQ(file.head(4), "0123");
    EXPECT_EQ(file.head(400), "0123456789");
    EXPECT_EQ(file.readAll(), "0123456789");
    std::string bytes = file.head(4);
    file.readRest(bytes);
    EXPECT_EQ(bytes, "0123456789");
    file.readRest(bytes);
    EXPECT_EQ(bytes, "0123456789");
}

TEST(FileProperties, TellLocalTimeAndSize) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder.write("a.txt", "12345");
    const utimbuf times{1000000000, 1000000000};
    ASSERT_EQ(utime(path.c_str(), &times), 0);
    sdk::Document document;
    shared::setFileProperties(document, shared::InputFile(path));
    EXPECT_EQ(document.properties["data_size"], base::Variant(5));
    EXPECT_EQ(document.properties["last_time_modified"], base::Variant(shared::localTime(1000000000)));
    EXPECT_EQ(document.properties["title"], base::Variant(""));
    EXPECT_EQ(document.properties["source_url"], base::Variant(""));
}

TEST(FileProperties, TellASizeBeyond32BitsAsTheLargest) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder.write("huge.txt", "");
    std::error_code failure;
    std::filesystem::resize_file(path, 3000000000, failure);
    if (failure) {
        GTEST_SKIP() << "the file system holds no file of this size: " << failure.message();
    }
    sdk::Document document;
    shared::setFileProperties(document, shared::InputFile(path));
    EXPECT_EQ(document.properties["data_size"], base::Variant(2147483647));
}

}  // namespace
