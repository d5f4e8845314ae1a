#include "text/text_extractor.h"

#include "text/text_document.h"

namespace text {

sdk::Document TextExtractor::extract(const std::string& path) {
    return readTextDocument(path, maxSentences);
}

}  // namespace text
