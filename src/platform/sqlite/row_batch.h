// RowBatch gathers the rows that a transaction inserts one after the other and writes several with one
// statement: a document brings hundreds, and each statement by itself opens the table and its indexes anew.
// Every other statement finds them written. Every handle owns one.
#pragma once

#include <cstddef>
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

    /// Takes the row that a statement of the shape inserts, and writes the rows when they are enough. False
    /// when the statement is no such insert, or the table may refuse a row or give it a key: then it has to
    /// run as it is. When it raises a RuntimeError the row is not taken, and those before it are kept.
    bool take(PreparedShape& shape, const jet::LexedStatement& lexed, std::string_view text);

    /// Writes the rows. `text` is the statement at hand, for messages. When it raises a RuntimeError the rows
    /// are kept until the transaction ends.
    void write(std::string_view text);

    /// The transaction that the rows belong to has been rolled back.
    void forget() noexcept;

  private:
    [[nodiscard]] static bool canGather(PreparedShape& shape);
    void add(const jet::LexedStatement& lexed);

    Handle& handle_;
    PreparedShape* shape_ = nullptr;  // null when there are no rows
    std::size_t rows_ = 0;
    std::vector<jet::ParameterValue> values_;  // row by row; reused
};

}  // namespace platform::sqlite
