#include "base/text.h"

#include <gtest/gtest.h>

#include "base/keyed_collection.h"

namespace {

TEST(Text, CountsCodePointsAndStrayBytesAsOneCharacterEach) {
    EXPECT_EQ(base::length("naïve"), 5U);
    EXPECT_EQ(base::length("\xF0\x9F\x98\x80"), 1U);
    EXPECT_EQ(base::length("a\xFF\xC3"), 3U);
    EXPECT_EQ(base::length("\xED\xA0\x80"), 3U);  // a surrogate is no character
}

TEST(Text, CutsNeverTearACharacter) {
    EXPECT_EQ(base::left("aé\xF0\x9F\x98\x80z", 3), "aé\xF0\x9F\x98\x80");
    EXPECT_EQ(base::right("aé\xF0\x9F\x98\x80z", 2), "\xF0\x9F\x98\x80z");
    EXPECT_EQ(base::left("ab", 5), "ab");
}

TEST(Text, FoldsCaseBeyondAscii) {
    EXPECT_TRUE(base::equalsIgnoringCase("ÄRGER Σ", "ärger ς"));
    EXPECT_EQ(base::hashIgnoringCase("ÄRGER Σ"), base::hashIgnoringCase("ärger ς"));
    EXPECT_FALSE(base::equalsIgnoringCase("a", "á"));
    EXPECT_EQ(base::fold("ÉCOLE"), "école");
    EXPECT_EQ(base::toUpper("straße é"), "STRAßE É");
}

TEST(Text, KeepsStrayBytesThroughCaseChanges) {
    EXPECT_EQ(base::toLower("A\xFF\xC3Z"), "a\xFF\xC3z");
}

TEST(Text, TrimsBlanksOnly) {
    EXPECT_EQ(base::trim("  a\t "), "a\t");
    EXPECT_EQ(base::trim("   "), "");
}

TEST(Text, SplitsAtEverySeparator) {
    EXPECT_EQ(base::split("a  b ", ' '), (std::vector<std::string_view>{"a", "", "b", ""}));
    EXPECT_TRUE(base::split("", ' ').empty());
}

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
