// A job's surroundings on Windows: a library behind ADO, plug-ins through COM, settings in the registry, and
// a fake for what a test must steer.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/manual_clock.h"
#include "fakes/manual_waiter.h"
#include "fakes/memory_settings_store.h"
#include "fakes/recording_process.h"
#include "fakes/scripted_drives.h"
#include "fakes/temporary_folder.h"
#include "indexer/Indexer.h"
#include "infra/Services.h"
#include "integration/job/river_document.h"
#include "platform/headless/headless_toolkit.h"
#include "platform/windows/com_automation.h"
#include "platform/windows/windows_files.h"
#include "unit/platform/contract/contract_library.h"

namespace job_tests {

/// An engine that opens the test's library with the test's own log-in.
class LibraryEngine : public platform::DatabaseEngine {
  public:
    explicit LibraryEngine(contract::Library& library) : library_(library) {}

    std::unique_ptr<platform::Connection> open(const platform::ConnectionSettings& settings) override;
    std::unique_ptr<platform::Recordset> createRecordset() override {
        return library_.engine().createRecordset();
    }

    /// With which the service opened last.
    platform::ConnectionSettings asked;

  private:
    contract::Library& library_;
};

/// The current folder is the test's own as long as it lives, so that documents have short relative paths.
class WorkingFolder {
  public:
    WorkingFolder() { std::filesystem::current_path(folder.path()); }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;
    ~WorkingFolder() { std::filesystem::current_path(before_); }

    fakes::TemporaryFolder folder;

  private:
    std::filesystem::path before_ = std::filesystem::current_path();
};

/// The settings of a job: the registry of the suite's own Wine session, memory on a machine that belongs to
/// somebody.
class JobSettings {
  public:
    JobSettings();
    JobSettings(const JobSettings&) = delete;
    JobSettings& operator=(const JobSettings&) = delete;
    ~JobSettings();

    platform::SettingsStore& store() { return *store_; }

  private:
    std::unique_ptr<platform::SettingsStore> store_;
};

class JobFixture : public testing::TestWithParam<contract::LibraryMaker>, protected River {
  protected:
    static constexpr const char* riverPath = "docs\\o'ki\\river.txt";

    JobFixture() : River("docs\\o''ki\\river.txt") {}

    void SetUp() override;

    /// Writes the river document, 1000 bytes long with what is added to it.
    void writeRiver(const std::string& added = "");

    void registerPlugin(const std::string& dataType, const std::string& progId);
    void enqueue(int indexType);

    /// Carries a job out and gives its statements.
    Statements statementsOf(int indexType);

    void expectStatements(int indexType, const Statements& expected) {
        EXPECT_EQ(lines(statementsOf(indexType)), lines(expected));
    }

    [[nodiscard]] std::string logText() const { return work.folder.read("service.log"); }

    /// The rows of a query, each as its fields with a blank between.
    std::vector<std::string> rows(std::string_view statement, const std::vector<std::string>& fields);

    platform::windows::ComApartment apartment;
    WorkingFolder work;
    contract::MadeLibrary made;
    JobSettings settings;
    platform::windows::ComAutomationFactory automation;
    std::unique_ptr<LibraryEngine> engine;
    fakes::ManualClock clock;
    fakes::RecordingProcess process;
    fakes::ScriptedDrives drives;
    platform::windows::WindowsFiles files{automation};
    fakes::ManualWaiter waiter;
    std::vector<std::string> messages;  // what message boxes said
    platform::headless::HeadlessToolkit toolkit{
        waiter, [this](std::string_view text) { messages.emplace_back(text); }};
    std::unique_ptr<infra::Services> services;
    std::unique_ptr<indexer::Indexer> indexer;
    Statements trace;
    int lastEntry = 0;
};

}  // namespace job_tests
