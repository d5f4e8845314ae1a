// From counted words and sentences to rows.
#include <array>
#include <charconv>
#include <concepts>
#include <exception>
#include <limits>

#include "base/text.h"
#include "indexer/Indexer.h"
#include "indexer/transactions.h"
#include "infra/retryFailing.h"

namespace indexer {

using infra::LogLevel;

namespace {

/// Some hundred rows of each document bring six numbers each.
void appendNumber(std::string& text, std::integral auto number) {
    std::array<char, std::numeric_limits<decltype(number)>::digits10 + 2> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text.append(digits.data(), written.ptr);
}

}  // namespace

void Indexer::CommitWords(std::int32_t idDocumentObject, infra::tysDataBase& database) {
    beginTransaction(database, LogLevel::errorReport);
    std::string statement =
        "INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
        "first_matching_sentence ) VALUES( ";
    appendNumber(statement, idDocumentObject);
    statement.append(", ");
    const std::size_t headSize = statement.size();
    for (std::size_t i = 1; i <= words_.count(); ++i) {
        const WordIndexEntry& entry = words_.at(i);
        statement.resize(headSize);
        appendNumber(statement, entry.hitCount);
        statement.append(" , ");
        appendNumber(statement, entry.compType);
        statement.append(", ");
        appendNumber(statement, entry.subType);
        statement.append(", ");
        appendNumber(statement, entry.idRootWord);
        statement.append(", ");
        appendNumber(statement, entry.firstMatchingSentence);
        statement.append(" )");
        insertWord(statement, entry, database);
    }
    database.getConnection()->commitTrans();
    words_.clear();
}

void Indexer::insertWord(const std::string& statement, const WordIndexEntry& entry,
                         infra::tysDataBase& database) {
    for (;;) {
        try {
            database.getConnection()->execute(statement);
            return;
        } catch (const std::exception& error) {
            // The key serves as a position here, so the line names a word that need not be the one that
            // failed.
            const auto position = static_cast<std::size_t>(entry.idRootWord);
            const bool exists = entry.idRootWord >= 1 && position <= caches_.rootWords().count();
            services_.support.WriteLog(std::string("Error in commitWords: ") + error.what() + " on word: " +
                                           std::string(exists ? caches_.rootWords().keyAt(position) : ""),
                                       LogLevel::errorReport);
        }
        services_.support.WriteLog("Indexer.CommitWords - Resynchronising Caches", LogLevel::interest);
        database.getConnection()->commitTrans();
        // The load also deletes the root words that no row refers to yet, this document's own new ones among
        // them; the rows that follow keep their keys.
        LoadCaches(database);
        // Waits while no transaction is open, so that whoever can mend the fault finds the library unlocked.
        services_.system.clock.pause(infra::retryPause);
        database.getConnection()->beginTrans();
        services_.support.WriteLog("Indexer.CommitWords - Caches Resynchronised", LogLevel::interest);
    }
}

void Indexer::CommitSentences(std::int32_t idDocumentObject, infra::tysDataBase& database) {
    std::string statement =
        "INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) VALUES(";
    appendNumber(statement, idDocumentObject);
    const std::size_t headSize = statement.size();
    beginTransaction(database, LogLevel::errorReport);
    const auto connection = database.getConnection();
    try {
        connection->execute(statement + ", 1, ' ', -1)");
        connection->execute(statement + ", 1, ' ', 0)");
        for (const SentenceEntry& sentence : sentences_) {
            if (sentence.referenced) {
                statement.resize(headSize);
                statement.append(",");
                appendNumber(statement, base::length(sentence.text));
                statement.append(",'").append(sentence.text).append("',");
                appendNumber(statement, sentence.index);
                statement.append(")");
                connection->execute(statement);
            }
        }
        connection->commitTrans();
    } catch (const std::exception&) {
        rollBackQuietly(database);
        throw;
    }
    sentences_.clear();
}

}  // namespace indexer
