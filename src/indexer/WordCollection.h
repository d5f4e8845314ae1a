// A WordCollection counts the words of the document being indexed, one entry for each word key, in the order
// in which the keys were first met. The Indexer owns the one of the process. Finding and adding cost no
// allocation once a document of the same size has been through.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/hash_index.h"
#include "indexer/WordIndexEntry.h"

namespace indexer {

/// A word key in its parts: "key_", component type, "_", word type text, "_", word. The first three come from
/// a handful of sections, and the word's hash serves other collections as well, so the text of the key is put
/// together only for those who ask for it. The word holds no "_": that ends one at every separator.
struct WordKey {
    std::uint32_t section = 0;
    std::string_view word;
    std::uint64_t wordHash = 0;  // hashIgnoringCase
};

class WordCollection {
  public:
    /// The section of a component type and a word type text, which are told apart without regard to case.
    /// It holds until the collection is cleared.
    std::uint32_t sectionOf(std::int16_t compType, std::string_view typeText);

    /// The entry under the key, or null. It stays where it is until the next entry is added.
    [[nodiscard]] WordIndexEntry* find(const WordKey& key) {
        const std::uint32_t number = index_.find(hashOf(key), [&](std::uint32_t candidate) {
            return items_[candidate].section == key.section && isWordOf(candidate, key.word);
        });
        return number == base::HashIndex::none ? nullptr : &items_[number].entry;
    }

    /// Appends an entry. Raises error 457 when the key is present; the collection is then unchanged.
    void add(const WordIndexEntry& entry, const WordKey& key);

    /// The entry and the text of its key at a position from 1 to count(). Raise "Subscript out of range"
    /// elsewhere.
    [[nodiscard]] const WordIndexEntry& at(std::size_t position) const { return item(position).entry; }
    [[nodiscard]] std::string keyAt(std::size_t position) const;

    [[nodiscard]] std::size_t count() const { return items_.size(); }

    void clear();

  private:
    struct Section {
        std::int16_t compType;
        std::string typeText;
    };
    struct Item {
        WordIndexEntry entry;
        std::uint32_t section;
        std::uint32_t wordEnd;  // in words_; it begins where the one before ends
    };

    static std::uint64_t hashOf(const WordKey& key) {
        return key.wordHash + key.section * 0x9E3779B97F4A7C15ULL;
    }

    [[nodiscard]] const Item& item(std::size_t position) const;
    [[nodiscard]] std::string_view wordOf(std::size_t number) const {
        const std::size_t begin = number == 0 ? 0 : items_[number - 1].wordEnd;
        return {words_.data() + begin, items_[number].wordEnd - begin};
    }
    [[nodiscard]] bool isWordOf(std::uint32_t number, std::string_view word) const;

    std::vector<Section> sections_;
    std::uint32_t lastSection_ = 0;
    std::vector<Item> items_;
    std::string words_;
    base::HashIndex index_;  // of positions in items_
};

}  // namespace indexer
