#include "platform/sqlite/checkpointer.h"

#include <sqlite3.h>

#include <exception>
#include <memory>

#include "platform/sqlite/log_vfs.h"

namespace platform::sqlite {
namespace {

// While a pass is under way pages are added, fewer each time. Fewer than these are left to the handle, and so
// are more where a disk is so slow that they do not become fewer: the log must come to its end.
constexpr int fewPages = 1024;

struct Closer {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
using Database = std::unique_ptr<sqlite3, Closer>;

/// None when the library cannot be opened or read.
Database open(const std::string& path) {
    sqlite3* opened = nullptr;
    const int code =
        sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, logVfs());
    Database database(opened);
    if (code != SQLITE_OK) {
        return nullptr;
    }
    // Closing moves nothing: somebody may have written over the file by then.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    // The second statement reads the file; before that SQLite does not see that there is a log.
    const char* const beginnings = "PRAGMA synchronous = NORMAL; PRAGMA schema_version";
    return sqlite3_exec(opened, beginnings, nullptr, nullptr, nullptr) == SQLITE_OK ? std::move(database)
                                                                                    : nullptr;
}

}  // namespace

void Checkpointer::committed(sqlite3* database, const LibraryFile& file, int pages, int limit) noexcept {
    const std::lock_guard lock(mutex_);
    const bool beganAnew = pages < pages_;
    pages_ = pages;
    if (beganAnew && state_ == State::restIsLeft) {
        state_ = State::resting;
    }
    if (pages >= limit) {
        advance(database, file);
    }
}

void Checkpointer::wait() noexcept {
    const std::lock_guard lock(mutex_);
    join();
}

void Checkpointer::advance(sqlite3* database, const LibraryFile& file) noexcept {
    switch (state_) {
        case State::moving:
            return;
        case State::resting:
            try {
                begin(file);
                return;
            } catch (const std::exception&) {  // no thread is to be had: all of the log is the rest
                state_ = State::restIsLeft;
            }
            [[fallthrough]];
        case State::restIsLeft:
            state_ = State::resting;
            sqlite3_wal_checkpoint_v2(database, "main", SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
    }
}

void Checkpointer::begin(const LibraryFile& file) {
    join();
    state_ = State::moving;
    thread_ = std::thread([this, file] {
        try {
            moveLog(file);
        } catch (const std::exception&) {
            // The file at the path is another one: the handle will find that out, too.
        }
        state_ = State::restIsLeft;
    });
}

void Checkpointer::join() {
    if (thread_.joinable()) {
        thread_.join();
    }
}

/// Another pass begins only while pages are known to lie beyond those that have been moved: as long as they
/// do, nobody begins the log anew. SQLite before 3.51.3 damages a library when that happens just as a pass
/// begins over a log of which all has been moved: it then takes as many pages of the new log for moved ones.
void Checkpointer::moveLog(LibraryFile file) const {
    // The log beside a file that was put in this one's place is not that file's.
    const Database database = file.isInPlace() ? open(file.path()) : nullptr;
    if (database == nullptr) {
        return;
    }
    int before = 0;
    int moved = 0;
    int left = 0;
    do {
        file.checkSame(database.get());
        before = moved;
        if (sqlite3_wal_checkpoint_v2(database.get(), "main", SQLITE_CHECKPOINT_PASSIVE, nullptr, &moved) !=
            SQLITE_OK) {
            return;
        }
        left = pages_ - moved;
    } while (left >= fewPages && left < (moved - before) / 2);
}

}  // namespace platform::sqlite
