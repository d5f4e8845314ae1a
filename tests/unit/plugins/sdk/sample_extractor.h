// An extractor whose document is given by the test.
#pragma once

#include <utility>

#include "sdk/extractor.h"

namespace sdk_test {

class SampleExtractor : public sdk::DocumentExtractor {
  public:
    explicit SampleExtractor(sdk::Document document) : document_(std::move(document)) {}

  protected:
    sdk::Document extract(const std::string& path) override {
        if (path == "missing") {
            throw sdk::ExtractionError(53, "missing: no such file");
        }
        if (path == "unnumbered") {
            throw sdk::ExtractionError(0, "unnumbered: cannot be read");
        }
        return document_;
    }

  private:
    sdk::Document document_;
};

}  // namespace sdk_test
