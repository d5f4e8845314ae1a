// A TestLibrary is a library on disk, made from the product's own schema, with everything that the service
// needs around it: the real engine and real files, and a fake for each of the rest. A test owns one.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/local_files.h"
#include "fakes/manual_clock.h"
#include "fakes/manual_waiter.h"
#include "fakes/memory_settings_store.h"
#include "fakes/recording_process.h"
#include "fakes/scripted_automation.h"
#include "fakes/scripted_drives.h"
#include "fakes/temporary_folder.h"
#include "infra/Services.h"
#include "platform/headless/headless_toolkit.h"
#include "platform/sqlite/sqlite_engine.h"

struct sqlite3;

namespace fakes {

using Rows = std::vector<std::vector<std::string>>;

class TestLibrary {
  public:
    /// Makes the library, names it in the settings, and switches every log level on.
    TestLibrary();
    TestLibrary(const TestLibrary&) = delete;
    TestLibrary& operator=(const TestLibrary&) = delete;
    ~TestLibrary();

    /// Runs SQLite's own SQL, as another program of the library would: on a connection beside the engine's,
    /// which leaves no trace. Raises a std::runtime_error with SQLite's message.
    void exec(const std::string& sql);

    /// The same for a query; every value as text, NULL as "NULL".
    Rows rows(const std::string& sql);

    /// The only value of the only row. Raises a std::runtime_error when there is not exactly one.
    std::string value(const std::string& sql);

    /// The log file so far, and its lines without the moment in front and the line end.
    [[nodiscard]] std::string logText() const;
    [[nodiscard]] std::vector<std::string> logLines() const;

    TemporaryFolder folder;
    std::string path;  // of the library file
    std::string logPath;
    std::vector<std::string> trace;     // every statement as the service built it
    std::vector<std::string> messages;  // what message boxes said

    MemorySettingsStore settings;
    ManualClock clock;
    RecordingProcess process;
    ScriptedDrives drives;
    ScriptedAutomation automation;
    LocalFiles files;
    ManualWaiter waiter;
    platform::headless::HeadlessToolkit toolkit;
    platform::SqliteEngine engine;
    infra::Services services;

  private:
    struct Closer {
        void operator()(sqlite3* database) const;
    };
    sqlite3* database();

    std::unique_ptr<sqlite3, Closer> database_;  // opened when it is first asked
};

}  // namespace fakes
