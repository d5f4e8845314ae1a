// Operations on UTF-8 text that count in characters. A character is a Unicode code point; a byte that belongs
// to no valid sequence counts as one character of its own, so that any text goes in and comes out unchanged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace base {

/// The code point at byte `position` and, in `next`, the position of the byte after it. A byte 0x80..0xFF
/// outside a valid sequence gives U+DC80..U+DCFF, which appendCodePoint turns back into that byte.
char32_t codePointAt(std::string_view text, std::size_t position, std::size_t& next);

/// Appends the UTF-8 form of a code point.
void appendCodePoint(std::string& text, char32_t codePoint);

/// Number of characters.
std::size_t length(std::string_view text);

/// The first `count` characters (all of them when there are fewer).
std::string_view left(std::string_view text, std::size_t count);

/// The last `count` characters (all of them when there are fewer).
std::string_view right(std::string_view text, std::size_t count);

/// Without the blanks (code 32 only) at both ends.
std::string_view trim(std::string_view text);

/// Every occurrence of `from` (not empty) replaced by `to`, from left to right.
std::string replaceAll(std::string_view text, std::string_view from, std::string_view to);

/// The pieces between every two separators, empty ones included; an empty text has no pieces.
std::vector<std::string_view> split(std::string_view text, char separator);

/// Lower case and upper case by Unicode's one-to-one mappings.
std::string toLower(std::string_view text);
std::string toUpper(std::string_view text);

/// True when both texts are the same but for letter case (Unicode simple case folding).
bool equalsIgnoringCase(std::string_view left, std::string_view right);

/// Hash of a text that is the same for all texts that equalsIgnoringCase calls equal. All its bits are well
/// mixed, the upper ones best. ASCII text costs no allocation.
std::uint64_t hashIgnoringCase(std::string_view text);

/// The folded form: equalsIgnoringCase(a, b) exactly when fold(a) == fold(b).
std::string fold(std::string_view text);

}  // namespace base
