// WordCaches holds what spares a query per word: word types by name, the key of every known word, and the
// words that are never indexed. The Indexer owns the one of the process.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/keyed_collection.h"
#include "indexer/WordCollection.h"
#include "infra/tysDataBase.h"

namespace indexer {

class WordCaches {
  public:
    /// Loads all three anew and deletes the root words that no index row refers to any more. A failing query
    /// or a key that comes twice (two word types of one name, two root words that differ only in case) raises
    /// to the caller.
    void LoadCaches(infra::tysDataBase& database);

    /// The numeric type of a word type name in a component: its own row, else the component's default row,
    /// else nothing. An empty name and "normal" mean the same in body text.
    std::optional<std::int16_t> typeOf(std::int16_t compType, std::string_view typeText);

    [[nodiscard]] bool isNoise(const WordKey& key) {
        return noiseWords_.find(key.word, key.wordHash) != nullptr;
    }

    /// By word without regard to case; their order is that of loading and adding.
    base::KeyedCollection<std::int32_t>& rootWords() { return rootWords_; }

  private:
    void loadSearchWeights(infra::tysDataBase& database);
    void loadRootWords(infra::tysDataBase& database);
    void loadNoiseWords(infra::tysDataBase& database);
    std::optional<std::int16_t> searchWeight(std::string_view description, std::int16_t compType);

    std::int16_t normalType_ = -1;
    base::KeyedCollection<std::string> searchWeights_;  // "description_component" to type, kept as text
    base::KeyedCollection<std::int32_t> rootWords_;
    base::KeyedCollection<char> noiseWords_;  // only presence matters
};

}  // namespace indexer
