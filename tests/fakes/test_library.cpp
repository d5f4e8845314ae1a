#include "fakes/test_library.h"

#include <sqlite3.h>

#include <algorithm>
#include <stdexcept>

#include "platform/sqlite/library_schema.h"
#include "platform/system.h"

namespace fakes {
namespace {

[[noreturn]] void fail(sqlite3* database, const std::string& sql) {
    throw std::runtime_error(std::string(sqlite3_errmsg(database)) + " in: " + sql);
}

struct Finaliser {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

std::string columnText(sqlite3_stmt* statement, int column) {
    const auto* text = sqlite3_column_text(statement, column);
    return text == nullptr ? "NULL" : reinterpret_cast<const char*>(text);
}

}  // namespace

TestLibrary::TestLibrary()
    : path(folder / "library.db"),
      logPath(folder / "tyindexer.log"),
      toolkit(waiter, [this](std::string_view text) { messages.emplace_back(text); }),
      services(platform::System{settings, engine, automation, toolkit, files, process, drives, clock}) {
    platform::createLibrary(path);
    engine.setTrace([this](std::string_view statement) { trace.emplace_back(statement); });
    settings.put(infra::serviceKey, "DataBasePath", path);
    settings.put(infra::indexerKey, "LogFilePath", logPath);
    for (const char* level : {"LogLevelCrashDetection", "LogLevelLogicPath", "LogLevelErrorReport",
                              "LogLevelInterest", "LogLevelUIOutput"}) {
        settings.put(infra::indexerKey, level, 1);
    }
}

TestLibrary::~TestLibrary() = default;

void TestLibrary::Closer::operator()(sqlite3* database) const {
    sqlite3_close(database);
}

sqlite3* TestLibrary::database() {
    if (!database_) {
        sqlite3* opened = nullptr;
        const int status = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
        database_.reset(opened);
        if (status != SQLITE_OK) {
            fail(opened, "open " + path);
        }
    }
    return database_.get();
}

void TestLibrary::exec(const std::string& sql) {
    if (sqlite3_exec(database(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(database(), sql);
    }
}

Rows TestLibrary::rows(const std::string& sql) {
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(database(), sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK) {
        fail(database(), sql);
    }
    const std::unique_ptr<sqlite3_stmt, Finaliser> statement(prepared);
    Rows result;
    int status = sqlite3_step(prepared);
    for (; status == SQLITE_ROW; status = sqlite3_step(prepared)) {
        auto& row = result.emplace_back();
        for (int column = 0; column < sqlite3_column_count(prepared); ++column) {
            row.push_back(columnText(prepared, column));
        }
    }
    if (status != SQLITE_DONE) {
        fail(database(), sql);
    }
    return result;
}

std::string TestLibrary::value(const std::string& sql) {
    const Rows result = rows(sql);
    if (result.size() != 1 || result[0].size() != 1) {
        throw std::runtime_error("not exactly one value from: " + sql);
    }
    return result[0][0];
}

std::string TestLibrary::logText() const {
    return folder.read("tyindexer.log");
}

std::vector<std::string> TestLibrary::logLines() const {
    constexpr std::size_t momentLength = std::string_view("16 Nov 2026 01:47:03: ").size();
    const std::string text = logText();
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find("\r\n", begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        lines.push_back(line.size() < momentLength ? line : line.substr(momentLength));
        begin = end + 2;
    }
    return lines;
}

}  // namespace fakes
