// Text between the service's UTF-8 and the UTF-16 of the system's wide calls and of automation strings.
//
// The system's strings and file names may hold half of a surrogate pair. What came through toUtf8 goes back
// through toUtf16 unchanged, halves included, so that a file with such a name is that file and no other. In
// the service's text a half is three bytes that are not valid UTF-8, and counts as three characters.
#pragma once

#include <string>
#include <string_view>

namespace platform::windows {

/// A byte that belongs to no valid sequence, nor to a half, becomes a half of its own (0xDC00 and the byte):
/// a character in its place might name another file.
std::wstring toUtf16(std::string_view text);

std::string toUtf8(std::wstring_view text);

}  // namespace platform::windows
