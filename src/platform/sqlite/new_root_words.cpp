#include "platform/sqlite/new_root_words.h"

#include <exception>
#include <limits>

#include "base/checked.h"
#include "base/runtime_error.h"
#include "platform/sqlite/handle.h"

namespace platform::sqlite {
namespace {

// As the service builds them. Any other insert of a root word runs like every statement.
constexpr std::string_view insertHead = "INSERT INTO root_word ( word ) VALUES( '";
constexpr std::string_view insertTail = "')";
constexpr std::string_view readKey = "SELECT @@IDENTITY AS id_root_word FROM root_word";

// Keys are reserved so many at a time, and what is left goes back when the file is closed.
constexpr std::int32_t reservedAtOnce = 256;
constexpr std::size_t mostKept = 8192;

// Words that one statement writes.
constexpr std::size_t rowsAtOnce = 16;

// A trigger, a unique index, a check or a further column that must not be null may refuse a word or do
// something else with it: then each is written at once, so that its own insert tells. So it is when the keys
// do not come from sqlite_sequence.
constexpr std::string_view askTables =
    "SELECT (SELECT count(*) FROM sqlite_schema WHERE type = 'table' AND name = 'root_word' COLLATE NOCASE "
    "AND sql "
    "LIKE '%AUTOINCREMENT%' AND sql NOT LIKE '%CHECK%') AS tables, (SELECT count(*) FROM sqlite_schema WHERE "
    "type = 'trigger' AND "
    "tbl_name = "
    "'root_word' COLLATE NOCASE AND name NOT IN ('root_word_added', 'root_word_renumbered')) AS triggers, "
    "(SELECT "
    "count(*) FROM pragma_index_list('root_word') WHERE [unique] <> 0) + (SELECT count(*) FROM "
    "pragma_table_info('root_word') WHERE [notnull] <> 0 AND dflt_value IS NULL AND name NOT IN ('id', "
    "'word')) "
    "AS refusing";

std::string_view wordOf(std::string_view statement) {
    if (!statement.starts_with(insertHead) || !statement.ends_with(insertTail) ||
        statement.size() < insertHead.size() + insertTail.size()) {
        return {};
    }
    statement.remove_prefix(insertHead.size());
    statement.remove_suffix(insertTail.size());
    return statement.find('\'') == std::string_view::npos ? statement : std::string_view();
}

}  // namespace

std::int32_t NewRootWords::keep(std::string_view statement) {
    const std::string_view word = wordOf(statement);
    if (word.empty() || handle_.isInTransaction()) {
        return 0;
    }
    handle_.checkFile();
    if (!canKeep()) {
        return 0;
    }
    if (words_.size() >= mostKept) {
        write();
    }
    if (keys_.next > keys_.last) {
        reserveKeys(statement);
    }
    words_.push_back({keys_.next, std::string(word)});
    return keys_.next++;
}

bool NewRootWords::answers(std::string_view statement, std::int32_t identity) const {
    return !words_.empty() && words_.back().id == identity && statement == readKey;
}

bool NewRootWords::canWaitFor(std::string_view statement) {
    return statement.starts_with("INSERT INTO important_text ") ||
           statement.starts_with("INSERT INTO annotation_section ");
}

bool NewRootWords::canKeep() {
    if (canKeep_ == Answer::unknown) {
        canKeep_ = readCanKeep() ? Answer::yes : Answer::no;
    }
    return canKeep_ == Answer::yes;
}

bool NewRootWords::readCanKeep() {
    Statement statement = handle_.prepare(askTables, 0, Texts::stay);
    if (!statement.step(askTables)) {
        return false;
    }
    const Row row = statement.row(*statement.columns());
    return row.at(0).toInt32() == 1 && row.at(1).toInt32() == 0 && row.at(2).toInt32() == 0;
}

void NewRootWords::reserveKeys(std::string_view insert) {
    // An error names the insert that needs the keys.
    static constexpr std::string_view begin = "BEGIN IMMEDIATE";
    handle_.prepare(begin, 0, Texts::stay).step(insert);
    try {
        const std::int32_t last = advanceSequence();
        run("COMMIT");
        keys_ = {last - reservedAtOnce + 1, last};
    } catch (...) {
        handle_.rollBackQuietly();
        throw;
    }
}

std::int32_t NewRootWords::advanceSequence() {
    static constexpr std::string_view read = "SELECT seq FROM sqlite_sequence WHERE name = 'root_word'";
    const std::string reserved = std::to_string(reservedAtOnce);
    run("UPDATE sqlite_sequence SET seq = max(seq, (SELECT coalesce(max(id), 0) FROM root_word)) + " +
        reserved + " WHERE name = 'root_word'");
    if (handle_.changedRows() == 0) {
        run("INSERT INTO sqlite_sequence (name, seq) SELECT 'root_word', coalesce(max(id), 0) + " + reserved +
            " FROM root_word");
    }
    Statement statement = handle_.prepare(read, 0, Texts::stay);
    statement.step(read);
    return statement.row(*statement.columns()).at(0).toInt32();
}

bool NewRootWords::areWritten() {
    if (written_ > 0 && !handle_.isInTransaction()) {
        rolledBack();  // SQLite has ended the transaction by itself, for want of space or the like
    }
    return written_ == words_.size();
}

void NewRootWords::write() {
    if (areWritten()) {
        return;
    }
    if (handle_.isInTransaction()) {
        insertWords();
        return;
    }
    run("BEGIN IMMEDIATE");
    try {
        insertWords();
        run("COMMIT");
    } catch (...) {
        handle_.rollBackQuietly();
        rolledBack();
        throw;
    }
    committed();
}

void NewRootWords::insertWords() {
    for (std::size_t next = written_; next < words_.size();) {
        const std::size_t rows = words_.size() - next >= rowsAtOnce ? rowsAtOnce : 1;
        insertRows(next, rows);
        next += rows;
    }
    written_ = words_.size();
}

/// Each statement opens the tables, sets a mark to roll back to and writes the sequence: one for many rows
/// does so once.
void NewRootWords::insertRows(std::size_t first, std::size_t count) {
    insert_.assign("INSERT INTO root_word (id, word) VALUES ");
    for (std::size_t i = first; i < first + count; ++i) {
        insert_.append(i == first ? "(" : ", (").append(std::to_string(words_[i].id));
        insert_.append(", '").append(words_[i].text).append("')");
    }
    run(insert_);
}

/// Another program may have taken keys behind the reserved ones: then those that are left are never given.
void NewRootWords::giveBackKeys() {
    if (keys_.next <= keys_.last) {
        run("UPDATE sqlite_sequence SET seq = " + std::to_string(keys_.next - 1) +
            " WHERE name = 'root_word' AND seq = " + std::to_string(keys_.last));
    }
    keys_ = {};
}

void NewRootWords::committed() {
    words_.erase(words_.begin(), words_.begin() + static_cast<std::ptrdiff_t>(written_));
    written_ = 0;
}

void NewRootWords::run(std::string_view statement) {
    handle_.prepare(statement, 0, Texts::stay).step(statement);
}

}  // namespace platform::sqlite
