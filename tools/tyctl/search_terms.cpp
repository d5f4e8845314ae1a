#include "tyctl/search_terms.h"

#include <algorithm>

#include "base/text.h"

namespace tyctl {
namespace {

bool isWordCharacter(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z');
}

std::vector<TextRange> wordsOf(std::string_view text) {
    std::vector<TextRange> words;
    std::size_t position = 0;
    while (position < text.size()) {
        if (!isWordCharacter(text[position])) {
            ++position;
            continue;
        }
        const std::size_t begin = position;
        while (position < text.size() && isWordCharacter(text[position])) {
            ++position;
        }
        words.push_back({begin, position});
    }
    return words;
}

}  // namespace

std::vector<std::string> searchTerms(std::string_view text) {
    const std::string indexed = base::replaceAll(base::toLower(text), "'s", "");
    std::vector<std::string> terms;
    for (const TextRange& word : wordsOf(indexed)) {
        const std::string term = indexed.substr(word.begin, word.end - word.begin);
        if (term.size() > 1 && std::find(terms.begin(), terms.end(), term) == terms.end()) {
            terms.push_back(term);
        }
    }
    return terms;
}

std::vector<TextRange> matchesIn(std::string_view text, const std::vector<std::string>& terms) {
    std::vector<TextRange> matches = wordsOf(text);
    std::erase_if(matches, [&](const TextRange& word) {
        const std::string form = base::toLower(text.substr(word.begin, word.end - word.begin));
        return std::find(terms.begin(), terms.end(), form) == terms.end();
    });
    return matches;
}

}  // namespace tyctl
