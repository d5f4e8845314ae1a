#include "tyctl/known_settings.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using platform::ValueType;
using tyctl::knownTypeOf;
using tyctl::objectionToNumber;
using tyctl::objectionToText;
using tyctl::parseSettingName;

constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();

std::string toNumber(const char* name, std::int32_t number) {
    return objectionToNumber(parseSettingName(name), number);
}

std::string toText(const char* name, const char* text) {
    return objectionToText(parseSettingName(name), text);
}

struct Range {
    const char* name;
    std::int32_t lowest;
    std::int32_t highest;
};

TEST(KnownTypeOf, TellsNumbersFromTexts) {
    EXPECT_EQ(knownTypeOf(parseSettingName(R"(Indexer\pollinterval)")), ValueType::number);
    EXPECT_EQ(knownTypeOf(parseSettingName(R"(DataTypes\txt\IndexPlugin)")), ValueType::text);
    EXPECT_EQ(knownTypeOf(parseSettingName(R"(Indexer\Something)")), std::nullopt);
}

TEST(KnownTypeOf, KnowsNothingOutsideTheProduct) {
    EXPECT_EQ(knownTypeOf(parseSettingName(R"(software\other\PollInterval)")), std::nullopt);
}

TEST(Objection, NumbersOutsideTheirRangeAreRefused) {
    for (const Range& range :
         {Range{"StoreContext", 0, 1}, Range{"indexer/loggingon", 0, 2}, Range{"Indexer/PollInterval", 0, 65},
          Range{"Indexer/MaxDocsBeforeRestart", 0, most}, Range{"Indexer/LogLevelCrashDetection", 0, 1},
          Range{"Indexer/LogLevelLogicPath", 0, 1}, Range{"Indexer/LogLevelErrorReport", 0, 1},
          Range{"Indexer/LogLevelInterest", 0, 1}, Range{"Indexer/LogLevelUIOutput", 0, 1},
          Range{"Indexer/IndexEmailAttachments", 0, 1}, Range{"Indexer/PluginTimeoutSeconds", 1, 3600},
          Range{"Indexer/DeadMansSwitchSeconds", 0, most},
          Range{"Master/DocsIndexedSinceCompaction", 0, most}}) {
        SCOPED_TRACE(range.name);
        EXPECT_EQ(toNumber(range.name, range.lowest), "");
        EXPECT_EQ(toNumber(range.name, range.highest), "");
        EXPECT_NE(toNumber(range.name, range.lowest - 1), "");
        if (range.highest < most) {
            EXPECT_NE(toNumber(range.name, range.highest + 1), "");
        }
    }
    EXPECT_EQ(toNumber("Indexer/LoggingOn", 7), "takes a whole number from 0 to 2, not 7");
}

TEST(Objection, APriorityIsOneOfThreeWordsInAnyLetterCase) {
    for (const char* word : {"low", "Normal", "HIGH"}) {
        EXPECT_EQ(toText("Indexer/Priority", word), "");
    }
    for (const char* word : {"idle", " high", ""}) {
        EXPECT_NE(toText("Indexer/Priority", word), "");
    }
    EXPECT_EQ(toText("Indexer/Priority", "fast"), "takes low, normal or high, not \"fast\"");
}

TEST(Objection, AKindThatTheServiceDoesNotReadIsRefused) {
    EXPECT_NE(toText("Indexer/PollInterval", "5"), "");
    EXPECT_NE(toNumber("DataBasePath", 5), "");
    EXPECT_NE(toNumber("DataTypes/txt/IndexPlugin", 5), "");
    EXPECT_EQ(toText("DataTypes/txt/IndexPlugin", "NULL"), "");
}

TEST(Objection, ATemporaryFileThatWouldHoldTheStartUpIsRefused) {
    EXPECT_NE(toText("Indexer/Temp Files/a", ""), "");
    EXPECT_NE(toNumber("Indexer/Temp Files/a", 1), "");
    EXPECT_EQ(toText("Indexer/Temp Files/a", "/tmp/a"), "");
}

TEST(Objection, WhatTheServiceDoesNotReadTakesEverything) {
    EXPECT_EQ(toNumber("DataTypes/txt/PluginTimeoutSeconds", 0), "");
    EXPECT_EQ(toNumber("DataTypes/IndexPlugin", 0), "");
    EXPECT_EQ(toText("Indexer/Something", ""), "");
    EXPECT_EQ(toText("software/other/Priority", "fast"), "");
}

}  // namespace
