// Text between the service's UTF-8 and the UTF-16 of the system's wide calls and of automation strings.
#pragma once

#include <string>
#include <string_view>

namespace platform::windows {

/// A byte that belongs to no valid sequence becomes a unit of its own, from which toUtf8 makes it again.
std::wstring toUtf16(std::string_view text);

std::string toUtf8(std::wstring_view text);

}  // namespace platform::windows
