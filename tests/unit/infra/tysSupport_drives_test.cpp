#include <gtest/gtest.h>

#include <string>

#include "infra/Services.h"
#include "unit/infra/parts.h"

namespace {

class NetworkPaths : public ::testing::Test {
  protected:
    Parts parts;
    infra::Services services{parts.system()};
    infra::tysSupport& support = services.support;
};

TEST_F(NetworkPaths, HaveNoShareForALocalDriveOrNoText) {
    EXPECT_EQ(support.getNetworkConnection(R"(c:\temp)"), "");
    EXPECT_EQ(parts.drives.asked, std::vector<std::string>{"C:"});
    EXPECT_EQ(support.getNetworkConnection(""), "");
    EXPECT_EQ(parts.drives.asked.size(), 1U);
}

TEST_F(NetworkPaths, HaveTheShareOfADriveLetterOfEitherCase) {
    parts.drives.shares["X:"] = R"(\\server\share)";
    EXPECT_EQ(support.getNetworkConnection("x"), R"(\\server\share)");
    EXPECT_EQ(support.getNetworkConnection("X:"), R"(\\server\share)");
    EXPECT_EQ(support.getNetworkConnection(R"(x:\docs\a.doc)"), R"(\\server\share)");
}

TEST_F(NetworkPaths, AskForTheWholeFirstCharacter) {
    EXPECT_EQ(support.getNetworkConnection("é:"), "");
    EXPECT_EQ(parts.drives.asked, std::vector<std::string>{"É:"});
}

TEST_F(NetworkPaths, AskOnceMoreWithTwiceTheRoomForALongShare) {
    const std::string share = R"(\\server\)" + std::string(300, 's');
    parts.drives.shares["X:"] = share;
    EXPECT_EQ(support.getNetworkConnection("X"), share);
    const auto needed = static_cast<std::uint32_t>(share.size() + 1);
    EXPECT_EQ(parts.drives.sizes, (std::vector<std::uint32_t>{260, 2 * needed}));
}

/// Always wants more room than it is given.
class GreedyDrives : public platform::Drives {
  public:
    platform::DriveStatus connection(std::string_view, char*, std::uint32_t& size) override {
        ++asked;
        size = wanted == 0 ? size + 1 : wanted;
        return platform::DriveStatus::moreData;
    }
    int asked = 0;
    std::uint32_t wanted = 0;
};

TEST(NetworkPathsOfGreedyDrives, AreEmptyAfterTheSecondQuestion) {
    Parts parts;
    GreedyDrives drives;
    infra::Services services({parts.settings, parts.database, parts.automation, parts.toolkit, parts.files,
                              parts.process, drives, parts.clock});
    EXPECT_EQ(services.support.getNetworkConnection("X"), "");
    EXPECT_EQ(drives.asked, 2);
    drives.wanted = 0xFFFFFFFFU;
    EXPECT_EQ(services.support.getNetworkConnection("X"), "");
    EXPECT_EQ(drives.asked, 3);
}

TEST_F(NetworkPaths, AreEmptyWhereTheNetworkFails) {
    parts.drives.shares["X:"] = R"(\\srv\share)";
    parts.drives.failure = [] { throw base::RuntimeError(5, "no network"); };
    EXPECT_EQ(support.getNetworkConnection("X"), "");
    EXPECT_EQ(support.getMappedDrivePath(R"(\\srv\share\a)"), "");
}

TEST_F(NetworkPaths, AreSpelledThroughTheDriveWithBackslashes) {
    parts.drives.shares["X:"] = R"(\\srv\share)";
    EXPECT_EQ(support.getMappedDrivePath(R"(\\srv\share\a/b)"), R"(X:\a\b)");
}

TEST_F(NetworkPaths, AreEmptyForAPathThatIsTheShareItself) {
    parts.drives.shares["X:"] = R"(\\srv\share)";
    EXPECT_EQ(support.getMappedDrivePath(R"(\\srv\share)"), "");
    EXPECT_EQ(support.getMappedDrivePath(R"(\\srv\share\)"), R"(X:\)");
    EXPECT_EQ(support.getMappedDrivePath(R"(\\srv\sha)"), "");
    EXPECT_EQ(support.getMappedDrivePath(""), "");
}

TEST_F(NetworkPaths, CompareWithoutRegardToCaseAndKeepTheRestAsItIs) {
    parts.drives.shares["X:"] = R"(\\srv\GRÖßE)";
    EXPECT_EQ(support.getMappedDrivePath(R"(\\SRV\größe\Äpfel.doc)"), R"(X:\Äpfel.doc)");
}

TEST_F(NetworkPaths, TakeTheFirstDriveOfSeveral) {
    parts.drives.shares["Z:"] = R"(\\srv\share)";
    parts.drives.shares["D:"] = R"(\\srv\share)";
    EXPECT_EQ(support.getMappedDrivePath(R"(\\srv\share\a)"), R"(D:\a)");
    EXPECT_EQ(parts.drives.asked, (std::vector<std::string>{"C:", "D:"}));
}

TEST_F(NetworkPaths, AreLookedForFromCToZ) {
    parts.drives.shares["A:"] = R"(\\srv\share)";
    parts.drives.shares["B:"] = R"(\\srv\share)";
    EXPECT_EQ(support.getMappedDrivePath(R"(\\srv\share\a)"), "");
    EXPECT_EQ(parts.drives.asked.size(), 24U);
    EXPECT_EQ(parts.drives.asked.front(), "C:");
    EXPECT_EQ(parts.drives.asked.back(), "Z:");
}

TEST_F(NetworkPaths, TakeAShareThatIsAPrefixInTheMiddleOfAName) {
    parts.drives.shares["X:"] = R"(\\srv\data)";
    EXPECT_EQ(support.getMappedDrivePath(R"(\\srv\database\file)"), R"(X:base\file)");
}

}  // namespace
