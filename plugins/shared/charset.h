// From bytes of any encoding to text: what a plug-in gives the service is valid UTF-8, always.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace shared {

/// How much of a file looksBinary wants to see before the rest is worth reading.
inline constexpr std::size_t binarySample = std::size_t{1} << 16;

/// True for bytes that are no text in any encoding: a known binary format's first bytes, NUL bytes outside
/// UTF-16 and UTF-32, or more control characters than any text has.
bool looksBinary(std::string_view bytes);

/// The bytes as UTF-8. A byte order mark decides, then valid UTF-8, then what the bytes look like; Western
/// European (windows-1252) is the last resort. What cannot be converted becomes U+FFFD.
std::string toUtf8(std::string bytes);

/// The same for bytes that come with the name of their encoding, which decides when it is known and fits.
std::string toUtf8(std::string bytes, const std::string& charset);

/// True when the text is UTF-8 through and through.
bool isUtf8(std::string_view text);

}  // namespace shared
