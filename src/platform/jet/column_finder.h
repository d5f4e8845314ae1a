// A ColumnFinder tells which column each literal of a statement meets: the one it is stored in or compared
// with. The translator owns it while it translates.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/jet/column_catalog.h"
#include "platform/jet/tokens.h"

namespace platform::jet {

struct MetColumn {
    ColumnType type = ColumnType::unknown;
    std::string name;  // table and column, for messages
};

class ColumnFinder {
  public:
    /// Tokens and catalog must outlive it.
    ColumnFinder(std::span<const Token> tokens, const ColumnCatalog& catalog);

    /// The column that the literal at a token meets; an unknown one where it meets none.
    [[nodiscard]] MetColumn column(std::size_t literal) const;

    /// The table that an INSERT adds rows to; empty for any other statement.
    [[nodiscard]] std::string_view insertTable() const { return insertTable_; }

  private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    struct Source {
        std::string_view alias;
        std::string_view table;
    };
    /// A query or sub-query with the tables that it reads.
    struct Scope {
        std::size_t parent = none;
        std::vector<Source> sources;
        bool hasSelect = false;
    };
    /// Where the walk through the scopes stands.
    struct Walk {
        std::size_t scope = 0;
        bool inFrom = false;
        bool expectsTable = false;
    };

    void readScopes();
    void readScopeWord(std::size_t token, Walk& walk);
    void addSource(std::size_t token, std::size_t scope);
    std::size_t addScope(std::size_t parent);

    void readInsert();
    std::size_t readInsertColumns(std::size_t token);
    void readInsertItems(std::size_t token);

    [[nodiscard]] const Token& at(std::size_t token) const;
    [[nodiscard]] bool isWholeItem(std::size_t token) const;
    [[nodiscard]] std::size_t comparedOperand(std::size_t literal) const;
    [[nodiscard]] std::size_t leftOperand(std::size_t before) const;
    [[nodiscard]] std::size_t rightOperand(std::size_t after) const;
    [[nodiscard]] std::size_t listedOperand(std::size_t literal) const;
    [[nodiscard]] MetColumn resolve(std::size_t lastWord) const;
    [[nodiscard]] MetColumn lookUp(std::string_view table, std::string_view column) const;

    std::span<const Token> tokens_;
    const ColumnCatalog& catalog_;
    std::vector<Scope> scopes_;
    std::vector<std::size_t> scopeOf_;  // by token
    std::string_view insertTable_;
    std::vector<std::string_view> insertColumns_;
    std::vector<std::size_t> insertPosition_;  // by token; which column the item goes to
};

}  // namespace platform::jet
