// The small pieces of .reg text that its reading and its writing share: the header and the UTF-16LE form of
// text. They belong to reg_format.
#pragma once

#include <string>
#include <string_view>

namespace platform::posix {

inline constexpr std::string_view registryHeader = "Windows Registry Editor Version 5.00";
inline constexpr std::string_view oldRegistryHeader = "REGEDIT4";
inline constexpr std::string_view registryRoot = "HKEY_CURRENT_USER";
inline constexpr std::string_view registryRootShort = "HKCU";

/// UTF-16LE bytes to text and back. Bytes of a text that are no UTF-8 stand as lone surrogates between, and
/// come back as they were. An odd last byte is left out.
[[nodiscard]] std::string textOfUtf16(std::string_view bytes);
[[nodiscard]] std::string utf16OfText(std::string_view text);

}  // namespace platform::posix
