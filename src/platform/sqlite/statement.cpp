#include "platform/sqlite/statement.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <system_error>
#include <utility>
#include <variant>

#include "platform/jet/parameter_value.h"
#include "platform/sqlite/sqlite_error.h"
#include "platform/sqlite/table_catalog.h"

namespace platform::sqlite {
namespace {

/// Binds one value to the parameter of a number from 1.
struct Binder {
    sqlite3_stmt* statement;
    int number;
    Texts texts;

    int operator()(std::int64_t value) const { return sqlite3_bind_int64(statement, number, value); }
    int operator()(double value) const { return sqlite3_bind_double(statement, number, value); }
    int operator()(std::string_view value) const {
        return text(value, texts == Texts::stay ? SQLITE_STATIC : SQLITE_TRANSIENT);
    }
    int operator()(const std::string& value) const {
        return text(value, texts == Texts::stay ? SQLITE_STATIC : SQLITE_TRANSIENT);
    }

    [[nodiscard]] int text(std::string_view value, sqlite3_destructor_type destructor) const {
        // A null pointer would store null in place of an empty text.
        const char* data = value.data() == nullptr ? "" : value.data();
        return sqlite3_bind_text64(statement, number, data, value.size(), destructor, SQLITE_UTF8);
    }
};

int bindLiteral(const Binder& binder, const jet::Literal& literal, const jet::MetColumn& column) {
    if (const auto whole = jet::plainWholeNumber(literal, column)) {
        return binder(*whole);
    }
    if (literal.kind == jet::Literal::Kind::text && column.type == jet::ColumnType::text) {
        return binder(literal.value);
    }
    // What is made for the engine goes with this call.
    return std::visit(Binder{binder.statement, binder.number, Texts::vanish},
                      jet::parameterValue(literal, column));
}

base::Variant wholeNumber(std::int64_t value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (value < Limits::min() || value > Limits::max()) {
        return static_cast<double>(value);
    }
    return static_cast<std::int32_t>(value);
}

base::Variant byStorage(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_NULL:
            return base::Null{};
        case SQLITE_INTEGER:
            return wholeNumber(sqlite3_column_int64(statement, column));
        case SQLITE_FLOAT:
            return sqlite3_column_double(statement, column);
        default: {
            const void* data = sqlite3_column_blob(statement, column);
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
            return data == nullptr ? std::string() : std::string(static_cast<const char*>(data), size);
        }
    }
}

/// What other programs have stored in a form that the column does not have is given as it is.
base::Variant byType(base::Variant stored, jet::ColumnType type) {
    if (stored.isNull()) {
        return stored;
    }
    if (type == jet::ColumnType::boolean && stored.isNumeric()) {
        return stored.toBool();
    }
    if (type == jet::ColumnType::date && (stored.isDate() || stored.isNumeric())) {
        return stored.toDate();
    }
    if (type == jet::ColumnType::text) {
        return stored.toText();
    }
    return stored;
}

/// Whether a value as it is stored is already what byType would make of it.
bool isOfType(const base::Variant& stored, jet::ColumnType type) {
    using jet::ColumnType;
    return type == ColumnType::unknown || type == ColumnType::number ||
           (type == ColumnType::text && std::holds_alternative<std::string>(stored.value()));
}

/// A write that the system refused, for a quota or a limit, leaves the file as it was.
FileFault faultBehind(int code) {
    switch (code) {
        case SQLITE_IOERR_WRITE:
        case SQLITE_IOERR_FSYNC:
        case SQLITE_IOERR_TRUNCATE:
            return FileFault::none;
        default:
            break;
    }
    const int kind = code & 0xFF;
    if (kind == SQLITE_IOERR) {
        return FileFault::unread;
    }
    return kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB ? FileFault::damaged : FileFault::none;
}

}  // namespace

Statement::Statement(Statement&& other) noexcept
    : database_(other.database_),
      shape_(other.shape_),
      prepared_(std::exchange(other.prepared_, nullptr)),
      fault_(other.fault_) {}

Statement& Statement::operator=(Statement&& other) noexcept {
    if (this != &other) {
        giveBack();
        database_ = other.database_;
        shape_ = other.shape_;
        prepared_ = std::exchange(other.prepared_, nullptr);
        fault_ = other.fault_;
    }
    return *this;
}

Statement::~Statement() {
    giveBack();
}

void Statement::giveBack() {
    if (prepared_ != nullptr) {
        sqlite3_reset(prepared_);  // its result tells the error of the last step once more
        shape_->idle.push_back(std::exchange(prepared_, nullptr));
        --shape_->inUse;
    }
}

void Statement::bind(const jet::LexedStatement& lexed, std::int32_t identity, Texts texts,
                     std::string_view text) {
    int number = 0;
    for (const jet::Parameter& parameter : shape_->translation.parameters) {
        const Binder binder{prepared_, ++number, texts};
        const int code = parameter.isIdentity
                             ? binder(std::int64_t{identity})
                             : bindLiteral(binder, lexed.literals()[parameter.literal], parameter.column);
        checkBound(code, text);
    }
}

void Statement::bind(std::span<const jet::ParameterValue> values, std::string_view text) {
    int number = 0;
    for (const jet::ParameterValue& value : values) {
        checkBound(std::visit(Binder{prepared_, ++number, Texts::stay}, value), text);
    }
}

void Statement::checkBound(int code, std::string_view text) const {
    if (code != SQLITE_OK) {
        raiseError(database_, code, "Giving a statement its values", text);
    }
}

bool Statement::step(std::string_view text) {
    const int code = sqlite3_step(prepared_);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        *fault_ = std::max(*fault_, faultBehind(sqlite3_extended_errcode(database_)));
        raiseError(database_, code, "Running a statement", text);
    }
    return code == SQLITE_ROW;
}

bool Statement::isQuery() const {
    return sqlite3_column_count(prepared_) > 0;
}

std::shared_ptr<const ResultColumns> Statement::columns() {
    const int reprepared = sqlite3_stmt_status(prepared_, SQLITE_STMTSTATUS_REPREPARE, 0);
    if (shape_->columns == nullptr || shape_->columnsOfReprepare != reprepared) {
        auto columns = std::make_shared<ResultColumns>();
        for (int i = 0; i < sqlite3_column_count(prepared_); ++i) {
            const char* type = sqlite3_column_decltype(prepared_, i);
            columns->names.emplace_back(sqlite3_column_name(prepared_, i));
            columns->types.push_back(type == nullptr ? jet::ColumnType::unknown : columnType(type));
        }
        shape_->columns = std::move(columns);
        shape_->columnsOfReprepare = reprepared;
    }
    return shape_->columns;
}

std::int64_t Statement::number(int column) const {
    return sqlite3_column_type(prepared_, column) == SQLITE_INTEGER ? sqlite3_column_int64(prepared_, column)
                                                                    : 0;
}

Row Statement::row(const ResultColumns& columns) const {
    Row row;
    readRow(columns, row);
    return row;
}

void Statement::readRow(const ResultColumns& columns, Row& row) const {
    row.resize(columns.types.size());
    int i = 0;
    for (const jet::ColumnType type : columns.types) {
        base::Variant& field = row[static_cast<std::size_t>(i)];
        field = byStorage(prepared_, i++);
        if (!isOfType(field, type)) {
            field = byType(std::move(field), type);
        }
    }
}

}  // namespace platform::sqlite
