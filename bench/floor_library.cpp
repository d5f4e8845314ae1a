#include "bench/floor_library.h"

#include <sqlite3.h>

#include <stdexcept>

#include "platform/sqlite/library_schema.h"

namespace bench {
namespace {

/// The tables of the library that the indexer fills for a text, without an index on the word: what can be
/// written fastest and still be found again by document.
constexpr const char* tables = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
CREATE TABLE document_object (
  id INTEGER PRIMARY KEY AUTOINCREMENT, source_url TEXT COLLATE NOCASE, first_saved DATETIME,
  title TEXT COLLATE NOCASE, data_type TEXT COLLATE NOCASE, saved_location TEXT COLLATE NOCASE, data_size NUMBER,
  snapshot BOOLEAN NOT NULL DEFAULT 0, time_stamp DATETIME, id_parent LONG, id_owning_user LONG,
  location_invalid BOOLEAN NOT NULL DEFAULT 0, location_invalid_date DATETIME,
  flag_user_set_title BOOLEAN NOT NULL DEFAULT 0, flag_indexing_failed BOOLEAN NOT NULL DEFAULT 0);
CREATE INDEX document_object_saved_location ON document_object (saved_location);
CREATE TABLE document_share (
  id INTEGER PRIMARY KEY AUTOINCREMENT, id_document LONG, id_user LONG, id_prv LONG, id_annotation LONG DEFAULT -1,
  anno_points NUMBER DEFAULT 0);
CREATE INDEX document_share_id_document ON document_share (id_document, id_user);
CREATE TABLE prv (
  id INTEGER PRIMARY KEY AUTOINCREMENT, last_prv NUMBER, last_modified DATETIME, hard_prv NUMBER,
  last_doc_usage DATETIME);
CREATE TABLE prv_history (id_prv LONG, time_stamp DATETIME, action_description TEXT COLLATE NOCASE, prv_value NUMBER);
CREATE INDEX prv_history_id_prv ON prv_history (id_prv);
CREATE TABLE root_word (id INTEGER PRIMARY KEY AUTOINCREMENT, word TEXT COLLATE NOCASE NOT NULL);
CREATE TABLE word_index (
  id_document_object LONG, hit_count LONG, comp_type LONG, type LONG, id_root_word LONG,
  first_matching_sentence LONG);
CREATE INDEX word_index_id_document_object ON word_index (id_document_object);
CREATE TABLE ascii_sentences (
  id_document_object LONG, sentence_length LONG, content TEXT COLLATE NOCASE, num_sentence LONG);
CREATE INDEX ascii_sentences_id_document_object ON ascii_sentences (id_document_object, num_sentence);
CREATE TABLE important_text (id_document LONG, type LONG);
CREATE INDEX important_text_id_document ON important_text (id_document);
)";

[[noreturn]] void fail(sqlite3* database, const std::string& doing) {
    throw std::runtime_error(doing + ": " + sqlite3_errmsg(database));
}

sqlite3* open(const std::string& path) {
    sqlite3* database = nullptr;
    const int code =
        sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    if (code != SQLITE_OK) {
        const std::string reason = sqlite3_errstr(code);
        sqlite3_close(database);
        throw std::runtime_error("cannot open " + path + ": " + reason);
    }
    return database;
}

void runScript(sqlite3* database, const std::string& sql) {
    if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(database, "cannot make the tables");
    }
}

/// Calls `take` with the texts of each row's columns.
template <class Take>
void forEachRow(sqlite3* database, const char* sql, const Take& take) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database, sql, -1, &statement, nullptr) != SQLITE_OK) {
        fail(database, sql);
    }
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> owner(statement, sqlite3_finalize);
    while (sqlite3_step(statement) == SQLITE_ROW) {
        take([statement](int column) {
            return std::string(static_cast<const char*>(sqlite3_column_blob(statement, column)),
                               static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
        });
    }
}

/// The rows that every new library begins with.
WordRules readRules() {
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> seeds(open(":memory:"), sqlite3_close);
    runScript(seeds.get(), std::string(platform::librarySchema()));
    WordRules rules;
    forEachRow(seeds.get(), "SELECT lower(term) FROM word_noise",
               [&](const auto& text) { rules.noise.insert(text(0)); });
    forEachRow(seeds.get(), "SELECT comp_type, lower(trim(description)), type FROM search_weight",
               [&](const auto& text) {
                   rules.types[{std::stoi(text(0)), text(1)}] = std::stoi(text(2));
               });
    return rules;
}

sqlite3* makeLibrary(const std::string& path) {
    sqlite3* database = open(path);
    runScript(database, tables);
    return database;
}

}  // namespace

void Prepared::Closer::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Prepared::Prepared(sqlite3* database, const char* sql) : database_(database) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK) {
        fail(database, sql);
    }
    statement_.reset(statement);
}

void Prepared::bind(int position, std::int64_t value) {
    sqlite3_bind_int64(statement_.get(), position, value);
}

void Prepared::bind(int position, std::string_view value) {
    sqlite3_bind_text(statement_.get(), position, value.data(), static_cast<int>(value.size()),
                      SQLITE_STATIC);
}

void Prepared::finish() {
    const int code = sqlite3_step(statement_.get());
    sqlite3_reset(statement_.get());
    if (code != SQLITE_DONE) {
        fail(database_, sqlite3_sql(statement_.get()));
    }
}

int WordRules::typeOf(int component, std::string_view description) const {
    const std::string name(description.empty() && component == 2 ? "normal" : description);
    const auto own = types.find({component, name});
    return own != types.end() ? own->second : types.at({component, "zzzdef"});
}

int WordRules::importantTextType(int component, std::string_view description) const {
    const auto own = types.find({component, std::string(description)});
    return own != types.end() ? own->second : 0;
}

void FloorLibrary::Closer::operator()(sqlite3* database) const {
    sqlite3_close(database);
}

FloorLibrary::FloorLibrary(const std::string& path)
    : database_(makeLibrary(path)),
      rules(readRules()),
      begin(database_.get(), "BEGIN"),
      commit(database_.get(), "COMMIT"),
      document(database_.get(),
               "INSERT INTO document_object (source_url, first_saved, title, data_type, saved_location, "
               "data_size, "
               "time_stamp, id_owning_user, id_parent) VALUES (?, ?, ?, ?, ?, ?, ?, ?, -1)"),
      relevance(database_.get(),
                "INSERT INTO prv (last_prv, last_doc_usage, last_modified) VALUES (?1, ?2, ?2)"),
      history(
          database_.get(),
          "INSERT INTO prv_history (id_prv, time_stamp, action_description, prv_value) VALUES (?, ?, ?, ?)"),
      share(database_.get(), "INSERT INTO document_share (id_document, id_user, id_prv) VALUES (?, ?, ?)"),
      important(database_.get(), "INSERT INTO important_text (id_document, type) VALUES (?, ?)"),
      rootWord(database_.get(), "INSERT INTO root_word (word) VALUES (?)"),
      word(database_.get(),
           "INSERT INTO word_index (id_document_object, hit_count, comp_type, type, id_root_word, "
           "first_matching_sentence) VALUES (?, ?, ?, ?, ?, ?)"),
      sentence(database_.get(),
               "INSERT INTO ascii_sentences (id_document_object, sentence_length, content, num_sentence) "
               "VALUES (?, ?, ?, ?)") {}

std::int64_t FloorLibrary::lastKey() const {
    return sqlite3_last_insert_rowid(database_.get());
}

}  // namespace bench
