#include "base/keyed_collection.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(KeyedCollection, FindsWithoutRegardToCaseAndKeepsOrder) {
    base::KeyedCollection<int> collection;
    collection.add(1, "the");
    collection.add(2, "Über");
    EXPECT_EQ(*collection.find("THE"), 1);
    EXPECT_EQ(*collection.find("üBER"), 2);
    EXPECT_EQ(collection.find("x"), nullptr);
    EXPECT_EQ(collection.keyAt(2), "Über");
    EXPECT_THROW(static_cast<void>(collection.at(3)), base::RuntimeError);
    EXPECT_THROW(static_cast<void>(collection.at(0)), base::RuntimeError);
}

TEST(KeyedCollection, RefusesAKeyThatIsPresent) {
    base::KeyedCollection<int> collection;
    collection.add(1, "word");
    EXPECT_THROW(collection.add(2, "WORD"), base::RuntimeError);
    EXPECT_EQ(collection.count(), 1U);
    EXPECT_EQ(*collection.find("word"), 1);
}

TEST(KeyedCollection, IsFoundByKeyWhileFirstOnesAreRemoved) {
    base::KeyedCollection<int> collection;
    for (int i = 0; i < 100; ++i) {
        collection.add(i, "key" + std::to_string(i));
    }
    for (int i = 0; i < 50; ++i) {
        collection.removeFirst();
    }
    EXPECT_EQ(collection.find("key49"), nullptr);
    EXPECT_EQ(*collection.find("key50"), 50);
    EXPECT_EQ(collection.at(1), 50);
    collection.add(7, "key0");
    EXPECT_EQ(*collection.find("KEY0"), 7);
    EXPECT_EQ(collection.count(), 51U);
}

}  // namespace
