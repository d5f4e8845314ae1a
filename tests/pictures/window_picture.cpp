// Shows the control window with lines of a working day, for a picture of it; no library, no settings. Prints
// "ready" when all is on the screen, and stays there.
#include <iostream>

#include "app/Main.h"
#include "fakes/local_files.h"
#include "fakes/manual_clock.h"
#include "fakes/memory_settings_store.h"
#include "fakes/recording_process.h"
#include "fakes/scripted_automation.h"
#include "fakes/scripted_drives.h"
#include "platform/sqlite/sqlite_engine.h"
#include "platform/win32/message_waiter.h"
#include "platform/win32/win32_form.h"
#include "platform/win32/win32_toolkit.h"

namespace {

struct Line {
    const char* time;
    const char* text;
};

constexpr Line day[] = {
    {"08:59:58", "Starting..."},
    {"08:59:58", "Checking for zombies..."},
    {"08:59:59", "Connecting to database..."},
    {"08:59:59", "Connected."},
    {"08:59:59", "Starting timers..."},
    {"08:59:59", "Running."},
    {"09:00:00", "Checking file index queue..."},
    {"09:00:01", "Indexing stopped."},
    {"09:02:17", "Indexing started."},
    {"09:02:18", "Checking file index queue..."},
    {"09:02:19", "ERROR while updating database."},
    {"09:02:20", "Checking file index queue..."},
};

}  // namespace

int main() {
    fakes::MemorySettingsStore settings;
    fakes::ManualClock clock;
    fakes::RecordingProcess process;
    fakes::ScriptedDrives drives;
    fakes::ScriptedAutomation automation;
    fakes::LocalFiles files;
    platform::SqliteEngine database;
    platform::win32::MessageWaiter waiter;
    platform::win32::Win32Toolkit toolkit(waiter);
    infra::Services services{
        platform::System{settings, database, automation, toolkit, files, process, drives, clock}};
    app::Main window(services, [](std::int32_t) { return true; });
    auto& form = toolkit.form();
    form.show();
    dynamic_cast<platform::TextBox&>(*form.find("txtLogFile")).setText("C:\\Tessaly\\Logs\\tyindexer.log");
    dynamic_cast<platform::CheckBox&>(*form.find("chkLogit")).setValue(1);
    for (const Line& line : day) {
        clock.moment = *base::DateTime::parse(std::string("2026-11-20 ") + line.time);
        window.SetStatus(line.text);
    }
    toolkit.processEvents();
    std::cout << "ready" << std::endl;
    toolkit.run();
}
