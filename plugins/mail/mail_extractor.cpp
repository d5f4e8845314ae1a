#include "mail/mail_extractor.h"

#include "mail/mail_document.h"

namespace mail {

sdk::Document MailExtractor::extract(const std::string& path) {
    return readMailDocument(path, maxSentences);
}

}  // namespace mail
