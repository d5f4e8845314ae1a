// The extractor of e-mail messages.
#pragma once

#include <string>

#include "sdk/extractor.h"

namespace mail {

class MailExtractor : public sdk::DocumentExtractor {
  protected:
    sdk::Document extract(const std::string& path) override;
};

}  // namespace mail
