#include "app/statement_trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "base/runtime_error.h"
#include "fakes/temporary_folder.h"

namespace {

class Trace : public testing::Test {
  protected:
    fakes::TemporaryFolder folder;
    std::vector<std::string> reports;
    app::StatementTrace::ErrorReport report = [this](std::string_view text) { reports.emplace_back(text); };
};

TEST_F(Trace, KeepsOneStatementALineAndAppends) {
    app::StatementTrace(folder / "trace.sql", report).write("SELECT 1");
    app::StatementTrace trace(folder / "trace.sql", report);
    EXPECT_TRUE(trace.isOn());
    trace.write("SELECT 2 ");
    EXPECT_EQ(folder.read("trace.sql"), "SELECT 1\nSELECT 2 \n");
}

TEST_F(Trace, SetsAStatementWithLineBreaksApart) {
    app::StatementTrace trace(folder / "trace.sql", report);
    trace.write("SELECT 1");
    trace.write("SELECT 'a\r\nb'");
    trace.write("SELECT 2");
    EXPECT_EQ(folder.read("trace.sql"), "SELECT 1\n\nSELECT 'a\r\nb'\n\nSELECT 2\n");
}

TEST_F(Trace, IsKeptUnderANameWithEveryCharacter) {
    app::StatementTrace(folder.path() + "/\xE6\x97\xA5\xCE\xB1\xC3\xA9.sql", report).write("SELECT 1");
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(folder.path()) / u8"\u65E5\u03B1\u00E9.sql"));
}

TEST_F(Trace, WithoutAPathItIsOff) {
    app::StatementTrace trace("", report);
    EXPECT_FALSE(trace.isOn());
    trace.write("SELECT 1");
    EXPECT_TRUE(reports.empty());
}

TEST_F(Trace, AFileThatCannotBeOpenedIsAnErrorThatNamesIt) {
    try {
        const app::StatementTrace trace(folder / "no/such/folder.sql", report);
        FAIL() << "no error";
    } catch (const base::RuntimeError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("no/such/folder.sql"));
    }
}

TEST_F(Trace, AFileThatIsFullIsReportedOnceAndTheServiceGoesOn) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "no file here is always full";
    }
    app::StatementTrace trace("/dev/full", report);
    trace.write("SELECT 1");
    trace.write("SELECT 2");
    EXPECT_EQ(reports.size(), 1U);
    EXPECT_FALSE(trace.isOn());
}

}  // namespace
