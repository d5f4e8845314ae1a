// A Checkpointer moves what has gathered in a library's write-ahead log into the library while the service
// works on. The pool of handles owns one for each library; the library's handles tell it of every commit.
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

#include "platform/sqlite/library_file.h"

struct sqlite3;

namespace platform::sqlite {

class Checkpointer {
  public:
    Checkpointer() = default;
    Checkpointer(const Checkpointer&) = delete;
    Checkpointer& operator=(const Checkpointer&) = delete;
    ~Checkpointer() { wait(); }

    /// Takes note of a commit after which the log holds so many pages, and from `limit` pages on takes the
    /// next step towards an empty log. The first step starts a thread, which moves the log over a connection
    /// of its own and never stands in the way of a statement. The log begins anew only when all of it has
    /// been moved and nobody has added to it since, so the step after the thread's end moves the pages that
    /// came meanwhile, before it returns. What fails is tried again at the next commits; until then the log
    /// grows.
    void committed(sqlite3* database, const LibraryFile& file, int pages, int limit) noexcept;

    /// Waits until no thread has the library open.
    void wait() noexcept;

  private:
    enum class State { resting, moving, restIsLeft };

    void advance(sqlite3* database, const LibraryFile& file) noexcept;
    void begin(const LibraryFile& file);
    void join();
    void moveLog(LibraryFile file) const;

    std::mutex mutex_;  // for all but what the thread touches
    std::atomic<State> state_ = State::resting;
    std::atomic<int> pages_ = 0;  // in the log after the last commit
    std::thread thread_;
};

}  // namespace platform::sqlite
