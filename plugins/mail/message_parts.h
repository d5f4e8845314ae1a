// Walks through the parts of a message and tells its text from its attachments.
#pragma once

#include <gmime/gmime.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "mail/attachment_files.h"
#include "sdk/extractor.h"
#include "shared/sentences.h"

namespace mail {

class MessageParts {
  public:
    /// The document's attachments keep the message as long as they may be asked for.
    MessageParts(shared::SentenceCollector& sentences, sdk::Document& document,
                 std::shared_ptr<GMimeMessage> message);

    /// Adds the text of the message to the sentences and its attachments to the document. Of alternatives
    /// that say the same, the plain text is read, else the HTML.
    void read();

    [[nodiscard]] bool foundText() const { return foundText_; }

  private:
    /// What is left to take from a part.
    enum class Take { everything, attachmentsOnly };

    void readPart(GMimeObject* part, Take take, int depth);
    void readMultipart(GMimeMultipart* multipart, Take take, int depth);
    void readAlternative(GMimeMultipart* multipart, Take take, int depth);
    void readLeaf(GMimePart* part, Take take);
    void readText(GMimePart* part, GMimeContentType* type);
    void readPlainText(const std::string& text);
    void addAttachment(std::string name, std::string mimeType, std::function<bool(int)> write);
    void addPartFile(GMimePart* part);
    void addMessageFile(GMimeMessagePart* part);

    shared::SentenceCollector& sentences_;
    sdk::Document& document_;
    std::shared_ptr<GMimeMessage> message_;
    std::shared_ptr<AttachmentFiles> files_;
    bool foundText_ = false;
};

}  // namespace mail
