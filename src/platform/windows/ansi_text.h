// Text between the service's UTF-8 and the system's ANSI code page, in which the registry and the networking
// library take and give text.
#pragma once

#include <string>
#include <string_view>

namespace platform::windows {

/// Raises a RuntimeError for a text with a character that the code page does not have: a look-alike or a
/// question mark in its place would name another key, drive or file.
[[nodiscard]] std::string toAnsi(std::string_view text);

/// Raises a RuntimeError for bytes that are no text in the code page.
[[nodiscard]] std::string fromAnsi(std::string_view bytes);

/// The same for a code page by its number.
[[nodiscard]] std::string toCodePage(std::string_view text, unsigned codePage);
[[nodiscard]] std::string fromCodePage(std::string_view bytes, unsigned codePage);

}  // namespace platform::windows
