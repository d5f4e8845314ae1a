// Messages that the tests of the mail extractor put together.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "fakes/temporary_folder.h"
#include "mail/mail_document.h"

namespace samples {

/// A folder for a test's messages that is the system's folder for temporary files as well.
class MailFolder : public fakes::TemporaryFolder {
  public:
    MailFolder() {
        const char* present = std::getenv("TMPDIR");
        before_ = present == nullptr ? "" : present;
        std::filesystem::create_directory(attachments());
        setenv("TMPDIR", attachments().c_str(), 1);
    }
    MailFolder(const MailFolder&) = delete;
    MailFolder& operator=(const MailFolder&) = delete;
    ~MailFolder() {
        if (before_.empty()) {
            unsetenv("TMPDIR");
        } else {
            setenv("TMPDIR", before_.c_str(), 1);
        }
    }

    [[nodiscard]] std::string attachments() const { return *this / "attachments"; }

    /// Reads a message and asks for its attachments, as the service does.
    [[nodiscard]] sdk::Document read(const std::string& message) const {
        sdk::Document document = mail::readMailDocument(write("message.eml", message), 30000);
        for (auto& attachment : document.subDocuments) {
            attachment.tempPath = attachment.makeFile();
        }
        return document;
    }

    [[nodiscard]] std::size_t attachmentCount() const {
        const std::filesystem::directory_iterator files(attachments());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

  private:
    std::string before_;
};

/// The file's name behind the time prefix of 14 digits.
inline std::string nameOf(const std::string& path) {
    const std::string name = std::filesystem::path(path).filename().string();
    const bool isPrefixed =
        name.size() > 14 && name.substr(0, 14).find_first_not_of("0123456789") == std::string::npos;
    return isPrefixed ? name.substr(14) : "no time prefix: " + name;
}

inline std::vector<std::string> namesOf(const sdk::Document& document) {
    std::vector<std::string> names;
    for (const auto& attachment : document.subDocuments) {
        names.push_back(nameOf(attachment.tempPath));
    }
    return names;
}

/// A multipart body with its header lines.
inline std::string multipart(const std::string& subtype, const std::vector<std::string>& parts,
                             const std::string& boundary = "edge") {
    std::string text = "Content-Type: multipart/" + subtype + "; boundary=\"" + boundary + "\"\n\n";
    for (const std::string& part : parts) {
        text += "--" + boundary + "\n" + part + "\n";
    }
    return text + "--" + boundary + "--\n";
}

inline const std::string plainPart = "Content-Type: text/plain\n\nPlain words.";
inline const std::string htmlPart = "Content-Type: text/html\n\n<p>Rich <b>words</b>.</p>";

}  // namespace samples
