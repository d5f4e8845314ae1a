#include "base/text.h"

#include <cstring>

#include "base/case_tables.h"

namespace base {
namespace {

/// Bytes outside a valid sequence stand as U+DC80..U+DCFF, which no valid UTF-8 text holds.
constexpr char32_t strayByteBase = 0xDC00;

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// Eight bytes at a time: texts are mostly ASCII, and this question is asked of every sentence.
constexpr std::size_t chunkSize = sizeof(std::uint64_t);
constexpr std::uint64_t highBits = 0x8080808080808080ULL;

std::uint64_t chunkAt(const char* data) {
    std::uint64_t chunk = 0;
    std::memcpy(&chunk, data, chunkSize);
    return chunk;
}

/// The last bytes of a text, fewer than a chunk of them.
std::uint64_t partChunkAt(const char* data, std::size_t size) {
    if (size >= 4) {
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        std::memcpy(&first, data, 4);
        std::memcpy(&last, data + size - 4, 4);
        return first | std::uint64_t{last} << 32U;
    }
    const auto byte = [data](std::size_t i) { return std::uint64_t{static_cast<unsigned char>(data[i])}; };
    return size == 0 ? 0 : byte(0) | byte(size / 2) << 8U | byte(size - 1) << 16U;
}

bool isAscii(std::string_view text) {
    std::uint64_t bits = 0;
    std::size_t i = 0;
    for (; i + chunkSize <= text.size(); i += chunkSize) {
        bits |= chunkAt(text.data() + i);
    }
    return ((bits | partChunkAt(text.data() + i, text.size() - i)) & highBits) == 0;
}

/// The ASCII letters of a chunk in lower case. No byte carries into the next one, for none has its high bit.
std::uint64_t lowerChunk(std::uint64_t chunk) {
    constexpr std::uint64_t ones = 0x0101010101010101ULL;
    const std::uint64_t fromA = chunk + (0x80 - 'A') * ones;
    const std::uint64_t pastZ = chunk + (0x80 - 'Z' - 1) * ones;
    return chunk | ((fromA & ~pastZ & highBits) >> 2U);
}

std::uint64_t mixed(std::uint64_t hash, std::uint64_t chunk) {
    hash = (hash ^ chunk) * 0x9E3779B97F4A7C15ULL;
    return hash ^ hash >> 32U;
}

/// Hash of a text without upper-case letters beyond ASCII. False in `isPlain` when the text has others than
/// ASCII characters at all.
std::uint64_t hashOfFolded(std::string_view text, bool& isPlain) {
    std::uint64_t hash = text.size();
    std::uint64_t bits = 0;
    std::size_t i = 0;
    for (; i + chunkSize <= text.size(); i += chunkSize) {
        const std::uint64_t chunk = chunkAt(text.data() + i);
        bits |= chunk;
        hash = mixed(hash, lowerChunk(chunk & ~highBits) | (chunk & highBits));
    }
    const std::uint64_t chunk = partChunkAt(text.data() + i, text.size() - i);
    bits |= chunk;
    hash = mixed(hash, lowerChunk(chunk & ~highBits) | (chunk & highBits));
    isPlain = (bits & highBits) == 0;
    return hash * 0xD6E8FEB86659FD93ULL;
}

/// Bytes that the sequence at `position` takes: 1 for ASCII and for every byte outside a valid sequence.
std::size_t sequenceLength(std::string_view text, std::size_t position) {
    const auto lead = static_cast<unsigned char>(text[position]);
    std::size_t size = 1;
    if (lead >= 0xC2 && lead <= 0xDF) {
        size = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        size = 3;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        size = 4;
    }
    if (size == 1 || position + size > text.size()) {
        return 1;
    }
    for (std::size_t i = 1; i < size; ++i) {
        if (!isContinuation(text[position + i])) {
            return 1;
        }
    }
    // Overlong forms, surrogates and what lies beyond U+10FFFF are told by the second byte.
    const auto second = static_cast<unsigned char>(text[position + 1]);
    const bool invalid = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                         (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
    return invalid ? 1 : size;
}

template <class Map>
std::string mapCodePoints(std::string_view text, Map map) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        appendCodePoint(result, map(codePointAt(text, i, i)));
    }
    return result;
}

}  // namespace

char32_t codePointAt(std::string_view text, std::size_t position, std::size_t& next) {
    const std::size_t size = sequenceLength(text, position);
    next = position + size;
    const auto lead = static_cast<unsigned char>(text[position]);
    if (size == 1) {
        return lead < 0x80 ? lead : strayByteBase + lead;
    }
    char32_t code = lead & (0xFFU >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        code = (code << 6U) | (static_cast<unsigned char>(text[position + i]) & 0x3FU);
    }
    return code;
}

void appendCodePoint(std::string& text, char32_t codePoint) {
    const auto put = [&text](char32_t byte) {
        text.push_back(static_cast<char>(static_cast<unsigned char>(byte)));
    };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0U | (codePoint >> 6U));
        put(0x80U | (codePoint & 0x3FU));
    } else if (codePoint >= strayByteBase + 0x80 && codePoint <= strayByteBase + 0xFF) {
        put(codePoint - strayByteBase);
    } else if (codePoint < 0x10000) {
        put(0xE0U | (codePoint >> 12U));
        put(0x80U | ((codePoint >> 6U) & 0x3FU));
        put(0x80U | (codePoint & 0x3FU));
    } else {
        put(0xF0U | (codePoint >> 18U));
        put(0x80U | ((codePoint >> 12U) & 0x3FU));
        put(0x80U | ((codePoint >> 6U) & 0x3FU));
        put(0x80U | (codePoint & 0x3FU));
    }
}

std::size_t length(std::string_view text) {
    if (isAscii(text)) {
        return text.size();
    }
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); i += sequenceLength(text, i)) {
        ++count;
    }
    return count;
}

std::string_view left(std::string_view text, std::size_t count) {
    if (text.size() <= count) {
        return text;
    }
    std::size_t end = 0;
    for (; count > 0 && end < text.size(); --count) {
        end += sequenceLength(text, end);
    }
    return text.substr(0, end);
}

std::string_view right(std::string_view text, std::size_t count) {
    const std::size_t characters = length(text);
    if (characters <= count) {
        return text;
    }
    return text.substr(left(text, characters - count).size());
}

std::string_view trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string replaceAll(std::string_view text, std::string_view from, std::string_view to) {
    std::string result;
    result.reserve(text.size());
    std::size_t position = 0;
    for (std::size_t found = text.find(from); found != std::string_view::npos;
         found = text.find(from, position)) {
        result.append(text, position, found - position);
        result.append(to);
        position = found + from.size();
    }
    result.append(text, position);
    return result;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    if (text.empty()) {
        return pieces;
    }
    std::size_t position = 0;
    for (std::size_t found = text.find(separator); found != std::string_view::npos;
         found = text.find(separator, position)) {
        pieces.push_back(text.substr(position, found - position));
        position = found + 1;
    }
    pieces.push_back(text.substr(position));
    return pieces;
}

std::string toLower(std::string_view text) {
    return mapCodePoints(text, lowerCodePoint);
}

std::string toUpper(std::string_view text) {
    return mapCodePoints(text, upperCodePoint);
}

std::string fold(std::string_view text) {
    return mapCodePoints(text, foldCodePoint);
}

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    if (left == right) {
        return true;
    }
    std::size_t l = 0;
    std::size_t r = 0;
    while (l < left.size() && r < right.size()) {
        if (foldCodePoint(codePointAt(left, l, l)) != foldCodePoint(codePointAt(right, r, r))) {
            return false;
        }
    }
    return l == left.size() && r == right.size();
}

std::uint64_t hashIgnoringCase(std::string_view text) {
    bool isPlain = false;
    const std::uint64_t hash = hashOfFolded(text, isPlain);
    // Some characters beyond ASCII fold to an ASCII letter, and forms differ in length.
    return isPlain ? hash : hashOfFolded(fold(text), isPlain);
}

}  // namespace base
