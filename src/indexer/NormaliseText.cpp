#include "indexer/NormaliseText.h"

#include <array>

namespace indexer {
namespace {

/// For every byte: what it becomes inside a word, or 0 where it separates words.
constexpr std::array<char, 256> makeWordCharacters() {
    std::array<char, 256> characters{};
    characters[' '] = ' ';
    for (char c = '0'; c <= '9'; ++c) {
        characters[static_cast<unsigned char>(c)] = c;
    }
    for (char c = 'a'; c <= 'z'; ++c) {
        characters[static_cast<unsigned char>(c)] = c;
        characters[static_cast<unsigned char>(c - 'a' + 'A')] = c;
    }
    return characters;
}

constexpr std::array<char, 256> wordCharacters = makeWordCharacters();

}  // namespace

void NormaliseText(std::string_view text, std::string& words) {
    // Every character that separates adds one blank, and so does the end.
    words.resize(text.size() + 1);
    std::size_t size = 0;       // of what has been written of `words`
    std::size_t wordStart = 0;  // in `words`
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char byte = text[i];
        if (byte == '\'' && i + 1 < text.size() && (text[i + 1] == 's' || text[i + 1] == 'S')) {
            ++i;
            continue;
        }
        const auto code = static_cast<unsigned char>(byte);
        if (const char character = wordCharacters[code]; character != 0) {
            words[size++] = character;
            continue;
        }
        // The bytes that follow the first of a character are part of the same separator.
        const bool continues = (code & 0xC0U) == 0x80U;
        if (continues && i > 0 && static_cast<unsigned char>(text[i - 1]) >= 0x80) {
            continue;
        }
        words[size++] = ' ';
        wordStart = size;
    }
    // The last word has no separator behind it. It counts only when it has more than one character.
    if (size - wordStart > 1) {
        words[size++] = ' ';
    } else {
        size = wordStart;
    }
    words.resize(size);
}

std::string NormaliseText(std::string_view text) {
    std::string words;
    NormaliseText(text, words);
    return words;
}

std::string GetExtension(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? std::string() : std::string(name.substr(dot + 1));
}

}  // namespace indexer
