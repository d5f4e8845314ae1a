// The Indexer turns queue entries into the library's search index: it drives an extraction plug-in and writes
// what it gives. The composition root makes the one of the process; its caches live as long as it does.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "indexer/DocumentJob.h"
#include "indexer/SentenceEntry.h"
#include "indexer/WordCaches.h"
#include "indexer/WordCollection.h"
#include "infra/Services.h"
#include "infra/tysDataBase.h"

namespace indexer {

class Indexer {
  public:
    explicit Indexer(infra::Services& services);

    /// Carries out a claimed queue entry on a connection of its own. False when the entry could not be read
    /// or an error stopped the job; the entry then stays claimed.
    bool DoIndex(std::int32_t queueId);

    /// Indexes one document, its sub-documents included. Errors of the phases are logged and handled inside;
    /// only an error of the commits rises. A document whose records cannot be set up ends the process.
    void IndexDocument(const DocumentJob& job, infra::tysDataBase& database);

    /// Replaces the path words of a document that has moved; `idUser` is accepted for the caller's sake and
    /// not used. False when that failed; the error is logged.
    bool UpdateIndexForMove(const std::string& location, const std::string& dataType, std::int32_t idUser,
                            infra::tysDataBase& database);

    /// Loads the caches anew. A failing query rises.
    void LoadCaches(infra::tysDataBase& database);

    /// Loads the caches unless this process has done so before.
    void LoadCachesOnce(infra::tysDataBase& database);

    /// Forgets words and sentences that an earlier document may have left behind.
    void ForgetPending();

    /// Counts one occurrence of a word, which is a normalised one: without "_".
    void RecordWord(std::string_view word, std::int16_t compType, std::string_view typeText,
                    SentenceEntry& sentence, infra::tysDataBase& database);

    /// Makes the entry of a key that is new in this document.
    void AddWord(std::string_view word, std::int16_t compType, std::string_view typeText,
                 SentenceEntry& sentence, const WordKey& key, infra::tysDataBase& database);

    /// Indexes one sentence. `idDocumentObject` is accepted for the callers' sake and not used. Only a
    /// sentence that is kept can be stored.
    void indexSentence(std::string_view text, std::int32_t idDocumentObject, std::int16_t sentenceNumber,
                       std::int16_t compType, std::string_view typeText, bool keepSentence,
                       infra::tysDataBase& database);

    /// Writes the counted words in one transaction, and forgets them.
    void CommitWords(std::int32_t idDocumentObject, infra::tysDataBase& database);

    /// Writes the referenced sentences in one transaction, and forgets all. An insert that fails rolls back
    /// and rises; the sentences are then kept.
    void CommitSentences(std::int32_t idDocumentObject, infra::tysDataBase& database);

    [[nodiscard]] const WordCollection& pendingWords() const { return words_; }
    [[nodiscard]] const std::deque<SentenceEntry>& pendingSentences() const { return sentences_; }
    [[nodiscard]] infra::Services& services() const { return services_; }

  private:
    void carryOut(std::int32_t queueId, infra::tysDataBase& database);
    std::string otherPathForm(const std::string& path);
    void countForCompaction();
    void recordKey(const WordKey& key, std::int16_t compType, std::string_view typeText,
                   SentenceEntry& sentence, infra::tysDataBase& database);
    std::int32_t addRootWord(const WordKey& key, infra::tysDataBase& database);
    void insertWord(const std::string& statement, const WordIndexEntry& entry, infra::tysDataBase& database);

    infra::Services& services_;
    WordCaches caches_;
    bool cachesLoaded_ = false;
    WordCollection words_;                 // of the document being indexed
    std::deque<SentenceEntry> sentences_;  // of the document being indexed
    std::string normalised_;               // reused from sentence to sentence
    std::string statement_;                // reused from new word to new word
};

}  // namespace indexer
