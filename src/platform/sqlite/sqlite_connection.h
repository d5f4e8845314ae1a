// A SqliteConnection is one connection to a library. Whoever opened it owns it; it lends its handle to the
// recordsets that are open on it and takes it away from them when it closes.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/database.h"
#include "platform/sqlite/handle_pool.h"

namespace platform::sqlite {

class SqliteRecordset;

class SqliteConnection : public Connection {
  public:
    SqliteConnection(std::shared_ptr<HandlePool> pool, std::unique_ptr<Handle> handle);
    ~SqliteConnection() override;

    void execute(std::string_view statement, int options) override;
    std::unique_ptr<Recordset> query(std::string_view statement, int options) override;
    void beginTrans() override;
    void commitTrans() override;
    void rollbackTrans() override;
    void close() override;

    /// For the recordsets: a query ready to run. `statement` must stay alive and where it is.
    Statement prepareQuery(std::string_view statement);
    /// The key of the root word that was added last, when the query asks for it and the word is not written
    /// yet.
    std::optional<std::int32_t> keyOfNewRootWord(std::string_view statement);
    void trace(std::string_view statement) const { pool_->trace(statement); }

    void attach(SqliteRecordset& recordset);
    void detach(SqliteRecordset& recordset) noexcept;

  private:
    Handle& handle();
    bool executeOverWarmHandle(std::string_view statement);
    static void ready(Handle& open, std::string_view statement);
    void writeNewRootWords() noexcept;
    void settleRecordsets();
    void runControl(std::string_view statement);
    Handle& endTransaction(std::string_view traced);
    void release() noexcept;

    std::shared_ptr<HandlePool> pool_;
    std::unique_ptr<Handle> handle_;  // null when closed
    std::vector<SqliteRecordset*> recordsets_;
    std::int32_t identity_ = 0;  // the last AutoNumber given
};

}  // namespace platform::sqlite
