// A Statement is a prepared statement in use: bound to the values of one run and, for a query, standing on a
// row. Whoever runs it owns it; its end gives it back to the handle that prepared it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/variant.h"
#include "platform/jet/lexer.h"
#include "platform/jet/parameter_value.h"
#include "platform/jet/translator.h"

struct sqlite3;
struct sqlite3_stmt;

namespace platform::sqlite {

using Row = std::vector<base::Variant>;

/// The columns of a query's rows.
struct ResultColumns {
    std::vector<std::string> names;
    std::vector<jet::ColumnType> types;  // unknown for a value that is computed
};

/// A shape of statement with everything that is made for it once.
struct PreparedShape {
    jet::Translation translation;
    std::vector<sqlite3_stmt*> idle;  // prepared and not in use
    std::size_t inUse = 0;
    std::unique_ptr<PreparedShape> many;  // for an insert of one row: the insert of many, once it is needed
    std::shared_ptr<const ResultColumns> columns;  // of the last query
    int columnsOfReprepare = -1;                   // how often the statement had been prepared anew then
};

/// What the runs have shown of the file. A read that failed may succeed the next time.
enum class FileFault { none, unread, damaged };

/// Whether bound texts stay alive while the statement is in use.
enum class Texts { stay, vanish };

class Statement {
  public:
    /// `fault` becomes worse when a run cannot read the file or finds it damaged.
    Statement(sqlite3* database, PreparedShape& shape, sqlite3_stmt* prepared, FileFault& fault)
        : database_(database), shape_(&shape), prepared_(prepared), fault_(&fault) {}
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&& other) noexcept;
    ~Statement();

    /// Gives the statement its values. `text` is the statement as built, for messages.
    void bind(const jet::LexedStatement& lexed, std::int32_t identity, Texts texts, std::string_view text);

    /// The same with values that are at hand and stay alive while the statement is in use.
    void bind(std::span<const jet::ParameterValue> values, std::string_view text);

    /// Runs to the next row; false when there is none. Raises a RuntimeError.
    bool step(std::string_view text);

    /// Whether it gives rows at all.
    [[nodiscard]] bool isQuery() const;

    [[nodiscard]] const jet::Translation& translation() const { return shape_->translation; }

    /// The columns of the row that it stands on, and that row's values by the columns' types.
    [[nodiscard]] std::shared_ptr<const ResultColumns> columns();
    [[nodiscard]] Row row(const ResultColumns& columns) const;
    /// The same into a row that is used again and again.
    void readRow(const ResultColumns& columns, Row& row) const;

    /// The whole number in a column of that row; 0 for anything else.
    [[nodiscard]] std::int64_t number(int column) const;

  private:
    void checkBound(int code, std::string_view text) const;
    void giveBack();

    sqlite3* database_;
    PreparedShape* shape_;
    sqlite3_stmt* prepared_;
    FileFault* fault_;
};

}  // namespace platform::sqlite
