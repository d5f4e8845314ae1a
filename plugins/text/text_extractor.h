// The extractor of plain text and Markdown.
#pragma once

#include <string>

#include "sdk/extractor.h"

namespace text {

class TextExtractor : public sdk::DocumentExtractor {
  protected:
    sdk::Document extract(const std::string& path) override;
};

}  // namespace text
