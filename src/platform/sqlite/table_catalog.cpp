#include "platform/sqlite/table_catalog.h"

#include <sqlite3.h>

#include <array>
#include <utility>

#include "base/text.h"
#include "platform/sqlite/sqlite_error.h"

namespace platform::sqlite {
namespace {

struct Finaliser {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

std::string_view columnText(sqlite3_stmt* statement, int column) {
    const void* text = sqlite3_column_blob(statement, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return text == nullptr ? std::string_view() : std::string_view(static_cast<const char*>(text), size);
}

}  // namespace

jet::ColumnType columnType(std::string_view declaredType) {
    using enum jet::ColumnType;
    constexpr std::array<std::pair<std::string_view, jet::ColumnType>, 8> types = {{{"TEXT", text},
                                                                                    {"LONG", number},
                                                                                    {"INTEGER", number},
                                                                                    {"NUMBER", number},
                                                                                    {"REAL", number},
                                                                                    {"DATETIME", date},
                                                                                    {"DATE", date},
                                                                                    {"BOOLEAN", boolean}}};
    for (const auto& [name, type] : types) {
        if (base::equalsIgnoringCase(declaredType, name)) {
            return type;
        }
    }
    return unknown;
}

const jet::Table* TableCatalog::table(std::string_view name) const {
    std::string key = base::fold(name);
    const auto known = tables_.find(key);
    if (known != tables_.end()) {
        return known->second.get();
    }
    std::unique_ptr<jet::Table> found = read(std::string(name));
    if (found == nullptr) {
        return nullptr;  // it may be made later
    }
    return tables_.emplace(std::move(key), std::move(found)).first->second.get();
}

std::unique_ptr<jet::Table> TableCatalog::read(const std::string& name) const {
    static constexpr std::string_view sql = "SELECT name, type, pk FROM pragma_table_info(?)";
    sqlite3_stmt* raw = nullptr;
    int code = sqlite3_prepare_v2(database_, sql.data(), static_cast<int>(sql.size()), &raw, nullptr);
    const std::unique_ptr<sqlite3_stmt, Finaliser> statement(raw);
    if (code == SQLITE_OK) {
        code = sqlite3_bind_text(raw, 1, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    }
    auto table = std::make_unique<jet::Table>();
    int keyColumns = 0;
    bool keyIsInteger = false;
    while (code == SQLITE_OK || code == SQLITE_ROW) {
        code = sqlite3_step(raw);
        if (code == SQLITE_ROW) {
            const std::string_view type = columnText(raw, 1);
            table->columns.push_back({std::string(columnText(raw, 0)), columnType(type)});
            const bool isKey = sqlite3_column_int(raw, 2) != 0;
            keyColumns += isKey ? 1 : 0;
            keyIsInteger = keyIsInteger || (isKey && base::equalsIgnoringCase(type, "INTEGER"));
        }
    }
    if (code != SQLITE_DONE) {
        raiseError(database_, code, "Reading the columns of " + name);
    }
    table->hasAutoNumber = keyColumns == 1 && keyIsInteger;
    return table->columns.empty() ? nullptr : std::move(table);
}

}  // namespace platform::sqlite
