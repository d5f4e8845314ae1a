// What counting words takes from the heap.
#include <cstddef>
#include <cstdlib>
#include <new>

#include "unit/indexer/indexer_fixture.h"

namespace {
std::size_t allocations = 0;
}

// Every `new` of the program comes through here. A compiler that sees into one half of the pair alone takes
// the other for the system's own, and warns.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
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

TEST_F(Allocations, LongSentencesTakeAsManyAsShortOnes) {
    ofDocument(64, 200);  // meets every word and makes room
    const std::size_t ofShort = ofDocument(64, 4);
    EXPECT_GT(ofShort, 0U);  // the sentences' texts
    EXPECT_EQ(ofDocument(64, 200), ofShort);
}

}  // namespace
