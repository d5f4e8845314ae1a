// RowBatch gathers the hits and the sentences that a transaction inserts one after the other and writes
// several with one statement: a document brings hundreds, and each statement by itself opens the table and
// its indexes anew. Every other statement finds them written. Every handle owns one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/jet/parameter_value.h"
#include "platform/sqlite/statement.h"

namespace platform::sqlite {

class Handle;

class RowBatch {
  public:
    explicit RowBatch(Handle& handle) : handle_(handle) {}
    RowBatch(const RowBatch&) = delete;
    RowBatch& operator=(const RowBatch&) = delete;
    ~RowBatch() { forget(); }

    /// Whether the statement is one of the service's inserts, within a transaction, into a table that takes
    /// every row: one that stands as the library's script makes it, with nothing that could refuse a row or
    /// see it come. Any other insert has to run as it is, so that its own error tells.
    [[nodiscard]] bool isFor(std::string_view insert);

    /// Takes the row of such an insert, which is of the shape, and writes the rows when they are enough.
    /// False when its values are no plain ones. Raises a RuntimeError as write does.
    bool take(PreparedShape& shape, const jet::LexedStatement& lexed, std::string_view text);

    /// Writes the rows. `text` is the statement at hand, for messages. When that fails, for want of space or
    /// because the file cannot be read, the transaction ends with the RuntimeError as SQLite itself ends it
    /// then: nobody knows which of the rows are in.
    void write(std::string_view text);

    /// The transaction that the rows belong to has been rolled back.
    void forget() noexcept;

    /// A statement may have changed the tables, or let others change them.
    void doubtTables() { knowsSchema_ = false; }

  private:
    enum class Answer : std::uint8_t { unknown, yes, no };
    static constexpr std::size_t kinds = 2;

    [[nodiscard]] bool takesEveryRow(std::size_t kind);
    [[nodiscard]] bool isAsMade(std::string_view table);
    void add(const jet::LexedStatement& lexed);
    void writeRows(std::string_view text);

    Handle& handle_;
    PreparedShape* shape_ = nullptr;  // null when there are no rows
    std::size_t rows_ = 0;
    std::vector<jet::ParameterValue> values_;  // row by row; reused
    std::array<Answer, kinds> takesEveryRow_{};
    std::int64_t schemaVersion_ = -1;  // of the answers
    bool knowsSchema_ = false;         // that this is still the version
};

}  // namespace platform::sqlite
