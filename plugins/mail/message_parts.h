// Walks through the parts of a message and tells its text from its attachments.
#pragma once

#include <gmime/gmime.h>

#include <cstddef>
#include <functional>
#include <string>

#include "mail/attachment_files.h"
#include "sdk/extractor.h"
#include "shared/sentences.h"

namespace mail {

class MessageParts {
  public:
    MessageParts(shared::SentenceCollector& sentences, AttachmentFiles& files, sdk::Document& document)
        : sentences_(sentences), files_(files), document_(document) {}

    /// Adds the text of the message to the sentences and writes its attachments to files. Of alternatives
    /// that say the same, the plain text is read, else the HTML.
    void read(GMimeMessage* message);

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
    void addAttachment(const std::string& name, const std::string& mimeType,
                       const std::function<bool(int)>& write);
    void addPartFile(GMimePart* part);
    void addMessageFile(GMimeMessagePart* part);

    shared::SentenceCollector& sentences_;
    AttachmentFiles& files_;
    sdk::Document& document_;
    bool foundText_ = false;
};

}  // namespace mail
