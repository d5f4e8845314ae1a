#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "infra/Services.h"
#include "unit/infra/parts.h"

namespace {

using infra::LogLevel;
using infra::Services;

constexpr std::string_view key = infra::indexerKey;
const std::vector<std::string> levelSettings{"LogLevelCrashDetection", "LogLevelLogicPath",
                                             "LogLevelErrorReport", "LogLevelInterest", "LogLevelUIOutput"};

class WriteLog : public ::testing::Test {
  protected:
    void SetUp() override {
        parts.settings.put(key, "LogFilePath", parts.folder / "service.log");
        parts.clock.moment = *base::DateTime::parse("2002-03-05 14:07:09");
    }

    void setAllLevels(std::int32_t value) {
        for (const std::string& setting : levelSettings) {
            parts.settings.put(key, setting, value);
        }
    }

    void writeOneOfEach() {
        for (int level = -1; level <= 6; ++level) {
            services.support.WriteLog("m" + std::to_string(level), LogLevel{level});
        }
    }

    [[nodiscard]] std::string log() const { return parts.folder.read("service.log"); }

    Parts parts;
    Services services{parts.system()};
};

TEST_F(WriteLog, AppendsALineWithTimeAndLevel) {
    services.support.WriteLog("tysRegistry.GetSettingLong - Type mismatch", LogLevel::errorReport);
    EXPECT_EQ(log(), "05 Mar 2002 14:07:09: Error: tysRegistry.GetSettingLong - Type mismatch\r\n");
    parts.clock.advance(1);
    services.support.WriteLog("größer", LogLevel::interest);
    EXPECT_EQ(log(),
              "05 Mar 2002 14:07:09: Error: tysRegistry.GetSettingLong - Type mismatch\r\n"
              "05 Mar 2002 14:07:10: Interest: größer\r\n");
}

TEST_F(WriteLog, WritesAMessageWithLineBreaksAsItIs) {
    services.support.WriteLog("Indexer::IndexDocument - Starting: /docs/two\r\nlines\x1b.txt",
                              LogLevel::interest);
    EXPECT_EQ(
        log(),
        "05 Mar 2002 14:07:09: Interest: Indexer::IndexDocument - Starting: /docs/two\r\nlines\x1b.txt\r\n");
}

TEST_F(WriteLog, PutsThePrefixOfEachLevelBeforeTheMessage) {
    setAllLevels(1);
    writeOneOfEach();
    EXPECT_EQ(log(),
              "05 Mar 2002 14:07:09: Unknown: m0\r\n"
              "05 Mar 2002 14:07:09: Crash Detect: m1\r\n"
              "05 Mar 2002 14:07:09: Logic: m2\r\n"
              "05 Mar 2002 14:07:09: Error: m3\r\n"
              "05 Mar 2002 14:07:09: Interest: m4\r\n"
              "05 Mar 2002 14:07:09: UI: m5\r\n");
}

TEST_F(WriteLog, WritesErrorsAndEventsWhereNoLevelIsSet) {
    writeOneOfEach();
    EXPECT_EQ(log(),
              "05 Mar 2002 14:07:09: Unknown: m0\r\n"
              "05 Mar 2002 14:07:09: Error: m3\r\n"
              "05 Mar 2002 14:07:09: Interest: m4\r\n");
}

TEST_F(WriteLog, WritesLevelZeroWhenEveryLevelIsOff) {
    setAllLevels(0);
    writeOneOfEach();
    EXPECT_EQ(log(), "05 Mar 2002 14:07:09: Unknown: m0\r\n");
}

TEST_F(WriteLog, TakesAnyValueButOneAsOff) {
    for (const std::int32_t value : {2, -1, 255}) {
        parts.folder.write("service.log", "");
        setAllLevels(value);
        services.support.LoadLogLevels();
        writeOneOfEach();
        EXPECT_EQ(log(), "05 Mar 2002 14:07:09: Unknown: m0\r\n");
    }
}

TEST_F(WriteLog, TakesTheDefaultForALevelThatIsNoNumber) {
    parts.settings.put(key, "LogLevelErrorReport", "0");
    parts.settings.put(key, "LogLevelLogicPath", "1");
    writeOneOfEach();
    EXPECT_NE(log().find("Error: m3"), std::string::npos);
    EXPECT_EQ(log().find("Logic: m2"), std::string::npos);
}

TEST_F(WriteLog, SwitchesEachLevelOnByItself) {
    const std::vector<std::string> prefixes{"Crash Detect: ", "Logic: ", "Error: ", "Interest: ", "UI: "};
    for (std::size_t i = 0; i < levelSettings.size(); ++i) {
        parts.folder.write("service.log", "");
        setAllLevels(0);
        parts.settings.put(key, levelSettings.at(i), 1);
        services.support.LoadLogLevels();
        writeOneOfEach();
        EXPECT_EQ(log(), "05 Mar 2002 14:07:09: Unknown: m0\r\n05 Mar 2002 14:07:09: " + prefixes.at(i) +
                             "m" + std::to_string(i + 1) + "\r\n");
    }
}

TEST_F(WriteLog, ReadsTheLevelsOnce) {
    services.support.WriteLog("first", LogLevel::interest);
    parts.settings.put(key, "LogLevelInterest", 0);
    services.support.WriteLog("second", LogLevel::interest);
    EXPECT_NE(log().find("second"), std::string::npos);
    Services restarted(parts.system());
    restarted.support.WriteLog("third", LogLevel::interest);
    EXPECT_EQ(log().find("third"), std::string::npos);
}

TEST_F(WriteLog, ReadsThePathOnce) {
    services.support.WriteLog("first", LogLevel::interest);
    parts.settings.put(key, "LogFilePath", parts.folder / "other.log");
    services.support.WriteLog("second", LogLevel::interest);
    EXPECT_NE(log().find("second"), std::string::npos);
    EXPECT_EQ(parts.folder.read("other.log"), "");
}

TEST_F(WriteLog, WritesToThePathThatWasSet) {
    services.support.setLogFilePath(parts.folder / "chosen.log");
    services.support.WriteLog("first", LogLevel::interest);
    EXPECT_EQ(parts.folder.read("chosen.log"), "05 Mar 2002 14:07:09: Interest: first\r\n");
    EXPECT_EQ(log(), "");
    services.support.setLogFilePath("");
    services.support.WriteLog("second", LogLevel::interest);
    EXPECT_EQ(log(), "05 Mar 2002 14:07:09: Interest: second\r\n");
}

TEST_F(WriteLog, OpensTheFileAnewForEveryLine) {
    services.support.WriteLog("first", LogLevel::interest);
    std::filesystem::rename(parts.folder / "service.log", parts.folder / "service.old");
    services.support.WriteLog("second", LogLevel::interest);
    EXPECT_EQ(parts.folder.read("service.old"), "05 Mar 2002 14:07:09: Interest: first\r\n");
    EXPECT_EQ(log(), "05 Mar 2002 14:07:09: Interest: second\r\n");
}

TEST_F(WriteLog, DoesNotTouchTheFileForALevelThatIsOff) {
    services.support.WriteLog("crumb", LogLevel::crashDetection);
    EXPECT_EQ(parts.files.appends, 0);
    EXPECT_FALSE(std::filesystem::exists(parts.folder / "service.log"));
}

TEST_F(WriteLog, DropsALineThatCannotBeWritten) {
    services.support.setLogFilePath(parts.folder / "missing/service.log");
    EXPECT_NO_THROW(services.support.WriteLog("lost", LogLevel::interest));
    services.support.setLogFilePath(parts.folder.path());
    EXPECT_NO_THROW(services.support.WriteLog("lost", LogLevel::interest));
    EXPECT_EQ(parts.files.appends, 2);
}

TEST(WriteLogWithoutAPath, MakesNoFileAndReportsNothing) {
    Parts parts;
    parts.files.temporary = parts.folder.path() + "/";
    Services services(parts.system());
    ::testing::internal::CaptureStderr();
    services.support.WriteLog("first", LogLevel::interest);
    services.support.WriteLog("second", LogLevel::errorReport);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(std::filesystem::is_empty(parts.folder.path()));
    EXPECT_TRUE(parts.toolkit.boxes.empty());
    EXPECT_EQ(parts.files.appends, 2);
}

TEST(WriteLogWithoutAPath, KeepsTheTemporaryFolderAsItsPath) {
    Parts parts;
    parts.files.temporary = parts.folder.path() + "/";
    Services services(parts.system());
    services.support.WriteLog("first", LogLevel::interest);
    parts.settings.put(key, "LogFilePath", parts.folder / "service.log");
    services.support.WriteLog("second", LogLevel::interest);
    EXPECT_TRUE(std::filesystem::is_empty(parts.folder.path()));
}

// The settings report the failed read to the log, which has to read its path from the settings.
TEST(WriteLogWithoutAPath, EndsWhereReadingThePathFails) {
    Parts parts;
    parts.settings.conversionFails = true;
    Services services(parts.system());
    services.support.WriteLog("lost", LogLevel::unknown);
    EXPECT_TRUE(std::filesystem::is_empty(parts.folder.path()));
    parts.settings.conversionFails = false;
    parts.settings.put(key, "LogFilePath", parts.folder / "service.log");
    services.support.WriteLog("kept", LogLevel::unknown);
    EXPECT_EQ(parts.folder.read("service.log"), "16 Nov 2026 01:47:03: Unknown: kept\r\n");
}

}  // namespace
