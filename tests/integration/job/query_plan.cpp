#include "integration/job/query_plan.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>

#include "base/text.h"

namespace job_tests {
namespace {

/// Tables that any statement may read from end to end: an operator's few rows, whatever the library holds.
/// A table that is kept short by other means, whatever the library holds, belongs here too.
constexpr std::array<std::string_view, 5> tablesOfBoundedSize = {
    "search_weight", "word_noise", "prv_rules", "prv_rules_annotation",
    "word_purge"};  // one row: how far the words without rows are known

/// The load of the caches at the start reads every word once.
constexpr std::array<AllowedScan, 2> allowedScans = {
    {{"SELECT id, word FROM root_word", "root_word"},
     {"DELETE * FROM root_word WHERE NOT EXISTS (SELECT id_root_word FROM word_index WHERE id_root_word = "
      "root_word.id)",
      "root_word"}}};

bool isIn(const auto& names, std::string_view name) {
    return std::any_of(names.begin(), names.end(), [name](std::string_view candidate) {
        return base::equalsIgnoringCase(candidate, name);
    });
}

/// What a line of a plan reads from end to end; empty when it reads nothing so. Subqueries and lists of
/// constants are made by other lines.
std::string_view scanned(std::string_view line) {
    constexpr std::string_view scan = "SCAN ";
    if (!line.starts_with(scan) || line.find("CONSTANT ROW") != std::string_view::npos) {
        return {};
    }
    line.remove_prefix(scan.size());
    return line.starts_with('(') ? std::string_view() : line.substr(0, line.find(' '));
}

bool isRefused(std::string_view statement, std::string_view line) {
    if (line.find("AUTOMATIC") != std::string_view::npos) {
        return true;  // an index that is made for one run costs a reading of the table
    }
    const std::string_view table = scanned(line);
    return !table.empty() && !isIn(tablesOfBoundedSize, table) &&
           std::none_of(allowedScans.begin(), allowedScans.end(), [&](const AllowedScan& allowed) {
               return allowed.statement == statement && base::equalsIgnoringCase(allowed.table, table);
           });
}

struct Finaliser {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

sqlite3* opened(const std::string& path) {
    sqlite3* database = nullptr;
    if (sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        throw std::runtime_error("cannot open " + path);
    }
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRIGGER_EQP, 1, nullptr);
    return database;
}

}  // namespace

void QueryPlans::Close::operator()(sqlite3* database) const {
    sqlite3_close(database);
}

QueryPlans::QueryPlans(const std::string& library)
    : handle_(library, {}, prepared_), database_(opened(library)) {}

QueryPlans::~QueryPlans() = default;

std::vector<std::string> QueryPlans::refusedLines(std::string_view statement) {
    bool readsOneRow = false;
    std::vector<std::string> refused;
    for (std::string& line : planOf(statement, readsOneRow)) {
        if (!readsOneRow && isRefused(statement, line)) {
            refused.push_back(std::move(line));
        }
    }
    return refused;
}

std::set<std::string> QueryPlans::indexes(std::string_view statement) {
    bool readsOneRow = false;
    constexpr std::string_view mark = "INDEX ";
    std::set<std::string> names;
    const std::vector<std::string> lines = planOf(statement, readsOneRow);
    if (readsOneRow) {
        return names;  // any row of the table will do
    }
    for (const std::string& line : lines) {
        if (const std::size_t found = line.find(mark); found != std::string::npos) {
            const std::size_t begin = found + mark.size();
            names.insert(line.substr(begin, line.find(' ', begin) - begin));
        }
    }
    return names;
}

/// The reading of the key that was given last is cut to one row.
std::vector<std::string> QueryPlans::planOf(std::string_view statement, bool& readsOneRow) {
    const auto prepared = handle_.prepare(statement, 0, platform::sqlite::Texts::vanish);
    readsOneRow = prepared.translation().readsIdentity;
    constexpr int detail = 3;
    return texts("EXPLAIN QUERY PLAN " + prepared.translation().text, detail);
}

std::vector<std::string> QueryPlans::texts(const std::string& sql, int column) {
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK) {
        throw std::runtime_error(std::string(sqlite3_errmsg(database_.get())) + " in: " + sql);
    }
    const std::unique_ptr<sqlite3_stmt, Finaliser> statement(prepared);
    std::vector<std::string> values;
    while (sqlite3_step(prepared) == SQLITE_ROW) {
        const auto* text = sqlite3_column_text(prepared, column);
        values.emplace_back(text == nullptr ? "" : reinterpret_cast<const char*>(text));
    }
    return values;
}

void QueryPlans::exec(const std::string& sql) {
    if (sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(std::string(sqlite3_errmsg(database_.get())) + " in: " + sql);
    }
}

std::string QueryPlans::textOfIndex(const std::string& index) {
    const auto found =
        texts("SELECT sql FROM sqlite_master WHERE type = 'index' AND name = '" + index + "'", 0);
    return found.empty() ? std::string() : found.front();
}

bool QueryPlans::isOfGrowingTable(const std::string& index) {
    const auto tables =
        texts("SELECT tbl_name FROM sqlite_master WHERE type = 'index' AND name = '" + index + "'", 0);
    return !tables.empty() && !isIn(tablesOfBoundedSize, tables.front());
}

}  // namespace job_tests
