// A KeyedCollection keeps values in the order in which they came, each under a text key without regard to
// letter case. The indexer, whose caches have this shape, owns them. The keys lie one behind the other in one
// piece of memory: a word of a large dictionary takes its letters and some 30 bytes. Access by key costs one
// hash look-up and no allocation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/hash_index.h"
#include "base/runtime_error.h"
#include "base/text.h"

namespace base {

template <class Value>
class KeyedCollection {
  public:
    KeyedCollection() = default;
    KeyedCollection(const KeyedCollection&) = delete;
    KeyedCollection& operator=(const KeyedCollection&) = delete;

    /// Appends a value. Raises error 457 when the key is present; the collection is then unchanged.
    void add(Value value, std::string_view key) { add(std::move(value), key, hashIgnoringCase(key)); }

    /// The value under the key, or null. It stays where it is until the next value is added.
    [[nodiscard]] Value* find(std::string_view key) { return find(key, hashIgnoringCase(key)); }

    /// The same for a key whose hashIgnoringCase is known.
    void add(Value value, std::string_view key, std::uint64_t hash) {
        if (find(key, hash) != nullptr) {
            throw RuntimeError(ErrorNumber::keyInUse,
                               "This key is already associated with an element of this collection");
        }
        if (key.size() > std::numeric_limits<std::uint32_t>::max() - keys_.size() ||
            items_.size() >= HashIndex::none) {
            throw RuntimeError(ErrorNumber::overflow, "Overflow");
        }
        // Room first: where there is no memory for it, the collection stays as it was.
        items_.reserve(roomFor(items_));
        keys_.append(key);
        try {
            index_.insert(hash, static_cast<std::uint32_t>(items_.size()));
        } catch (...) {
            keys_.resize(keys_.size() - key.size());
            throw;
        }
        items_.push_back({std::move(value), static_cast<std::uint32_t>(keys_.size())});
    }
    [[nodiscard]] Value* find(std::string_view key, std::uint64_t hash) {
        const std::uint32_t number = index_.find(
            hash, [&](std::uint32_t candidate) { return equalsIgnoringCase(key, keyOf(candidate)); });
        return number == HashIndex::none ? nullptr : &items_[number].value;
    }

    /// The key and the value at a position from 1 to count(). Raises "Subscript out of range" elsewhere. The
    /// key stays where it is until the next value is added.
    [[nodiscard]] std::string_view keyAt(std::size_t position) const { return keyOf(numberAt(position)); }
    [[nodiscard]] const Value& at(std::size_t position) const { return items_[numberAt(position)].value; }

    [[nodiscard]] std::size_t count() const { return items_.size() - removed_; }

    /// Removes the value that came first. Raises "Subscript out of range" when there is none. Its memory is
    /// given back with the last value's.
    void removeFirst() {
        const std::size_t first = numberAt(1);
        index_.erase(hashIgnoringCase(keyOf(first)), static_cast<std::uint32_t>(first));
        ++removed_;
        if (count() == 0) {
            clear();
        }
    }

    void clear() {
        index_.clear();
        items_.clear();
        keys_.clear();
        removed_ = 0;
    }

  private:
    struct Item {
        Value value;
        std::uint32_t keyEnd;  // in keys_; it begins where the one before ends
    };

    static std::size_t roomFor(const std::vector<Item>& items) {
        return items.size() < items.capacity() ? items.capacity() : items.size() * 2 + 1;
    }

    [[nodiscard]] std::string_view keyOf(std::size_t number) const {
        const std::size_t begin = number == 0 ? 0 : items_[number - 1].keyEnd;
        return std::string_view(keys_).substr(begin, items_[number].keyEnd - begin);
    }

    [[nodiscard]] std::size_t numberAt(std::size_t position) const {
        if (position < 1 || position > count()) {
            throw RuntimeError(ErrorNumber::subscriptOutOfRange, "Subscript out of range");
        }
        return removed_ + position - 1;
    }

    std::vector<Item> items_;  // the removed ones of the beginning included
    std::string keys_;
    HashIndex index_;  // of positions in items_
    std::size_t removed_ = 0;
};

}  // namespace base
