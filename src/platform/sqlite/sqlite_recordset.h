// A SqliteRecordset walks over the rows of a query. Whoever opened it owns it; the connection that it is open
// on knows it, so that no row is left live when the connection writes or closes.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/database.h"
#include "platform/sqlite/statement.h"

namespace platform::sqlite {

class SqliteConnection;

class SqliteRecordset : public Recordset {
  public:
    SqliteRecordset() = default;
    ~SqliteRecordset() override;

    void open(std::string_view statement, Connection& connection, CursorType cursor, LockType lock,
              int options) override;
    [[nodiscard]] bool eof() override;
    [[nodiscard]] base::Variant field(std::string_view name) override;
    void moveNext() override;
    void forEachRow(std::span<const std::string_view> names, const RowVisitor& visit) override;
    void close() override;

    /// Reads the rest of the live rows into memory, so that no old snapshot stands in the way of a write.
    void settle();

    /// The connection is gone: the recordset is closed.
    void connectionClosed() noexcept;

  private:
    void requireOpen() const;
    void requireRow() const;
    [[nodiscard]] std::size_t positionOf(std::string_view name) const;
    void runFixed();
    void runForward();
    void runAgain();
    void takeLiveRow();
    void clear() noexcept;

    SqliteConnection* connection_ = nullptr;  // null when closed
    std::string statement_;
    std::shared_ptr<const ResultColumns> columns_;
    std::optional<Statement> live_;  // a query that is being read
    bool mustRunAgain_ = false;      // nothing is read beyond the first row
    bool eof_ = true;
    Row row_;
    std::vector<Row> rows_;  // rows in memory, from next_ on those that are still to come
    std::size_t next_ = 0;
};

}  // namespace platform::sqlite
