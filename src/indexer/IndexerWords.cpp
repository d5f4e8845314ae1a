// From sentences to counted words.
#include <exception>
#include <limits>

#include "base/checked.h"
#include "base/text.h"
#include "indexer/Indexer.h"
#include "indexer/NormaliseText.h"
#include "infra/retryFailing.h"

namespace indexer {

using infra::LogLevel;

namespace {

constexpr std::int16_t mostHits = std::numeric_limits<std::int16_t>::max();

}  // namespace

void Indexer::LoadCaches(infra::tysDataBase& database) {
    try {
        caches_.LoadCaches(database);
    } catch (const std::exception&) {
        // Half-filled caches would index noise words and insert known words again: the next document loads
        // anew.
        cachesLoaded_ = false;
        throw;
    }
}

void Indexer::LoadCachesOnce(infra::tysDataBase& database) {
    if (!cachesLoaded_) {
        LoadCaches(database);
        cachesLoaded_ = true;
    }
}

void Indexer::ForgetPending() {
    words_.clear();
    sentences_.clear();
}

void Indexer::RecordWord(std::string_view word, std::int16_t compType, std::string_view typeText,
                         SentenceEntry& sentence, infra::tysDataBase& database) {
    const WordKey key{words_.sectionOf(compType, typeText), word, base::hashIgnoringCase(word)};
    recordKey(key, compType, typeText, sentence, database);
}

void Indexer::recordKey(const WordKey& key, std::int16_t compType, std::string_view typeText,
                        SentenceEntry& sentence, infra::tysDataBase& database) {
    WordIndexEntry* entry = words_.find(key);
    if (entry != nullptr && entry->hitCount < mostHits) {
        ++entry->hitCount;
        return;
    }
    // A count that is full goes the same way as a new word: its key is refused there, which leaves a line in
    // the log for every further occurrence.
    AddWord(key.word, compType, typeText, sentence, key, database);
}

void Indexer::AddWord(std::string_view word, std::int16_t compType, std::string_view typeText,
                      SentenceEntry& sentence, const WordKey& key, infra::tysDataBase& database) {
    const std::int32_t* known = caches_.rootWords().find(word, key.wordHash);
    const std::int32_t idRootWord = known != nullptr ? *known : addRootWord(key, database);
    try {
        const auto type = caches_.typeOf(compType, typeText);
        if (!type) {
            return;
        }
        const WordIndexEntry entry{.hitCount = 1,
                                   .compType = compType,
                                   .subType = *type,
                                   .idRootWord = idRootWord,
                                   .firstMatchingSentence = sentence.index};
        sentence.referenced = true;
        words_.add(entry, key);
    } catch (const std::exception& error) {
        services_.support.WriteLog("Error adding word: " + std::string(word) + ". " + error.what(),
                                   LogLevel::errorReport);
    }
}

std::int32_t Indexer::addRootWord(const WordKey& key, infra::tysDataBase& database) {
    const auto label = [&key] { return "Error adding root word: " + std::string(key.word) + ". "; };
    infra::retryFailing(services_, label, [&] {
        // Normalised words carry no apostrophe, so the word goes in as it is.
        statement_.assign("INSERT INTO root_word ( word ) VALUES( '").append(key.word).append("')");
        database.getConnection()->execute(statement_);
    });
    const std::int32_t id = infra::retryFailing(services_, label, [&] {
        const auto row = database.openRecordset("SELECT @@IDENTITY AS id_root_word FROM root_word",
                                                platform::CursorType::fixed, platform::LockType::optimistic);
        return row->field("id_root_word").toInt32();
    });
    infra::retryFailing(services_, label, [&] { caches_.rootWords().add(id, key.word, key.wordHash); });
    return id;
}

void Indexer::indexSentence(std::string_view text, std::int32_t /*idDocumentObject*/,
                            std::int16_t sentenceNumber, std::int16_t compType, std::string_view typeText,
                            bool keepSentence, infra::tysDataBase& database) {
    SentenceEntry unkept{.index = sentenceNumber, .text = database.sanitise(text), .referenced = false};
    SentenceEntry& sentence = keepSentence ? sentences_.emplace_back(std::move(unkept)) : unkept;
    infra::retryFailing(services_, "Error in indexSentence: ", [&] { NormaliseText(text, normalised_); });
    const std::uint32_t section = words_.sectionOf(compType, typeText);
    for (std::size_t start = 0; start < normalised_.size();) {
        const std::size_t end = std::min(normalised_.find(' ', start), normalised_.size());
        // Normalised words hold neither blanks nor quotes: there is nothing left to trim or to double.
        const std::string_view word = std::string_view(normalised_).substr(start, end - start);
        start = end + 1;
        if (word.size() <= 1) {
            continue;
        }
        const WordKey key{section, word, base::hashIgnoringCase(word)};
        if (!caches_.isNoise(key)) {
            infra::retryFailing(services_, "Error in indexSentence: ", [&] {
                recordKey(key, compType, typeText, sentence, database);
            });
        }
    }
}

}  // namespace indexer
