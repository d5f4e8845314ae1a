#include "platform/sqlite/orphan_purge.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/sqlite/handle.h"

namespace platform::sqlite {
namespace {

constexpr std::string_view purgeStatement =
    "DELETE * FROM root_word WHERE NOT EXISTS (SELECT id_root_word FROM word_index WHERE id_root_word = "
    "root_word.id)";

// A bit each; only a library whose keys another program gives has more.
constexpr std::int64_t mostNewKeys = 100'000'000;

// Without one of them, words lose hits unnoticed.
constexpr std::int64_t notingTriggers = 4;
constexpr std::string_view countNotingTriggers =
    "SELECT count(*) AS id FROM sqlite_schema WHERE type = 'trigger' AND name IN ('word_index_deleted', "
    "'word_index_updated', 'root_word_added', 'root_word_renumbered')";

constexpr std::string_view readLast = "SELECT coalesce(max(last_root_word), 0) AS id FROM word_purge";
constexpr std::string_view readNewest = "SELECT coalesce(max(id), 0) AS id FROM root_word";

// This begins with WITH and so keeps its numbers: the index is made on "id_document_object / 16", which no
// parameter would match.
//
// Older words that have lost a hit. Nearly always the document has got it back, or a neighbour of it has one:
// only the words for which that is not so are looked for in the whole index.
constexpr std::string_view purgeReleased =
    "WITH released (id) AS (SELECT DISTINCT id_root_word FROM word_release WHERE id_root_word IS NOT NULL "
    "AND NOT EXISTS (SELECT 1 FROM word_index WHERE word_index.id_document_object / 16 = "
    "word_release.id_document_object / 16 AND word_index.id_root_word = word_release.id_root_word)) "
    "DELETE FROM root_word WHERE id IN (SELECT id FROM released) AND NOT EXISTS "
    "(SELECT 1 FROM word_index WHERE word_index.id_root_word = root_word.id)";

constexpr std::string_view forgetReleased = "DELETE FROM word_release";
constexpr std::string_view notePurge =
    "UPDATE word_purge SET last_root_word = (SELECT coalesce(max(id), 0) FROM root_word) "
    "WHERE last_root_word <> (SELECT coalesce(max(id), 0) FROM root_word)";

void run(Handle& handle, std::string_view statement) {
    handle.prepare(statement, 0, Texts::stay).step(statement);
}

std::int64_t numberOf(Handle& handle, std::string_view query) {
    Statement statement = handle.prepare(query, 0, Texts::stay);
    statement.step(query);
    return statement.number(0);
}

/// The words newer than a key that may be without hits.
class NewWords {
  public:
    NewWords(Handle& handle, std::int64_t last, std::int64_t newest)
        : handle_(handle), last_(last), isUnseen_(static_cast<std::size_t>(newest - last)) {
        readWords();
        readHits();
    }

    void purge() {
        for (std::size_t i = 0; i < isUnseen_.size(); ++i) {
            if (isUnseen_[i]) {
                run(handle_, "DELETE FROM root_word WHERE id = " +
                                 std::to_string(last_ + 1 + static_cast<std::int64_t>(i)));
            }
        }
    }

  private:
    void readWords() {
        const std::string query = "SELECT id FROM root_word WHERE id > " + std::to_string(last_);
        Statement words = handle_.prepare(query, 0, Texts::stay);
        while (words.step(query)) {
            isUnseen_[position(words.number(0))] = true;
            ++unseen_;
        }
    }

    /// A walk over the hits of new words, group by group, which ends when each has been met.
    void readHits() {
        const std::string query =
            "SELECT id_root_word FROM word_index WHERE id_root_word > " + std::to_string(last_);
        Statement hits = handle_.prepare(query, 0, Texts::stay);
        while (unseen_ > 0 && hits.step(query)) {
            const std::size_t at = position(hits.number(0));
            if (at < isUnseen_.size() && isUnseen_[at]) {
                isUnseen_[at] = false;
                --unseen_;
            }
        }
    }

    [[nodiscard]] std::size_t position(std::int64_t id) const {
        return static_cast<std::size_t>(id - last_ - 1);
    }

    Handle& handle_;
    std::int64_t last_;
    std::vector<bool> isUnseen_;
    std::size_t unseen_ = 0;
};

void purgeNew(Handle& handle) {
    const std::int64_t last = numberOf(handle, readLast);
    const std::int64_t newest = numberOf(handle, readNewest);
    if (newest - last > mostNewKeys) {
        run(handle, purgeStatement);
    } else if (newest > last) {
        NewWords(handle, last, newest).purge();
    }
}

}  // namespace

bool isOrphanPurge(std::string_view statement) {
    return statement == purgeStatement;
}

void purgeOrphans(Handle& handle) {
    if (numberOf(handle, countNotingTriggers) != notingTriggers) {
        run(handle, purgeStatement);
        return;
    }
    const bool isAlone = !handle.isInTransaction();
    if (isAlone) {
        run(handle, "BEGIN IMMEDIATE");
    }
    try {
        purgeNew(handle);
        for (const std::string_view statement : {purgeReleased, forgetReleased, notePurge}) {
            run(handle, statement);
        }
        if (isAlone) {
            run(handle, "COMMIT");
        }
    } catch (...) {
        if (isAlone) {
            handle.rollBackQuietly();
        }
        throw;
    }
}

}  // namespace platform::sqlite
