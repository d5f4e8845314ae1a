// The control window on a real library, with an operator, a clock and settings that a test moves. Its tests
// run on every toolkit of this system.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/Main.h"
#include "fakes/local_files.h"
#include "fakes/manual_clock.h"
#include "fakes/memory_settings_store.h"
#include "fakes/recording_process.h"
#include "fakes/scripted_automation.h"
#include "fakes/scripted_drives.h"
#include "fakes/temporary_folder.h"
#include "fakes/toolkits.h"
#include "infra/Services.h"
#include "platform/sqlite/sqlite_engine.h"
#include "unit/app/library_file.h"
#include "unit/app/recording_engine.h"

/// Files that cannot be readied when a test says so.
class StubbornFiles : public fakes::LocalFiles {
  public:
    void prepare() override {
        if (prepareFails) {
            throw base::RuntimeError(base::ErrorNumber::cannotCreateObject, "no file system object");
        }
    }
    bool prepareFails = false;
};

class Window : public testing::TestWithParam<ToolkitUnderTest> {
  protected:
    using Lines = std::vector<std::string>;

    fakes::TemporaryFolder folder;
    LibraryFile library{folder / "library.db"};
    fakes::MemorySettingsStore settings;
    fakes::ManualClock clock;
    fakes::RecordingProcess process;
    fakes::ScriptedDrives drives;
    fakes::ScriptedAutomation automation;
    StubbornFiles files;
    platform::SqliteEngine sqlite;
    RecordingEngine engine{sqlite};
    std::unique_ptr<WindowDriver> driver = GetParam().makeDriver();
    fakes::ManualWaiter& waiter = driver->waiter;
    const Lines& boxes = driver->boxes;
    platform::Toolkit& toolkit = driver->toolkit();
    infra::Services services{
        platform::System{settings, engine, automation, toolkit, files, process, drives, clock}};
    std::function<bool(std::int32_t)> job = [](std::int32_t) { return true; };
    std::vector<std::int32_t> jobs;
    std::vector<app::CycleOutcome> outcomes;
    std::optional<app::Main> window;

    Window() {
        settings.put(infra::serviceKey, "DataBasePath", library.path());
        settings.put(infra::indexerKey, "LogFilePath", folder / "service.log");
        for (const char* level : {"LogLevelCrashDetection", "LogLevelLogicPath", "LogLevelErrorReport",
                                  "LogLevelInterest", "LogLevelUIOutput"}) {
            settings.put(infra::indexerKey, level, 1);
        }
    }

    void create() {
        window.emplace(services, [this](std::int32_t id) {
            jobs.push_back(id);
            return job(id);
        });
        window->onCycleEnd([this](app::CycleOutcome outcome) { outcomes.push_back(outcome); });
    }

    void start() {
        create();
        window->start();
    }

    /// Starts and forgets what was logged and asked meanwhile.
    void startQuietly() {
        start();
        forget();
    }

    void forget() {
        logSeen_ = folder.read("service.log").size();
        engine.record.statements.clear();
        settings.writes.clear();
    }

    /// Lets the timer tick once.
    void tick() { driver->letTimePass(std::chrono::milliseconds(timer().interval())); }

    void operatorTypes(std::string_view textBox, std::string_view text) {
        driver->typeText(textBox, text);
        toolkit.processEvents();
    }
    void operatorClicks(std::string_view button) {
        driver->click(button);
        toolkit.processEvents();
    }
    void operatorPresses(std::string_view checkBox) {
        driver->press(checkBox);
        toolkit.processEvents();
    }
    void operatorSets(platform::WindowState state) {
        switch (state) {
            case platform::WindowState::normal:
                driver->restore();
                break;
            case platform::WindowState::minimised:
                driver->minimise();
                break;
            case platform::WindowState::maximised:
                driver->maximise();
                break;
        }
        toolkit.processEvents();
    }

    /// The log's lines without their time, each checked to carry it.
    Lines log() const {
        const std::string time = clock.moment.longText() + ": ";
        Lines lines;
        const std::string whole = folder.read("service.log");
        std::size_t begin = logSeen_;
        for (std::size_t end = whole.find("\r\n", begin); end != std::string::npos;
             begin = end + 2, end = whole.find("\r\n", begin)) {
            const std::string line = whole.substr(begin, end - begin);
            lines.push_back(line.starts_with(time) ? line.substr(time.size()) : "without time: " + line);
        }
        return lines;
    }

    /// The status list from the top, without the times.
    Lines status() const {
        const auto& list = driver->find<platform::ListBox>("lstStatus");
        Lines lines;
        for (std::size_t i = 0; i < list.count(); ++i) {
            lines.push_back(list.line(i).substr(std::string("hh:mm:ss: ").size()));
        }
        return lines;
    }

    platform::Timer& timer() const { return driver->find<platform::Timer>("Timer1"); }
    platform::TextBox& textBox(std::string_view name) const { return driver->find<platform::TextBox>(name); }
    platform::CheckBox& logIt() const { return driver->find<platform::CheckBox>("chkLogit"); }
    platform::Button& startStop() const { return driver->find<platform::Button>("cmdStartStop"); }
    [[nodiscard]] bool visible() const { return driver->form().visible(); }

  private:
    std::size_t logSeen_ = 0;
};
