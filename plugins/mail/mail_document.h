// Reads a message in the Internet message format into the parts that the service indexes.
#pragma once

#include <cstddef>
#include <string>

#include "sdk/extractor.h"

namespace mail {

/// The subject is the title; sender, recipients and date are meta tags; every attachment is a
/// sub-document whose temporary file is made when it is asked for, out of the message's own file, which stays
/// open as long. A file without a single header line is read as plain text. An ExtractionError says why a
/// file is no message or cannot be read.
sdk::Document readMailDocument(const std::string& path, std::size_t mostSentences);

}  // namespace mail
