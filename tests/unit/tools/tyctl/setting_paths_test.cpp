#include "tyctl/setting_paths.h"

#include <gtest/gtest.h>

namespace {

using tyctl::expandKey;
using tyctl::parseSettingName;
using tyctl::SettingName;
using tyctl::shortKey;

TEST(ExpandKey, PutsShortFormsBelowTheProductsKey) {
    EXPECT_EQ(expandKey("service"), R"(software\orlent corporation\tessaly\service)");
    EXPECT_EQ(expandKey(R"(service\Indexer)"), R"(software\orlent corporation\tessaly\service\Indexer)");
    EXPECT_EQ(expandKey(R"(DataTypes\txt)"), R"(software\orlent corporation\tessaly\DataTypes\txt)");
}

TEST(ExpandKey, PutsTheServicesOwnKeysBelowTheService) {
    EXPECT_EQ(expandKey("Indexer"), R"(software\orlent corporation\tessaly\service\Indexer)");
    EXPECT_EQ(expandKey(R"(indexer\Temp Files)"),
              R"(software\orlent corporation\tessaly\service\indexer\Temp Files)");
    EXPECT_EQ(expandKey("Master"), R"(software\orlent corporation\tessaly\service\Master)");
}

TEST(ExpandKey, TakesFullPathsAsTheyAre) {
    EXPECT_EQ(expandKey(R"(Software\Orlent Corporation\Tessaly\Service)"),
              R"(Software\Orlent Corporation\Tessaly\Service)");
    EXPECT_EQ(expandKey(R"(HKEY_CURRENT_USER\software\other\)"), R"(software\other)");
    EXPECT_EQ(expandKey(R"(services\x)"), R"(services\x)");
    EXPECT_EQ(expandKey(""), "");
    EXPECT_EQ(expandKey("HKEY_CURRENT_USER"), "");
}

TEST(ExpandKey, TakesSlashesForSeparators) {
    EXPECT_EQ(expandKey("DataTypes/md"), R"(software\orlent corporation\tessaly\DataTypes\md)");
}

TEST(ParseSettingName, SplitsAtTheLastSeparator) {
    EXPECT_EQ(parseSettingName(R"(Indexer\PollInterval)"),
              (SettingName{R"(software\orlent corporation\tessaly\service\Indexer)", "PollInterval"}));
    EXPECT_EQ(parseSettingName("DataTypes/txt/IndexPlugin"),
              (SettingName{R"(software\orlent corporation\tessaly\DataTypes\txt)", "IndexPlugin"}));
}

TEST(ParseSettingName, TakesABareNameForAValueOfTheService) {
    EXPECT_EQ(parseSettingName("DataBasePath"),
              (SettingName{R"(software\orlent corporation\tessaly\service)", "DataBasePath"}));
}

TEST(ParseSettingName, TakesAnEndingSeparatorForTheUnnamedValue) {
    const SettingName mark{R"(software\orlent corporation\tessaly\service\Master)", ""};
    EXPECT_EQ(parseSettingName(R"(service\Master\)"), mark);
    EXPECT_EQ(parseSettingName("Master"), mark);
}

TEST(ShortKey, ReadsBackAsTheSameKey) {
    for (const std::string key :
         {R"(software\orlent corporation\tessaly\service\Indexer)",
          R"(software\orlent corporation\tessaly\DataTypes\eml)", R"(software\other)",
          R"(software\orlent corporation\tessaly\else)", R"(software\orlent corporation\tessaly)"}) {
        EXPECT_EQ(expandKey(shortKey(key)), key);
    }
}

}  // namespace
