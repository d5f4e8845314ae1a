// A ColumnCatalog tells the dialect which columns the library's tables have. The engine owns it and reads it
// from its own catalogue.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform::jet {

/// Jet's column types as far as a literal is treated differently for them.
enum class ColumnType { unknown, text, number, boolean, date };

struct Column {
    std::string name;
    ColumnType type = ColumnType::unknown;
};

struct Table {
    std::vector<Column> columns;
    bool hasAutoNumber = false;
};

class ColumnCatalog {
  public:
    ColumnCatalog() = default;
    ColumnCatalog(const ColumnCatalog&) = delete;
    ColumnCatalog& operator=(const ColumnCatalog&) = delete;
    virtual ~ColumnCatalog() = default;

    /// The table of that name without regard to case, or null. It stays where it is while a statement is
    /// translated.
    [[nodiscard]] virtual const Table* table(std::string_view name) const = 0;
};

}  // namespace platform::jet
