// A SentenceEntry is one sentence of the document being indexed. The indexer's sentence collection owns it.
#pragma once

#include <cstdint>
#include <string>

namespace indexer {

struct SentenceEntry {
    std::int16_t index = 0;   // number within the document
    std::string text;         // with its quotes doubled, ready to stand in a statement
    bool referenced = false;  // true once a word has it as its first matching sentence; others are not stored
};

}  // namespace indexer
