#include "integration/job/sql_recording.h"

#include <sqlite3.h>

#include <stdexcept>

namespace job_tests {
namespace {

SqlRecording* listener = nullptr;

/// What runs within another statement comes as a comment.
constexpr std::string_view nestedMark = "-- ";

int runs(unsigned /*event*/, void* /*context*/, void* /*statement*/, void* text) {
    if (listener != nullptr) {  // the connection may outlive the recording that began to listen to it
        listener->note(static_cast<const char*>(text));
    }
    return 0;
}

int opened(sqlite3* database, char** /*message*/, const sqlite3_api_routines* /*functions*/) {
    return sqlite3_trace_v2(database, SQLITE_TRACE_STMT, runs, nullptr);
}

// SQLite asks for this type, whatever the function takes.
void (*const entry)() = reinterpret_cast<void (*)()>(opened);

}  // namespace

SqlRecording::SqlRecording() {
    if (listener != nullptr || sqlite3_auto_extension(entry) != SQLITE_OK) {
        throw std::runtime_error("cannot listen to SQLite");
    }
    listener = this;
}

SqlRecording::~SqlRecording() {
    sqlite3_cancel_auto_extension(entry);
    listener = nullptr;
}

void SqlRecording::note(std::string_view text) {
    if (text.starts_with(nestedMark)) {
        nested_.emplace(text.substr(nestedMark.size()));
    } else {
        statements_.emplace(text);
    }
}

}  // namespace job_tests
