#include "integration/job/query_plan.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "base/text.h"

namespace job_tests {
namespace {

/// Tables that any statement may read from end to end: an operator's few rows, whatever the library holds.
/// A table that is kept short by other means, whatever the library holds, belongs here too.
constexpr std::array<std::string_view, 11> tablesOfBoundedSize = {
    "search_weight", "word_noise", "prv_rules", "prv_rules_annotation",
    "word_purge",  // one row: how far the words without rows are known
    // What SQLite keeps of the tables themselves.
    "sqlite_schema", "sqlite_temp_schema", "sqlite_sequence", "sqlite_stat1", "pragma_table_info",
    "pragma_index_list"};

/// How much of a table is read: all of it, or a few rows in each group of a grouped index.
enum class Reading { whole, groups };

/// A read that is in order, once in a statement, although it grows with the library.
struct AllowedReading {
    std::string_view begin;  // of the statement as SQLite runs it, without regard to blanks
    std::string_view table;
    Reading reading;
};

constexpr std::array<AllowedReading, 7> allowedReadings = {{
    // The load of the caches, at the start and for each document that has moved: it reads every word.
    {"SELECT id, word FROM root_word", "root_word", Reading::whole},
    // The purge before it, in a library that does not note which words may have lost their last hit,
    {"DELETE FROM root_word WHERE NOT EXISTS", "root_word", Reading::whole},
    {"DELETE FROM root_word WHERE NOT EXISTS", "word_index", Reading::groups},
    // and in one that does: the hits of the words that came since the last purge, until each has been met;
    {"SELECT id_root_word FROM word_index WHERE id_root_word > ?1", "word_index", Reading::groups},
    // the hits that went since the last purge, and those words' hits that are elsewhere.
    {"WITH released (id) AS", "word_release", Reading::whole},
    {"WITH released (id) AS", "word_index", Reading::groups},
    // The key of a tag's word: one look for 2,048 words, and a document has few tags.
    {"Insert into metatag_entry", "root_word", Reading::groups},
}};

/// Statements for which SQLite tells no plan, and which read and write a few rows or pages. Others without a
/// plan, such as the check of a whole library, may take any time.
constexpr std::array<std::string_view, 12> boundedWithoutPlan = {
    "INSERT INTO ",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "DELETE FROM word_release",  // gives back the pages that filled since the last load of the caches
    "ANALYZE sqlite_schema",     // reads what is known of the indexes, and no table
    "PRAGMA cache_size",
    "PRAGMA cache_spill",
    "PRAGMA journal_mode",
    "PRAGMA page_size",
    "PRAGMA schema_version",
    "PRAGMA synchronous",
    "PRAGMA temp_store"};

bool isIn(const auto& names, std::string_view name) {
    return std::any_of(names.begin(), names.end(), [name](std::string_view candidate) {
        return base::equalsIgnoringCase(candidate, name);
    });
}

/// The word behind the first one of a line.
std::string_view secondWord(std::string_view line) {
    line.remove_prefix(std::min(line.find(' ') + 1, line.size()));
    return line.substr(0, line.find(' '));
}

/// Subqueries, lists of constants and what a statement has named itself are made by other lines.
bool isOfOtherLines(const std::string& sql, std::string_view line) {
    return line.find("CONSTANT ROW") != std::string_view::npos || secondWord(line).starts_with('(') ||
           sql.starts_with("WITH " + std::string(secondWord(line)) + " (");
}

/// The allowances that a plan has used up: each is for one line.
using Spent = std::set<const AllowedReading*>;

bool isAllowed(const std::string& sql, std::string_view table, Reading reading, Spent& spent) {
    const std::string text = base::replaceAll(sql, " ", "");
    return std::any_of(allowedReadings.begin(), allowedReadings.end(), [&](const AllowedReading& allowed) {
        return allowed.reading == reading && base::equalsIgnoringCase(allowed.table, table) &&
               text.starts_with(base::replaceAll(allowed.begin, " ", "")) && spent.insert(&allowed).second;
    });
}

bool isRefused(const std::string& sql, std::string_view line, Spent& spent) {
    if (line.find("AUTOMATIC") != std::string_view::npos) {
        return true;  // an index that is made for one run costs a reading of the table
    }
    const bool isWhole = line.starts_with("SCAN ") && !isOfOtherLines(sql, line);
    // An index whose first column is not asked for is gone through value by value.
    const bool isByGroups = line.find("(ANY(") != std::string_view::npos;
    const std::string_view table = secondWord(line);
    return (isWhole || isByGroups) && !isIn(tablesOfBoundedSize, table) &&
           !isAllowed(sql, table, isWhole ? Reading::whole : Reading::groups, spent);
}

/// The reading of the key that was given last: any row of the table will do.
bool readsOneRow(std::string_view sql) {
    constexpr std::string_view example = "SELECT ?1 AS id_document FROM document_object LIMIT 1";
    return sql.starts_with("SELECT ?1 AS ") && sql.ends_with(" LIMIT 1") &&
           std::count(sql.begin(), sql.end(), ' ') == std::count(example.begin(), example.end(), ' ');
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
    : handle_(library, {}, prepared_, checkpointer_), database_(opened(library)) {}

QueryPlans::~QueryPlans() = default;

std::string QueryPlans::sqlOf(std::string_view statement) {
    return handle_.prepare(statement, 0, platform::sqlite::Texts::vanish).translation().text;
}

std::vector<std::string> QueryPlans::refusedLines(const std::string& sql) {
    if (readsOneRow(sql)) {
        return {};
    }
    std::vector<std::string> lines = planOf(sql);
    if (lines.empty()) {
        const bool isBounded = std::any_of(boundedWithoutPlan.begin(), boundedWithoutPlan.end(),
                                           [&](std::string_view begin) { return sql.starts_with(begin); });
        return isBounded ? lines : std::vector<std::string>{"no plan"};
    }
    Spent spent;
    std::erase_if(lines, [&](const std::string& line) { return !isRefused(sql, line, spent); });
    return lines;
}

std::vector<std::string> QueryPlans::refused(const std::set<std::string>& statements) {
    std::vector<std::string> all;
    for (const std::string& sql : statements) {
        for (const std::string& line : refusedLines(sql)) {
            all.push_back(line + " in: " + sql);
        }
    }
    return all;
}

/// Rolled back rather than made again: what the library knows about the index goes with it.
std::vector<std::string> QueryPlans::refusedWithout(const std::string& index,
                                                    const std::set<std::string>& statements) {
    exec("BEGIN");
    exec("DROP INDEX " + index);
    std::vector<std::string> lines = refused(statements);
    exec("ROLLBACK");
    return lines;
}

std::set<std::string> QueryPlans::indexes(const std::set<std::string>& statements) {
    constexpr std::string_view mark = "INDEX ";
    std::set<std::string> names;
    for (const std::string& sql : statements) {
        for (const std::string& line : readsOneRow(sql) ? std::vector<std::string>() : planOf(sql)) {
            if (const std::size_t found = line.find(mark); found != std::string::npos) {
                const std::size_t begin = found + mark.size();
                names.insert(line.substr(begin, line.find(' ', begin) - begin));
            }
        }
    }
    std::erase_if(names, [&](const std::string& name) { return !isMadeForGrowingTable(name); });
    return names;
}

/// A PRAGMA may do its work as soon as it is prepared, and none has a plan.
std::vector<std::string> QueryPlans::planOf(const std::string& sql) {
    if (sql.starts_with("PRAGMA ")) {
        return {};
    }
    constexpr int detail = 3;
    return texts("EXPLAIN QUERY PLAN " + sql, detail);
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

bool QueryPlans::isMadeForGrowingTable(const std::string& index) {
    const auto tables = texts(
        "SELECT tbl_name FROM sqlite_schema WHERE type = 'index' AND sql <> '' AND name = '" + index + "'",
        0);
    return !tables.empty() && !isIn(tablesOfBoundedSize, tables.front());
}

}  // namespace job_tests
