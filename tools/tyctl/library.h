// A Library is the open library that the settings name, for the commands that read it or queue documents.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "infra/Services.h"
#include "infra/tysDataBase.h"
#include "platform/database.h"
#include "platform/posix/no_drives.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/posix_process.h"
#include "platform/posix/system_clock.h"
#include "platform/sqlite/sqlite_engine.h"
#include "tyctl/bare_system.h"
#include "tyctl/settings.h"

namespace tyctl {

class Library {
  public:
    /// Raises a Failure when no library is set up or it cannot be opened.
    explicit Library(Settings& settings);
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] infra::tysDataBase& database() { return database_; }

    void execute(const std::string& statement);
    [[nodiscard]] std::unique_ptr<platform::Recordset> query(const std::string& statement);
    void beginTransaction();
    void commitTransaction();

    /// The column "counted" of the one row that the query gives.
    [[nodiscard]] std::int64_t count(const std::string& statement);

    /// The text between single quotes, its own ones doubled.
    [[nodiscard]] std::string quoted(std::string_view text) const;

    /// The present moment between single quotes.
    [[nodiscard]] std::string quotedNow() const;

  private:
    std::string path_;
    platform::SqliteEngine engine_;
    BareAutomation automation_;
    BareToolkit toolkit_;
    platform::posix::PosixFiles files_;
    BareProcess process_;
    platform::posix::NoDrives drives_;
    platform::posix::SystemClock clock_;
    infra::Services services_;
    infra::tysDataBase database_;
};

}  // namespace tyctl
