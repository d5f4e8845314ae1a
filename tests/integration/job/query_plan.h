// Tells which tables a statement of the service reads from end to end in a library, and which of these it
// may.
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

/// A read from end to end that is in order although the table grows.
struct AllowedScan {
    std::string_view statement;  // as the service built it
    std::string_view table;
};

/// The plans of a library's statements. What a trigger or a view does on behalf of a statement counts as its
/// own.
class QueryPlans {
  public:
    explicit QueryPlans(const std::string& library);
    QueryPlans(const QueryPlans&) = delete;
    QueryPlans& operator=(const QueryPlans&) = delete;
    ~QueryPlans();

    /// The lines of a statement's plan that read more the larger the library is.
    std::vector<std::string> refusedLines(std::string_view statement);

    /// The indexes by which a statement finds its rows.
    std::set<std::string> indexes(std::string_view statement);

    void exec(const std::string& sql);

    /// The text that makes an index; empty when nothing but its table makes it.
    std::string textOfIndex(const std::string& index);

    /// Whether an index belongs to a table that must not be read from end to end.
    bool isOfGrowingTable(const std::string& index);

  private:
    struct Close {
        void operator()(sqlite3* database) const;
    };

    std::vector<std::string> planOf(std::string_view statement, bool& readsOneRow);
    std::vector<std::string> texts(const std::string& sql, int column);

    std::atomic<std::size_t> prepared_ = 0;
    platform::sqlite::Handle handle_;  // translates
    std::unique_ptr<sqlite3, Close> database_;
};

}  // namespace job_tests
