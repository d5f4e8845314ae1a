// A WordIndexEntry counts one word key of the document being indexed. The indexer's word collection owns it.
#pragma once

#include <cstdint>

namespace indexer {

struct WordIndexEntry {
    std::int16_t hitCount = 0;  // occurrences of the word in this component of the document
    std::int16_t compType = 0;
    std::int16_t subType = 0;  // word type: a `type` of search_weight
    std::int32_t idRootWord = 0;
    std::int32_t firstMatchingSentence = 0;  // number of the sentence in which the word was first seen
};

/// Component types of indexed text.
inline constexpr std::int16_t bodyComponent = 2;  // body text, title, path and important text
inline constexpr std::int16_t annotationComponent = 3;
inline constexpr std::int16_t metaTagComponent = 4;

}  // namespace indexer
