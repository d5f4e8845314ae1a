// The tables of a library, and how a new library is made from them.
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The statements that make the tables of a library with their first rows.
std::string_view librarySchema();

/// Makes a library file from the statements. Raises a RuntimeError when the file exists (it is left as it
/// is) or cannot be made (nothing is left behind).
void createLibrary(const std::string& path, std::string_view sqlText = librarySchema());

}  // namespace platform
