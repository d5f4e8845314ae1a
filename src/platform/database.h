// The database as ADO shows it: an engine opens connections, a connection runs statements, a recordset walks
// over rows. Statements are in Jet's dialect, built by concatenation; an engine that speaks another one
// translates inside. Every operation raises a base::RuntimeError when it fails.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/variant.h"

namespace platform {

/// The numbers are ADO's.
enum class CursorType : int { forwardOnly = 0, keyset = 1, dynamic = 2, fixed = 3 };
enum class LockType : int { readOnly = 1, pessimistic = 2, optimistic = 3 };

/// "Options unspecified", the last argument of every open and execute of the service.
inline constexpr int unspecifiedOptions = -1;

class Recordset;

class Connection {
  public:
    Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    /// Closes without raising; an open transaction is rolled back.
    virtual ~Connection() = default;

    /// Runs a statement whose rows, if any, are not wanted.
    virtual void execute(std::string_view statement, int options = unspecifiedOptions) = 0;

    /// Runs a query and gives its rows (forward only, read only).
    virtual std::unique_ptr<Recordset> query(std::string_view statement,
                                             int options = unspecifiedOptions) = 0;

    /// Raises when a transaction is already open.
    virtual void beginTrans() = 0;
    /// Both raise when no transaction is open.
    virtual void commitTrans() = 0;
    virtual void rollbackTrans() = 0;

    /// Rolls an open transaction back and closes every recordset on the connection. Raises when it is not
    /// open.
    virtual void close() = 0;
};

class Recordset {
  public:
    Recordset() = default;
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;
    /// Closes without raising.
    virtual ~Recordset() = default;

    /// Runs a query and stands on its first row. An open recordset raises; a closed one may be opened again.
    ///
    /// A fixed (static) cursor holds the rows as they were at the open. A forward-only one holds nothing
    /// while it stands on its first row: neither a read snapshot nor further rows.
    virtual void open(std::string_view statement, Connection& connection, CursorType cursor, LockType lock,
                      int options = unspecifiedOptions) = 0;

    /// True behind the last row. Raises when the recordset is closed.
    [[nodiscard]] virtual bool eof() = 0;

    /// A field of the row it stands on, by column name without regard to case: null, a boolean, a number, a
    /// date or a text, by the column's declared type. Raises behind the last row and for a name that is not
    /// there.
    [[nodiscard]] virtual base::Variant field(std::string_view name) = 0;

    /// Raises behind the last row.
    virtual void moveNext() = 0;

    /// Is given the fields of a row. They are lent until it returns; it must not use the recordset.
    using RowVisitor = std::function<void(std::span<const base::Variant> fields)>;

    /// Visits the row it stands on and all that follow with the fields of these names, which differ, in this
    /// order, and stands behind the last row then. It does what eof, field and moveNext do; engines whose
    /// rows are many do it without finding each name in each row anew.
    virtual void forEachRow(std::span<const std::string_view> names, const RowVisitor& visit) {
        std::vector<base::Variant> fields(names.size());
        for (; !eof(); moveNext()) {
            std::transform(names.begin(), names.end(), fields.begin(),
                           [this](std::string_view name) { return field(name); });
            visit(fields);
        }
    }

    /// Raises when the recordset is not open. A recordset whose connection was closed is no longer open.
    virtual void close() = 0;
};

/// What a connection is opened with.
struct ConnectionSettings {
    std::string dataSource;      // DataBasePath
    std::string systemDatabase;  // DataBaseSecurityFile; engines without a workgroup file ignore it
    std::string user;
    std::string password;  // engines without log-in ignore both
};

class DatabaseEngine {
  public:
    DatabaseEngine() = default;
    DatabaseEngine(const DatabaseEngine&) = delete;
    DatabaseEngine& operator=(const DatabaseEngine&) = delete;
    virtual ~DatabaseEngine() = default;

    /// Raises when there is no library at the data source; it never makes one.
    virtual std::unique_ptr<Connection> open(const ConnectionSettings& settings) = 0;

    /// A closed recordset, to be opened on any connection of this engine.
    virtual std::unique_ptr<Recordset> createRecordset() = 0;
};

}  // namespace platform
