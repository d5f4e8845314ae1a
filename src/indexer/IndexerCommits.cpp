// From counted words and sentences to rows.
#include <exception>

#include "base/text.h"
#include "indexer/Indexer.h"
#include "indexer/transactions.h"
#include "infra/retryFailing.h"

namespace indexer {

using infra::LogLevel;

void Indexer::CommitWords(std::int32_t idDocumentObject, infra::tysDataBase& database) {
    beginTransaction(database, LogLevel::errorReport);
    std::string statement;
    for (std::size_t i = 1; i <= words_.count(); ++i) {
        const WordIndexEntry& entry = words_.at(i);
        statement.assign(
            "INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
            "first_matching_sentence ) VALUES( ");
        statement.append(std::to_string(idDocumentObject)).append(", ");
        statement.append(std::to_string(entry.hitCount)).append(" , ");
        statement.append(std::to_string(entry.compType)).append(", ");
        statement.append(std::to_string(entry.subType)).append(", ");
        statement.append(std::to_string(entry.idRootWord)).append(", ");
        statement.append(std::to_string(entry.firstMatchingSentence)).append(" )");
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
    static constexpr const char* head =
        "INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) VALUES(";
    beginTransaction(database, LogLevel::errorReport);
    const auto connection = database.getConnection();
    try {
        const std::string document = std::to_string(idDocumentObject);
        connection->execute(head + document + ", 1, ' ', -1)");
        connection->execute(head + document + ", 1, ' ', 0)");
        for (const SentenceEntry& sentence : sentences_) {
            if (sentence.referenced) {
                connection->execute(head + document + "," + std::to_string(base::length(sentence.text)) +
                                    ",'" + sentence.text + "'," + std::to_string(sentence.index) + ")");
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
