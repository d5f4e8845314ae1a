// What the words of a search become: the forms in which the index keeps words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tyctl {

/// The distinct words of a text as documents are split into words: in lower case, without "'s", cut at
/// everything but ASCII letters and digits. Words of one character are not indexed and left out.
std::vector<std::string> searchTerms(std::string_view text);

/// The byte ranges of a text that hold one of the terms as a whole word, from left to right.
struct TextRange {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool operator==(const TextRange&) const = default;
};
std::vector<TextRange> matchesIn(std::string_view text, const std::vector<std::string>& terms);

}  // namespace tyctl
