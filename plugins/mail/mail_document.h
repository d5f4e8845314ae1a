// Reads a message in the Internet message format into the parts that the service indexes.
#pragma once

#include <cstddef>
#include <string>

#include "sdk/extractor.h"

namespace mail {

/// The subject is the title; sender, recipients and date are meta tags; every attachment becomes a temporary
/// file, which the caller owns. A file without a single header line is read as plain text. An ExtractionError
/// says why a file is no message or cannot be read; no temporary file is left then.
sdk::Document readMailDocument(const std::string& path, std::size_t mostSentences);

}  // namespace mail
