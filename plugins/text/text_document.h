// Reads plain text and Markdown files into the parts that the service indexes.
#pragma once

#include <cstddef>
#include <string>

#include "sdk/extractor.h"

namespace text {

/// Headings beyond these stay body sentences only: they are numbered after the body, in 16 bits.
inline constexpr std::size_t mostHeadings = 2000;

/// A file named .md or .markdown is read as Markdown, any other as plain text. An ExtractionError says why a
/// file is none or cannot be read. An empty file is a document without sentences.
sdk::Document readTextDocument(const std::string& path, std::size_t mostSentences);

}  // namespace text
