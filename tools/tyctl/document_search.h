// Finds the live documents that hold all of some words, best ones first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "relevance/tysPRV.h"
#include "tyctl/library.h"

namespace tyctl {

struct SearchHit {
    std::int32_t document = 0;
    std::int64_t hits = 0;
    double relevance = 0;
    std::string title;
    std::string path;        // of the file that holds the document
    std::string attachment;  // "3", or "3.1" for an attachment's attachment; empty for the file itself
    std::string dataType;
    std::string sentence;  // the first one that holds one of the words; empty when none was kept
};

struct SearchResult {
    std::vector<std::string> noise;     // words that are not indexed and were left out
    std::vector<std::string> unknown;   // words that no document holds
    std::vector<std::string> searched;  // the others
    std::size_t found = 0;
    std::vector<SearchHit> hits;  // the best ones, at most as many as asked for
};

class DocumentSearch {
  public:
    DocumentSearch(Library& library, std::int32_t user);

    /// Ranked by hits, documents with as many hits by the user's present relevance value, then by title.
    /// `limit` 0 gives all.
    SearchResult find(const std::vector<std::string>& terms, std::size_t limit);

  private:
    struct Match {
        std::int64_t hits = 0;
        std::int32_t firstSentence = 0;  // 0 while none of the text's own sentences is known
        std::size_t wordsHeld = 0;
    };
    using Matches = std::map<std::int32_t, Match>;

    bool isNoise(const std::string& term);
    void addMatches(const std::string& term, std::size_t wordsBefore, Matches& matches);
    bool isKnown(const std::string& term);
    SearchHit describe(std::int32_t document, const Match& match);
    void placeOf(SearchHit& hit, std::int32_t parent, const std::string& location);
    std::string sentence(std::int32_t document, std::int32_t number);

    Library& library_;
    std::int32_t user_;
    relevance::tysPRV relevance_;
};

}  // namespace tyctl
