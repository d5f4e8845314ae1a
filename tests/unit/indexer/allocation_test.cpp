// What counting words takes from the heap.
#include <cstddef>
#include <cstdlib>
#include <new>

#include "base/keyed_collection.h"
#include "base/text.h"
#include "indexer/WordCollection.h"
#include "unit/indexer/indexer_fixture.h"

namespace {
std::size_t allocations = 0;
std::size_t refused = 0;  // the number of the allocation that there is no memory for
}  // namespace

// Every `new` of the program comes through here. A compiler that sees into one half of the pair alone takes
// the other for the system's own, and warns.
void* operator new(std::size_t size) {
    ++allocations;
    void* memory = allocations == refused ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace {

using indexer::bodyComponent;
using indexer::SentenceEntry;

class Allocations : public indexer_tests::IndexerTest {
  protected:
    Allocations() { indexer.LoadCaches(database); }

    /// Of a document of so many sentences; each has the same words, over and over.
    std::size_t ofDocument(int sentences, int words) {
        std::string text;
        for (int i = 0; i < words; ++i) {
            text += i % 2 == 0 ? "The winding River's " : "estuary, internationalisation and ";
        }
        const std::size_t before = allocations;
        for (int i = 1; i <= sentences; ++i) {
            indexer.indexSentence(text, 1, static_cast<std::int16_t>(i), bodyComponent, "heading", true,
                                  database);
        }
        const std::size_t taken = allocations - before;
        indexer.ForgetPending();
        return taken;
    }
};

TEST_F(Allocations, AWordThatIsKnownTakesNone) {
    const std::vector<std::string> words = {"river", "estuary", "internationalisation", "pier"};
    SentenceEntry sentence{.index = 1, .text = "", .referenced = false};
    const auto countAll = [&] {
        for (const std::string& word : words) {
            indexer.RecordWord(word, bodyComponent, "heading", sentence, database);
        }
    };
    countAll();
    indexer.ForgetPending();
    SentenceEntry first{.index = 1, .text = "", .referenced = false};
    indexer.RecordWord("river", bodyComponent, "heading", first, database);  // the section's name is kept
    const std::size_t before = allocations;
    for (int i = 0; i < 1000; ++i) {
        countAll();
    }
    EXPECT_EQ(allocations - before, 0U);
    EXPECT_EQ(indexer.pendingWords().count(), words.size());
}

/// Adds with no memory for the first, the second, ... allocation of the adding until it needs no more of
/// them.
template <class Add, class Check>
void addForLackOfMemory(Add add, Check checkIsAsBefore) {
    for (std::size_t nth = 1;; ++nth) {
        refused = allocations + nth;
        try {
            add();
            refused = 0;
            return;
        } catch (const std::bad_alloc&) {
            refused = 0;
            checkIsAsBefore();
        }
    }
}

/// Long enough that most do not fit into a text without an allocation.
std::string wordNumber(int number) {
    return "internationalisation" + std::to_string(number);
}

constexpr int manyWords = 300;

TEST(LackOfMemory, LeavesACollectionOfKeysAsItWas) {
    base::KeyedCollection<std::int32_t> collection;
    std::size_t failures = 0;
    for (int i = 0; i < manyWords; ++i) {
        const std::string word = wordNumber(i);
        addForLackOfMemory([&] { collection.add(i, word); },
                           [&] {
                               ++failures;
                               EXPECT_EQ(collection.count(), static_cast<std::size_t>(i));
                               EXPECT_EQ(collection.find(word), nullptr);
                           });
    }
    EXPECT_GT(failures, 10U);
    for (int i = 0; i < manyWords; ++i) {
        ASSERT_NE(collection.find(wordNumber(i)), nullptr) << i;
        EXPECT_EQ(*collection.find(wordNumber(i)), i);
        EXPECT_EQ(collection.keyAt(static_cast<std::size_t>(i) + 1), wordNumber(i));
    }
}

TEST(LackOfMemory, LeavesTheWordsOfADocumentAsTheyWere) {
    indexer::WordCollection words;
    std::size_t failures = 0;
    const std::uint32_t section = words.sectionOf(bodyComponent, "normal");
    const auto keyOf = [section](const std::string& word) {
        return indexer::WordKey{section, word, base::hashIgnoringCase(word)};
    };
    for (int i = 0; i < manyWords; ++i) {
        const std::string word = wordNumber(i);
        indexer::WordIndexEntry entry{};
        entry.idRootWord = i;
        addForLackOfMemory([&] { words.add(entry, keyOf(word)); },
                           [&] {
                               ++failures;
                               EXPECT_EQ(words.count(), static_cast<std::size_t>(i));
                               EXPECT_EQ(words.find(keyOf(word)), nullptr);
                           });
    }
    EXPECT_GT(failures, 10U);
    for (int i = 0; i < manyWords; ++i) {
        const std::string word = wordNumber(i);
        ASSERT_NE(words.find(keyOf(word)), nullptr) << i;
        EXPECT_EQ(words.find(keyOf(word))->idRootWord, i);
        EXPECT_EQ(words.keyAt(static_cast<std::size_t>(i) + 1), "key_2_normal_" + word);
    }
}

TEST_F(Allocations, LongSentencesTakeAsManyAsShortOnes) {
    ofDocument(64, 200);  // meets every word and makes room
    const std::size_t ofShort = ofDocument(64, 4);
    EXPECT_GT(ofShort, 0U);  // the sentences' texts
    EXPECT_EQ(ofDocument(64, 200), ofShort);
}

}  // namespace
