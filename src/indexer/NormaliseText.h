// How a sentence becomes words, and a file name an extension.
#pragma once

#include <string>
#include <string_view>

namespace indexer {

/// The words of a text in lower case, each followed by one blank, without any "'s". Whatever is no ASCII
/// letter, digit or blank separates words; blanks beside separators leave runs of blanks.
///
/// A single last character after a separator, and a text of one character, are dropped. The words stored in
/// every library were cut this way, and searches cut theirs alike.
std::string NormaliseText(std::string_view text);

/// The same into a buffer that is used again and again; its former content is replaced.
void NormaliseText(std::string_view text, std::string& words);

/// What follows the last "." of a name, or an empty text when it has none.
std::string GetExtension(std::string_view name);

}  // namespace indexer
