// The parts of a system that the tests of this folder share: files and message boxes that can be told to
// fail, and a whole system of fakes.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/runtime_error.h"
#include "fakes/local_files.h"
#include "fakes/manual_clock.h"
#include "fakes/memory_settings_store.h"
#include "fakes/recording_process.h"
#include "fakes/scripted_automation.h"
#include "fakes/scripted_drives.h"
#include "fakes/temporary_folder.h"
#include "platform/database.h"
#include "platform/system.h"
#include "platform/ui.h"

/// Real files, with a temporary folder that the test names.
class ScriptedFiles : public fakes::LocalFiles {
  public:
    std::uint32_t temporaryFolder(std::uint32_t size, char* path) override {
        askedRoom = size;
        if (folderFailure) {
            folderFailure();
        }
        if (temporary.size() + 1 > size) {
            return static_cast<std::uint32_t>(temporary.size() + 1);
        }
        std::copy(temporary.begin(), temporary.end(), path);
        return static_cast<std::uint32_t>(temporary.size());
    }

    void append(const std::string& path, const std::string& bytes) override {
        ++appends;
        LocalFiles::append(path, bytes);
    }

    std::string temporary;
    std::uint32_t askedRoom = 0;
    int appends = 0;
    std::function<void()> folderFailure;
};

/// Message boxes only.
class RecordingToolkit : public platform::Toolkit {
  public:
    platform::Form& createForm(std::string_view, std::string_view, int, int) override {
        throw std::logic_error("no form here");
    }
    void processEvents() override {}
    void run() override {}
    void messageBox(std::string_view text) override { boxes.emplace_back(text); }
    std::optional<std::string> saveFileDialog(std::span<const platform::FileFilter>,
                                              std::string_view) override {
        return std::nullopt;
    }

    std::vector<std::string> boxes;
};

/// No library anywhere.
class NoDatabase : public platform::DatabaseEngine {
  public:
    std::unique_ptr<platform::Connection> open(const platform::ConnectionSettings&) override {
        throw base::RuntimeError(base::ErrorNumber::databaseError, "no library here");
    }
    std::unique_ptr<platform::Recordset> createRecordset() override {
        throw base::RuntimeError(base::ErrorNumber::databaseError, "no library here");
    }
};

struct Parts {
    fakes::TemporaryFolder folder;
    fakes::MemorySettingsStore settings;
    NoDatabase database;
    fakes::ScriptedAutomation automation;
    RecordingToolkit toolkit;
    ScriptedFiles files;
    fakes::RecordingProcess process;
    fakes::ScriptedDrives drives;
    fakes::ManualClock clock;

    [[nodiscard]] platform::System system() {
        return {settings, database, automation, toolkit, files, process, drives, clock};
    }
};
