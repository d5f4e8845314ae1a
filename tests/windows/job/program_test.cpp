// tyIndexer.exe itself: settings made by "reg add", a queue entry worked off, the heartbeat read by "reg
// query", and the window closed.
#include <gmock/gmock.h>

#include <fstream>
#include <regex>

#include "windows/ado/ado_library.h"
#include "windows/job/job_fixture.h"
#include "windows/job/running_program.h"

namespace job_tests {
namespace {

constexpr const char* serviceKeyPath = "HKCU\\software\\orlent corporation\\tessaly\\service";
constexpr const char* indexerKeyPath = "HKCU\\software\\orlent corporation\\tessaly\\service\\Indexer";
constexpr const char* masterKeyPath = "HKCU\\software\\orlent corporation\\tessaly\\service\\Master";
constexpr const char* textKeyPath = "HKCU\\software\\orlent corporation\\tessaly\\DataTypes\\txt";

class Program : public JobFixture {
  protected:
    void SetUp() override {
        if (!ado_tests::isStandInRegistered()) {
            GTEST_SKIP() << "the registry of this machine is somebody's";
        }
        JobFixture::SetUp();
        addText(serviceKeyPath, "DataBasePath", made.library->settings().dataSource);
        addText(textKeyPath, "IndexPlugin", "TyTest.Text");
        addText(indexerKeyPath, "LogFilePath", work.folder / "service.log");
        addText(indexerKeyPath, "Priority", "normal");
    }

    static void addText(const std::string& key, const std::string& name, const std::string& text) {
        outputOf("reg add \"" + key + "\" /v " + name + " /t REG_SZ /d \"" + text + "\" /f");
    }

    /// What "reg query" shows of a value, without the blanks around it.
    static std::string query(const std::string& key, const std::string& name) {
        const std::string output = outputOf("reg query \"" + key + "\" /v " + name + " 2>nul");
        std::smatch found;
        const std::regex line(name + "\\s+REG_\\w+\\s+([^\\r\\n]*)");
        return std::regex_search(output, found, line) ? found[1].str() : std::string();
    }

    bool isIndexed(RunningProgram& program) {
        return program.runsUntil([this] {
            return services->registry.GetSettingLong(platform::RootKey::currentUser, infra::masterKey,
                                                     "DocsIndexedSinceCompaction", 0) == 1;
        });
    }

    /// The statements of the stand-in's record from the claim on, with the present moment as the fake clock
    /// has it.
    Statements claimAndJob() {
        const Statements all =
            ado_tests::statementsOf(dynamic_cast<ado_tests::StandInLibrary&>(*made.library).takeRecord());
        static const std::regex present("'(20[0-9]{2}-[0-9]{2}-[0-9]{2} [0-9:]{8})'");
        static const std::regex presentInWords("'([0-9]{2} [A-Z][a-z]{2} 20[1-9][0-9] [0-9:]{8})'");
        Statements job;
        for (const std::string& statement : all) {
            if (job.empty() && !statement.starts_with("UPDATE file_index_queue")) {
                continue;
            }
            if (statement.starts_with("SELECT id FROM file_index_queue")) {
                break;
            }
            job.push_back(std::regex_replace(std::regex_replace(statement, present, "'2026-11-16 01:47:03'"),
                                             presentInWords, "'16 Nov 2026 01:47:03'"));
        }
        return job;
    }
};

TEST_P(Program, WorksOffTheQueueAndEndsWithItsWindow) {
    enqueue(1);
    dynamic_cast<ado_tests::StandInLibrary&>(*made.library).takeRecord();
    RunningProgram program("tyIndexer.exe");
    ASSERT_TRUE(isIndexed(program)) << logText();
    ASSERT_TRUE(program.closeWindow());
    EXPECT_EQ(program.waitForEnd(), 0U);
    EXPECT_EQ(lines(claimAndJob()),
              lines(Statements{"UPDATE file_index_queue SET flag_dirty = true WHERE id = 1"} + queueEntry(1) +
                    loadOfCaches() + begin() +
                    creation({"docs\\o''ki\\river.txt", "The Ki''s river", "05 Mar 2002 09:07:04"}) +
                    commit() + textOfRiver()));
    EXPECT_EQ(rows("SELECT title FROM document_object", {"title"}), Statements{"The Ki's river"});
    EXPECT_EQ(rows("SELECT COUNT(id) AS n FROM file_index_queue", {"n"}), Statements{"0"});
}

TEST_P(Program, ShowsItsHeartbeatToTheSupervisor) {
    enqueue(1);
    RunningProgram program("tyIndexer.exe");
    ASSERT_TRUE(isIndexed(program)) << logText();
    EXPECT_TRUE(base::DateTime::parse(query(indexerKeyPath, "LastTouch")))
        << query(indexerKeyPath, "LastTouch");
    EXPECT_THAT(query(indexerKeyPath, "DeadMansSwitchSeconds"), testing::StartsWith("0x"));
    EXPECT_EQ(query(indexerKeyPath, "IndexingQueueNumber"), "0x0");
    EXPECT_EQ(query(masterKeyPath, "DocsIndexedSinceCompaction"), "0x1");
    ASSERT_TRUE(program.closeWindow());
    EXPECT_EQ(program.waitForEnd(), 0U);
}

TEST_P(Program, TracesIntoAFileWhoseNameIsBeyondTheCodePage) {
    enqueue(1);
    RunningProgram program("tyIndexer.exe", "--trace-sql \xE6\x97\xA5\xE6\x9C\xAC.sql");
    ASSERT_TRUE(isIndexed(program)) << logText();
    ASSERT_TRUE(program.closeWindow());
    EXPECT_EQ(program.waitForEnd(), 0U);
    std::ifstream file(std::filesystem::path(L"\u65E5\u672C.sql"), std::ios::binary);
    const std::string written{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(written, testing::HasSubstr("UPDATE file_index_queue SET flag_dirty = true WHERE id = 1\n"));
}

TEST_P(Program, EndsWithStatusOneWhenThereIsNoLibrary) {
    addText(serviceKeyPath, "DataBasePath", work.folder / "missing.mdb");
    RunningProgram program("tyIndexer.exe");
    ASSERT_TRUE(program.answerMessage());
    EXPECT_EQ(program.waitForEnd(), 1U);
    EXPECT_THAT(logText(), testing::HasSubstr("db:init: "));
}

TEST_P(Program, ShowsTheErrorThatItCannotStartFor) {
    RunningProgram program("tyIndexer.exe", "--trace-sql missing-folder\\trace.sql");
    EXPECT_THAT(program.message(), testing::StartsWith("The service has ended because of an error: "));
    ASSERT_TRUE(program.answerMessage());
    EXPECT_EQ(program.waitForEnd(), 1U);
}

TEST_P(Program, ShowsNoErrorUnderASupervisor) {
    outputOf("reg add \"" + std::string(masterKeyPath) + "\" /ve /d present /f");
    RunningProgram program("tyIndexer.exe", "--trace-sql missing-folder\\trace.sql");
    EXPECT_EQ(program.waitForEnd(), 1U);
}

INSTANTIATE_TEST_SUITE_P(StandIn, Program, ::testing::Values(&ado_tests::standInLibrary));

}  // namespace
}  // namespace job_tests
