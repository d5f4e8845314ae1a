#include "tyctl/document_walker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "fakes/temporary_folder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tyctl::DocumentWalker;

class DocumentWalkerTest : public testing::Test {
  protected:
    void walk(const std::string& path, bool hiddenToo = false) {
        DocumentWalker walker(
            hiddenToo, [this](const std::string& file) { found.push_back(file); },
            [this](const std::string& message) { troubles.push_back(message); });
        walker.walk(path);
    }

    fakes::TemporaryFolder folder;
    std::vector<std::string> found;
    std::vector<std::string> troubles;
};

TEST_F(DocumentWalkerTest, FindsFilesBelowAFolderInTheOrderOfTheirNames) {
    const std::string second = folder.write("b.txt", "");
    const std::string nested = folder.write("a/deep/c.txt", "");
    walk(folder.path());
    EXPECT_THAT(found, ElementsAre(nested, second));
    EXPECT_THAT(troubles, IsEmpty());
}

TEST_F(DocumentWalkerTest, TellsOfAPathThatIsEmpty) {
    walk("");
    EXPECT_THAT(found, IsEmpty());
    EXPECT_THAT(troubles, ElementsAre("an empty path names no file or folder; left out"));
}

TEST_F(DocumentWalkerTest, MakesPathsPlain) {
    const std::string file = folder.write("a/x.txt", "");
    walk(folder / "a/../a/./");
    EXPECT_THAT(found, ElementsAre(file));
}

TEST_F(DocumentWalkerTest, LeavesHiddenEntriesOutUnlessAsked) {
    const std::string hidden = folder.write(".cache/x.txt", "");
    walk(folder.path());
    EXPECT_THAT(found, IsEmpty());
    walk(folder.path(), true);
    EXPECT_THAT(found, ElementsAre(hidden));
}

TEST_F(DocumentWalkerTest, TakesAHiddenPathThatIsNamed) {
    const std::string hidden = folder.write(".cache/x.txt", "");
    walk(folder / ".cache");
    EXPECT_THAT(found, ElementsAre(hidden));
}

TEST_F(DocumentWalkerTest, EntersAFolderThatLinksToItselfOnce) {
    const std::string file = folder.write("a/x.txt", "");
    std::filesystem::create_directory_symlink(folder.path(), folder / "a/loop");
    walk(folder.path());
    EXPECT_THAT(found, ElementsAre(file));
}

TEST_F(DocumentWalkerTest, TellsOfAMissingPathAndOfALinkToNothing) {
    std::filesystem::create_symlink(folder / "nothing", folder / "link");
    walk(folder / "missing");
    walk(folder.path());
    EXPECT_THAT(troubles,
                ElementsAre(HasSubstr("missing: there is no such file"), HasSubstr("link: there is no")));
}

TEST(DataTypeOf, IsTheExtensionInLowerCase) {
    EXPECT_EQ(tyctl::dataTypeOf("/x/Report.v2.TXT"), "txt");
    EXPECT_EQ(tyctl::dataTypeOf("/x.d/README"), "");
    EXPECT_EQ(tyctl::dataTypeOf("/x/.profile"), "");
}

TEST(ReasonAgainst, NamesWhatTheServiceWouldChangeInAPath) {
    EXPECT_THAT(tyctl::reasonAgainst("/x/a.txt "), HasSubstr("ends in a blank"));
    EXPECT_THAT(tyctl::reasonAgainst("/x/a\\\\b.txt"), HasSubstr("two backslashes"));
    EXPECT_EQ(tyctl::reasonAgainst("/x/a b\\c\n.txt"), "");
}

TEST(IsValidText, TellsUtf8FromOtherBytes) {
    EXPECT_TRUE(tyctl::isValidText("/x/\xC3\xA4.txt"));
    EXPECT_FALSE(tyctl::isValidText("/x/\xE4.txt"));
}

}  // namespace
