#include "platform/sqlite/sqlite_engine.h"

#include <sqlite3.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/runtime_error.h"
#include "platform/sqlite/handle_pool.h"
#include "platform/sqlite/library_schema.h"
#include "platform/sqlite/sqlite_connection.h"
#include "platform/sqlite/sqlite_error.h"
#include "platform/sqlite/sqlite_recordset.h"

namespace platform {
namespace {

struct Closer {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};

/// Makes an empty file that was not there before.
void claimFile(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "wbx");
    if (file == nullptr) {
        const int error = errno;
        throw base::RuntimeError(base::ErrorNumber::databaseError,
                                 "The library \"" + path + "\" cannot be made: " + std::strerror(error));
    }
    static_cast<void>(std::fclose(file));
}

void fillLibrary(const std::string& path, const std::string& sqlText) {
    sqlite3* raw = nullptr;
    int code = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    const std::unique_ptr<sqlite3, Closer> database(raw);
    if (code == SQLITE_OK) {
        code = sqlite3_exec(raw, sqlText.c_str(), nullptr, nullptr, nullptr);
    }
    if (code != SQLITE_OK) {
        sqlite::raiseError(raw, code, "Making the library \"" + path + "\"");
    }
}

}  // namespace

SqliteEngine::SqliteEngine(const SqliteOptions& options)
    : pool_(std::make_shared<sqlite::HandlePool>(
          sqlite::HandleOptions{options.busyTimeout, options.cacheKibibytes, options.checkpointBytes})) {}

SqliteEngine::~SqliteEngine() {
    pool_->clear();
}

std::unique_ptr<Connection> SqliteEngine::open(const ConnectionSettings& settings) {
    return std::make_unique<sqlite::SqliteConnection>(pool_, pool_->take(settings.dataSource));
}

std::unique_ptr<Recordset> SqliteEngine::createRecordset() {
    return std::make_unique<sqlite::SqliteRecordset>();
}

void SqliteEngine::setTrace(std::function<void(std::string_view)> trace) {
    pool_->setTrace(std::move(trace));
}

std::size_t SqliteEngine::preparedStatements() const {
    return pool_->preparedStatements();
}

void createLibrary(const std::string& path, std::string_view sqlText) {
    claimFile(path);
    try {
        fillLibrary(path, std::string(sqlText));
    } catch (...) {
        for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
            std::error_code ignored;
            std::filesystem::remove(path + suffix, ignored);
        }
        throw;
    }
}

}  // namespace platform
