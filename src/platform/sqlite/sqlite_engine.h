// The SqliteEngine opens libraries that are SQLite files. The composition root owns it; its connections may
// outlive it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/database.h"

namespace platform {

namespace sqlite {
class HandlePool;
}

struct SqliteOptions {
    /// How long a statement waits while another connection writes, before it raises an error.
    std::chrono::milliseconds busyTimeout{30000};
    /// Room for pages of the library that are kept in memory, for each connection. A document needs a few
    /// hundred of them, and SQLite looks at all when a transaction ends: more room makes every commit slower.
    int cacheKibibytes = 2048;
    /// Bytes of pages in the write-ahead log before they are moved into the library. A document changes
    /// dozens of pages, and the next document many of the same ones; moving them seldom moves each of them
    /// once instead of time and again, and waits for the disk seldom.
    std::int64_t checkpointBytes = 64LL * 1024 * 1024;
};

class SqliteEngine : public DatabaseEngine {
  public:
    explicit SqliteEngine(const SqliteOptions& options = {});
    ~SqliteEngine() override;

    /// The data source is the path of the file; the other settings do not matter.
    std::unique_ptr<Connection> open(const ConnectionSettings& settings) override;
    std::unique_ptr<Recordset> createRecordset() override;

    /// Called with every statement as it was built, before it runs, and with BEGIN, COMMIT and ROLLBACK
    /// TRANSACTION. An empty function ends it.
    void setTrace(std::function<void(std::string_view statement)> trace);

    /// How many statements were compiled since the engine was made; a shape that is known compiles nothing.
    [[nodiscard]] std::size_t preparedStatements() const;

  private:
    std::shared_ptr<sqlite::HandlePool> pool_;
};

}  // namespace platform
