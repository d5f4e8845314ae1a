// A HashIndex finds the numbers of items by the hashes of their keys; the items themselves lie elsewhere.
// The collection of the items owns it. A look-up reads one or two neighbouring slots of 8 bytes each, and
// only an item whose hash agrees in 32 bits is looked at.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace base {

class HashIndex {
  public:
    static constexpr std::uint32_t none = 0xFFFFFFFFU;

    /// The number of the item with this hash that `isWanted(number)` accepts, or none.
    template <class IsWanted>
    [[nodiscard]] std::uint32_t find(std::uint64_t hash, IsWanted isWanted) const {
        if (slots_.empty()) {
            return none;
        }
        const std::uint32_t tag = tagOf(hash);
        for (std::size_t i = tag & mask_;; i = (i + 1) & mask_) {
            const Slot& slot = slots_[i];
            if (slot.number == none) {
                return none;
            }
            if (slot.tag == tag && isWanted(slot.number)) {
                return slot.number;
            }
        }
    }

    /// Adds a number; whether its key is there already is the caller's affair.
    void insert(std::uint64_t hash, std::uint32_t number) {
        // At most three quarters are filled, or the runs of filled slots grow long.
        if ((count_ + 1) * 4 > slots_.size() * 3) {
            resize(slots_.empty() ? leastSlots : slots_.size() * 2);
        }
        place({tagOf(hash), number});
        ++count_;
    }

    /// Takes a number out that was inserted with this hash.
    void erase(std::uint64_t hash, std::uint32_t number) {
        std::size_t hole = tagOf(hash) & mask_;
        while (slots_[hole].number != number) {
            hole = (hole + 1) & mask_;
        }
        // Whatever follows in the run moves up when the hole lies between its own place and where it is.
        for (std::size_t i = (hole + 1) & mask_; slots_[i].number != none; i = (i + 1) & mask_) {
            const std::size_t home = slots_[i].tag & mask_;
            if (((i - home) & mask_) >= ((i - hole) & mask_)) {
                slots_[std::exchange(hole, i)] = slots_[i];
            }
        }
        slots_[hole] = {};
        --count_;
    }

    /// Forgets all numbers. The room stays for the next ones, but for most of it where little was used, so
    /// that one large set does not make the clearing of every later small one dear.
    void clear() {
        std::size_t size = slots_.size();
        while (size > leastSlots && count_ * 8 < size) {
            size /= 2;
        }
        slots_.assign(size, {});
        mask_ = size == 0 ? 0 : size - 1;
        count_ = 0;
    }

  private:
    static constexpr std::size_t leastSlots = 64;

    struct Slot {
        std::uint32_t tag = 0;
        std::uint32_t number = none;
    };

    /// The upper half, which the multiplications of the hash mix best. It decides the place as well, so that
    /// the index can grow without looking at a key.
    static std::uint32_t tagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32U); }

    void place(Slot slot) {
        std::size_t i = slot.tag & mask_;
        while (slots_[i].number != none) {
            i = (i + 1) & mask_;
        }
        slots_[i] = slot;
    }

    void resize(std::size_t size) {
        const std::vector<Slot> former = std::exchange(slots_, std::vector<Slot>(size));
        mask_ = size - 1;
        for (const Slot& slot : former) {
            if (slot.number != none) {
                place(slot);
            }
        }
    }

    std::vector<Slot> slots_;  // a power of two of them
    std::size_t mask_ = 0;
    std::size_t count_ = 0;
};

}  // namespace base
