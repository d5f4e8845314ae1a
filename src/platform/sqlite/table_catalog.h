// The TableCatalog tells the columns of a library's tables as SQLite knows them. The handle owns it; what it
// has read once it keeps until it is told to forget.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/jet/column_catalog.h"

struct sqlite3;

namespace platform::sqlite {

/// The library's type of a declared type; unknown for one that is not the library's.
jet::ColumnType columnType(std::string_view declaredType);

class TableCatalog : public jet::ColumnCatalog {
  public:
    explicit TableCatalog(sqlite3* database) : database_(database) {}

    [[nodiscard]] const jet::Table* table(std::string_view name) const override;

    void forget() { tables_.clear(); }

  private:
    [[nodiscard]] std::unique_ptr<jet::Table> read(const std::string& name) const;

    sqlite3* database_;
    mutable std::unordered_map<std::string, std::unique_ptr<jet::Table>> tables_;  // by folded name
};

}  // namespace platform::sqlite
