#include "platform/sqlite/orphan_purge.h"

#include "platform/sqlite/handle.h"

namespace platform::sqlite {
namespace {

constexpr std::string_view purgeStatement =
    "DELETE * FROM root_word WHERE NOT EXISTS (SELECT id_root_word FROM word_index WHERE id_root_word = "
    "root_word.id)";

// They begin with WITH and so keep their numbers: the index is made on "id_document_object / 16", which no
// parameter would match.
//
// Words that are newer than the last purge: one walk over the hits of new words.
constexpr std::string_view purgeNew =
    "WITH last (id) AS (SELECT coalesce(max(last_root_word), 0) FROM word_purge) "
    "DELETE FROM root_word WHERE id > (SELECT id FROM last) AND id NOT IN "
    "(SELECT id_root_word FROM word_index WHERE id_root_word > (SELECT id FROM last))";

// Older words that have lost a hit. Nearly always the document has got it back, or a neighbour of it has one:
// only the words for which that is not so are looked for in the whole index.
constexpr std::string_view purgeReleased =
    "WITH released (id) AS (SELECT DISTINCT id_root_word FROM word_release WHERE id_root_word IS NOT NULL "
    "AND "
    "NOT EXISTS (SELECT 1 FROM word_index WHERE word_index.id_document_object / 16 = "
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

}  // namespace

bool isOrphanPurge(std::string_view statement) {
    return statement == purgeStatement;
}

void purgeOrphans(Handle& handle) {
    const bool isAlone = !handle.isInTransaction();
    if (isAlone) {
        run(handle, "BEGIN IMMEDIATE");
    }
    try {
        for (const std::string_view statement : {purgeNew, purgeReleased, forgetReleased, notePurge}) {
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
