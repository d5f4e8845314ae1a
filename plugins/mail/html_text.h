// Turns the HTML of a message into plain text.
#pragma once

#include <string>

namespace mail {

/// The text of an HTML page given as UTF-8, whatever encoding the page itself claims. Blocks are parted by
/// empty lines; scripts, styles and the head are left out; pictures give their alternative text.
std::string htmlToPlainText(const std::string& html);

/// The encoding that an HTML page names for itself; empty where it names none.
std::string htmlCharset(const std::string& html);

}  // namespace mail
