// Takes Markdown apart line by line: no construct looks further than a paragraph or a bounded distance, so
// that the time grows with the length of the text and with nothing else, whatever the text holds.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "shared/sentences.h"

namespace text {

/// Adds the text of a Markdown document without its marks and gives its headings, the first `mostHeadings` of
/// them. Headings, list items, table rows and the lines of code and front matter are sentences of their own.
std::vector<std::string> addMarkdown(shared::SentenceCollector& sentences, std::string_view text,
                                     std::size_t mostHeadings);

/// A paragraph's text without marks: emphasis, code marks, tags and the targets of links go, their text
/// stays.
std::string withoutInlineMarks(std::string_view paragraph);

}  // namespace text
