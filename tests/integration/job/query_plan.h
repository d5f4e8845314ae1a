// Tells which tables a statement reads from end to end in a library, and which of these it may.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sqlite/handle.h"

struct sqlite3;

namespace job_tests {

/// The plans of a library's statements. What a trigger or a view does on behalf of a statement counts as its
/// own.
class QueryPlans {
  public:
    explicit QueryPlans(const std::string& library);
    QueryPlans(const QueryPlans&) = delete;
    QueryPlans& operator=(const QueryPlans&) = delete;
    ~QueryPlans();

    /// A statement of the service as SQLite runs it.
    std::string sqlOf(std::string_view statement);

    /// The lines of a statement's plan that read more the larger the library is.
    std::vector<std::string> refusedLines(const std::string& sql);

    /// The same of many, each line with its statement.
    std::vector<std::string> refused(const std::set<std::string>& statements);

    /// The same in a library that lacks an index.
    std::vector<std::string> refusedWithout(const std::string& index,
                                            const std::set<std::string>& statements);

    /// The indexes by which statements find their rows in tables that must not be read from end to end, as
    /// far as more than a table's key makes them.
    std::set<std::string> indexes(const std::set<std::string>& statements);

    void exec(const std::string& sql);

  private:
    struct Close {
        void operator()(sqlite3* database) const;
    };

    std::vector<std::string> planOf(const std::string& sql);
    std::vector<std::string> texts(const std::string& sql, int column);
    bool isMadeForGrowingTable(const std::string& index);

    std::atomic<std::size_t> prepared_ = 0;
    platform::sqlite::Checkpointer checkpointer_;
    platform::sqlite::Handle handle_;  // translates
    std::unique_ptr<sqlite3, Close> database_;
};

}  // namespace job_tests
