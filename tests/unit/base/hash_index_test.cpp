#include "base/hash_index.h"

#include <gtest/gtest.h>

#include <set>

namespace {

/// Numbers as their own keys; few different hashes make long runs of filled slots.
class Index : public testing::Test {
  protected:
    static std::uint64_t hash(std::uint32_t number) { return std::uint64_t{number % 37} << 32U; }
    [[nodiscard]] bool holds(std::uint32_t number) const {
        return index.find(hash(number), [number](std::uint32_t found) { return found == number; }) == number;
    }

    base::HashIndex index;
};

TEST_F(Index, FindsWhatIsLeftAfterOthersAreTakenOut) {
    std::set<std::uint32_t> left;
    for (std::uint32_t number = 0; number < 1000; ++number) {
        index.insert(hash(number), number);
        left.insert(number);
    }
    for (std::uint32_t number = 0; number < 1000; number += 3) {
        index.erase(hash(number), number);
        left.erase(number);
    }
    for (std::uint32_t number = 0; number < 1000; ++number) {
        EXPECT_EQ(holds(number), left.contains(number)) << number;
    }
}

TEST_F(Index, FindsNothingWhereItIsEmptyOrCleared) {
    EXPECT_FALSE(holds(5));
    index.insert(hash(5), 5);
    EXPECT_TRUE(holds(5));
    index.clear();
    EXPECT_FALSE(holds(5));
    index.insert(hash(6), 6);
    EXPECT_TRUE(holds(6));
}

TEST_F(Index, GoesOnAfterALargeSetWasCleared) {
    for (int round = 0; round < 6; ++round) {
        const std::uint32_t size = round % 2 == 0 ? 3000 : 3;
        for (std::uint32_t number = 0; number < size; ++number) {
            index.insert(hash(number), number);
        }
        EXPECT_TRUE(holds(size - 1));
        EXPECT_FALSE(holds(size));
        index.clear();
    }
}

}  // namespace
