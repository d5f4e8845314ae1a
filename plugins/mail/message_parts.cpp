#include "mail/message_parts.h"

#include <unistd.h>
#include <cerrno>
#include <ctime>
#include <string_view>
#include <utility>
#include <vector>

#include "base/text.h"
#include "mail/gmime_handles.h"
#include "mail/html_text.h"
#include "mail/uuencode.h"
#include "shared/charset.h"

namespace mail {
namespace {

/// Deeper parts are not followed: nothing but an attack nests like this.
constexpr int deepestPart = 100;

/// The contract counts sub-documents in 16 bits.
constexpr std::size_t mostAttachments = 30000;

bool isType(GMimeObject* part, const char* type, const char* subtype) {
    GMimeContentType* content = g_mime_object_get_content_type(part);
    return content != nullptr && g_mime_content_type_is_type(content, type, subtype) != FALSE;
}

bool isMarkedAttachment(GMimeObject* part) {
    const char* disposition = g_mime_object_get_disposition(part);
    return disposition != nullptr && base::equalsIgnoringCase(disposition, "attachment");
}

bool isNamed(GMimeObject* part) {
    return GMIME_IS_PART(part) && g_mime_part_get_filename(GMIME_PART(part)) != nullptr;
}

/// A report's status lines are text for people, under whatever type they come.
bool isText(GMimeObject* part) {
    return isType(part, "text", "*") || isType(part, "message", "delivery-status") ||
           isType(part, "message", "disposition-notification");
}

/// True when the part holds a text of the subtype to be read, itself or somewhere inside.
bool holdsText(GMimeObject* part, const char* subtype, int depth) {
    if (!GMIME_IS_MULTIPART(part)) {
        return GMIME_IS_PART(part) && isType(part, "text", subtype) && !isMarkedAttachment(part);
    }
    auto* const multipart = GMIME_MULTIPART(part);
    for (int i = 0; depth < deepestPart && i < g_mime_multipart_get_count(multipart); ++i) {
        if (holdsText(g_mime_multipart_get_part(multipart, i), subtype, depth + 1)) {
            return true;
        }
    }
    return false;
}

/// The alternative to read: plain text, else HTML, else the last, which is the sender's favourite.
int chosenAlternative(GMimeMultipart* multipart, int depth) {
    const int count = g_mime_multipart_get_count(multipart);
    for (const char* subtype : {"plain", "html", "*"}) {
        for (int i = 0; i < count; ++i) {
            if (holdsText(g_mime_multipart_get_part(multipart, i), subtype, depth)) {
                return i;
            }
        }
    }
    return count - 1;
}

/// The part's bytes without their transfer encoding.
std::string contentOf(GMimePart* part) {
    GMimeDataWrapper* content = g_mime_part_get_content(part);
    if (content == nullptr) {
        return {};
    }
    const ObjectHandle<GMimeStream> memory(g_mime_stream_mem_new());
    g_mime_data_wrapper_write_to_stream(content, memory.get());
    const GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(memory.get()));
    return {reinterpret_cast<const char*>(bytes->data), bytes->len};
}

std::string parameterOf(GMimeContentType* type, const char* name) {
    return type == nullptr ? std::string() : textOf(g_mime_content_type_get_parameter(type, name));
}

/// Runs `write` on a stream over the descriptor, which stays open.
template <class Write>
bool writeTo(int descriptor, const Write& write) {
    const int copy = dup(descriptor);
    if (copy < 0) {
        return false;
    }
    const ObjectHandle<GMimeStream> stream(g_mime_stream_fs_new(copy));
    return write(stream.get()) >= 0 && g_mime_stream_flush(stream.get()) == 0;
}

/// Removes the marks of quoted lines, which differ from line to line where a mailer wrapped them, and ends
/// the paragraph where the depth of the quotation changes.
std::string withoutQuoteMarks(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    std::size_t lastDepth = 0;
    while (!text.empty()) {
        std::string_view line = shared::takeLine(text);
        std::size_t depth = 0;
        while (!line.empty() && line.front() == '>') {
            line = line.substr(line.size() > 1 && line[1] == ' ' ? 2 : 1);
            ++depth;
        }
        plain.append(depth != lastDepth ? "\n" : "").append(line).append("\n");
        lastDepth = depth;
    }
    return plain;
}

}  // namespace

MessageParts::MessageParts(shared::SentenceCollector& sentences, sdk::Document& document,
                           std::shared_ptr<GMimeMessage> message)
    : sentences_(sentences),
      document_(document),
      message_(std::move(message)),
      files_(std::make_shared<AttachmentFiles>(std::time(nullptr))) {}

void MessageParts::read() {
    if (GMimeObject* part = g_mime_message_get_mime_part(message_.get())) {
        readPart(part, Take::everything, 0);
    }
}

void MessageParts::readPart(GMimeObject* part, Take take, int depth) {
    if (part == nullptr || depth > deepestPart) {
        return;
    }
    if (GMIME_IS_MULTIPART(part)) {
        if (isType(part, "multipart", "alternative")) {
            readAlternative(GMIME_MULTIPART(part), take, depth);
        } else {
            readMultipart(GMIME_MULTIPART(part), take, depth);
        }
    } else if (GMIME_IS_MESSAGE_PART(part)) {
        addMessageFile(GMIME_MESSAGE_PART(part));
    } else if (GMIME_IS_PART(part)) {
        readLeaf(GMIME_PART(part), take);
    }
}

void MessageParts::readMultipart(GMimeMultipart* multipart, Take take, int depth) {
    // What follows the signed part is the signature.
    const bool isSigned = GMIME_IS_MULTIPART_SIGNED(multipart);
    const int count = g_mime_multipart_get_count(multipart);
    for (int i = 0; i < (isSigned && count > 1 ? 1 : count); ++i) {
        readPart(g_mime_multipart_get_part(multipart, i), take, depth + 1);
    }
    // A body whose boundaries are broken stands, whole, where the text for old mailers belongs.
    const std::string prologue = count == 0 ? textOf(g_mime_multipart_get_prologue(multipart)) : "";
    if (take == Take::everything && !prologue.empty()) {
        readPlainText(prologue);
    }
}

void MessageParts::readAlternative(GMimeMultipart* multipart, Take take, int depth) {
    const int chosen = chosenAlternative(multipart, depth);
    for (int i = 0; i < g_mime_multipart_get_count(multipart); ++i) {
        GMimeObject* part = g_mime_multipart_get_part(multipart, i);
        if (i == chosen) {
            readPart(part, take, depth + 1);
        } else if (GMIME_IS_MULTIPART(part) || isNamed(part) || isMarkedAttachment(part)) {
            readPart(part, Take::attachmentsOnly, depth + 1);
        }
    }
}

void MessageParts::readLeaf(GMimePart* part, Take take) {
    auto* const object = GMIME_OBJECT(part);
    const bool isAttachment =
        !isText(object) || isMarkedAttachment(object) || (isNamed(object) && foundText_);
    if (isAttachment) {
        addPartFile(part);
    } else if (take == Take::everything) {
        readText(part, g_mime_object_get_content_type(object));
    }
}

void MessageParts::readText(GMimePart* part, GMimeContentType* type) {
    std::string bytes = contentOf(part);
    std::string charset = parameterOf(type, "charset");
    if (!isType(GMIME_OBJECT(part), "text", "html")) {
        std::string text = shared::toUtf8(std::move(bytes), charset);
        // Wrapped lines are joined anyway; with this parameter the blank that marks a wrap is not the text's.
        if (base::equalsIgnoringCase(parameterOf(type, "delsp"), "yes")) {
            text = base::replaceAll(base::replaceAll(text, " \r\n", ""), " \n", "");
        }
        readPlainText(text);
        return;
    }
    if (charset.empty()) {
        charset = htmlCharset(bytes);
    }
    shared::addPlainText(sentences_, htmlToPlainText(shared::toUtf8(std::move(bytes), charset)));
    foundText_ = true;
}

void MessageParts::readPlainText(const std::string& text) {
    std::string_view rest = text;
    while (const auto file = findEncodedFile(rest)) {
        shared::addPlainText(sentences_, withoutQuoteMarks(file->before));
        addAttachment(file->name, "", [bytes = file->bytes](int descriptor) {
            return writeTo(descriptor, [&bytes](GMimeStream* stream) {
                return g_mime_stream_write(stream, bytes.data(), bytes.size());
            });
        });
        rest = file->after;
    }
    shared::addPlainText(sentences_, withoutQuoteMarks(rest));
    foundText_ = true;
}

/// `write` may use any part of the message.
void MessageParts::addAttachment(std::string name, std::string mimeType, std::function<bool(int)> write) {
    if (document_.subDocuments.size() < mostAttachments) {
        document_.subDocuments.push_back(
            {"", "",
             [message = message_, files = files_, name = std::move(name), mimeType = std::move(mimeType),
              write = std::move(write)] { return files->add(name, mimeType, write); }});
    }
}

void MessageParts::addPartFile(GMimePart* part) {
    GMimeContentType* type = g_mime_object_get_content_type(GMIME_OBJECT(part));
    const TextHandle mimeType(type == nullptr ? nullptr : g_mime_content_type_get_mime_type(type));
    addAttachment(textOf(g_mime_part_get_filename(part)), textOf(mimeType.get()), [part](int descriptor) {
        GMimeDataWrapper* content = g_mime_part_get_content(part);
        return content == nullptr || writeTo(descriptor, [content](GMimeStream* stream) {
                   return g_mime_data_wrapper_write_to_stream(content, stream);
               });
    });
}

void MessageParts::addMessageFile(GMimeMessagePart* part) {
    GMimeMessage* message = g_mime_message_part_get_message(part);
    if (message == nullptr) {
        return;
    }
    std::string name =
        textOf(g_mime_object_get_content_disposition_parameter(GMIME_OBJECT(part), "filename"));
    if (name.empty()) {
        name = parameterOf(g_mime_object_get_content_type(GMIME_OBJECT(part)), "name");
    }
    if (name.empty()) {
        // A subject is no file name: a "." or "/" in it says nothing about folders and types.
        std::string subject = shared::foldWhiteSpace(textOf(g_mime_message_get_subject(message)));
        subject = base::replaceAll(base::replaceAll(subject, "/", "_"), "\\", "_");
        name = (subject.empty() ? "message" : subject) + ".eml";
    }
    addAttachment(name, "message/rfc822", [message](int descriptor) {
        return writeTo(descriptor, [message](GMimeStream* stream) {
            return g_mime_object_write_to_stream(GMIME_OBJECT(message), nullptr, stream);
        });
    });
}

}  // namespace mail
