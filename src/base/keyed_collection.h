// A KeyedCollection keeps values in the order in which they came, each under a text key without regard to
// letter case. The indexer, whose caches have this shape, owns them. Access by key costs one hash look-up and
// no allocation.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "base/runtime_error.h"
#include "base/text.h"

namespace base {

template <class Value>
class KeyedCollection {
  public:
    KeyedCollection() : index_(0, Hash{&items_, &removed_}, Equal{&items_, &removed_}) {}
    KeyedCollection(const KeyedCollection&) = delete;
    KeyedCollection& operator=(const KeyedCollection&) = delete;

    /// Appends a value. Raises error 457 when the key is present; the collection is then unchanged.
    void add(Value value, std::string_view key) {
        if (find(key) != nullptr) {
            throw RuntimeError(ErrorNumber::keyInUse,
                               "This key is already associated with an element of this collection");
        }
        items_.push_back({std::string(key), std::move(value)});
        index_.insert(removed_ + items_.size() - 1);
    }

    /// The value under the key, or null.
    [[nodiscard]] Value* find(std::string_view key) {
        const auto found = index_.find(key);
        return found == index_.end() ? nullptr : &items_[*found - removed_].second;
    }

    /// The key and the value at a position from 1 to count(). Raises "Subscript out of range" elsewhere.
    [[nodiscard]] const std::string& keyAt(std::size_t position) const { return item(position).first; }
    [[nodiscard]] const Value& at(std::size_t position) const { return item(position).second; }

    [[nodiscard]] std::size_t count() const { return items_.size(); }

    /// Removes the value that came first. Raises "Subscript out of range" when there is none.
    void removeFirst() {
        static_cast<void>(item(1));
        index_.erase(removed_);
        items_.pop_front();
        ++removed_;
    }

    void clear() {
        index_.clear();
        items_.clear();
        removed_ = 0;
    }

  private:
    using Item = std::pair<std::string, Value>;
    using Items = std::deque<Item>;

    [[nodiscard]] const Item& item(std::size_t position) const {
        if (position < 1 || position > items_.size()) {
            throw RuntimeError(ErrorNumber::subscriptOutOfRange, "Subscript out of range");
        }
        return items_[position - 1];
    }

    // The index holds running numbers: how many values came before. They stay true while first ones are
    // removed.
    struct Hash {
        using is_transparent = void;
        const Items* items;
        const std::size_t* removed;
        std::size_t operator()(std::string_view key) const { return hashIgnoringCase(key); }
        std::size_t operator()(std::size_t number) const {
            return (*this)((*items)[number - *removed].first);
        }
    };
    struct Equal {
        using is_transparent = void;
        const Items* items;
        const std::size_t* removed;
        bool operator()(std::size_t left, std::size_t right) const { return left == right; }
        bool operator()(std::string_view key, std::size_t number) const {
            return equalsIgnoringCase(key, (*items)[number - *removed].first);
        }
        bool operator()(std::size_t number, std::string_view key) const { return (*this)(key, number); }
    };

    Items items_;
    std::size_t removed_ = 0;
    std::unordered_set<std::size_t, Hash, Equal> index_;
};

}  // namespace base
