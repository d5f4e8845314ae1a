#include "mail/mail_document.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>
#include <string_view>
#include <utility>

#include "mail/gmime_handles.h"
#include "mail/message_parts.h"
#include "shared/charset.h"
#include "shared/files.h"
#include "shared/sentences.h"

namespace mail {
namespace {

void startLibrary() {
    // Header texts that name no encoding of their own are tried in these, one after the other.
    static const bool started = [] {
        g_mime_init();
        std::array<const char*, 3> charsets{"utf-8", "windows-1252", nullptr};
        g_mime_parser_options_set_fallback_charsets(g_mime_parser_options_get_default(), charsets.data());
        return true;
    }();
    static_cast<void>(started);
}

/// Where the message begins: behind a byte order mark and empty lines, which some programs put first.
std::size_t messageStart(std::string_view head) {
    const std::size_t mark = head.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    const std::size_t start = head.find_first_not_of("\r\n", mark);
    return start == std::string_view::npos ? mark : start;
}

ObjectHandle<GMimeMessage> parse(const shared::InputFile& file, std::size_t start) {
    const int copy = dup(file.descriptor());
    if (copy < 0) {
        throw shared::openError(shared::OpenError::cannotRead, file.path(),
                                std::string("cannot read: ") + std::strerror(errno));
    }
    const ObjectHandle<GMimeStream> stream(
        g_mime_stream_fs_new_with_bounds(copy, static_cast<gint64>(start), -1));
    const ObjectHandle<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    return ObjectHandle<GMimeMessage>(g_mime_parser_construct_message(parser.get(), nullptr));
}

/// The lines that describe the content belong to the message's part.
bool hasHeaders(GMimeMessage* message) {
    if (message == nullptr) {
        return false;
    }
    GMimeObject* part = g_mime_message_get_mime_part(message);
    return g_mime_header_list_get_count(g_mime_object_get_header_list(GMIME_OBJECT(message))) > 0 ||
           (part != nullptr && g_mime_header_list_get_count(g_mime_object_get_header_list(part)) > 0);
}

void addMetaTag(sdk::Document& document, const char* type, const std::string& text) {
    std::string folded = shared::foldWhiteSpace(text);
    if (!folded.empty()) {
        document.metaTags.push_back({std::move(folded), type});
    }
}

/// The raw header, decoded: what is left to show of addresses that cannot be taken apart, and of dates.
std::string headerText(GMimeMessage* message, const char* name) {
    const char* raw = g_mime_object_get_header(GMIME_OBJECT(message), name);
    const TextHandle decoded(raw == nullptr ? nullptr : g_mime_utils_header_decode_text(nullptr, raw));
    return textOf(decoded.get());
}

void addAddresses(sdk::Document& document, GMimeMessage* message, GMimeAddressType kind, const char* type) {
    InternetAddressList* list = g_mime_message_get_addresses(message, kind);
    const TextHandle text(list == nullptr ? nullptr : internet_address_list_to_string(list, nullptr, FALSE));
    const std::string readable = shared::foldWhiteSpace(textOf(text.get()));
    addMetaTag(document, type, readable.empty() ? headerText(message, type) : readable);
}

void readHeaders(sdk::Document& document, GMimeMessage* message) {
    const std::string subject = shared::foldWhiteSpace(textOf(g_mime_message_get_subject(message)));
    document.properties["title"] = subject;
    if (!subject.empty()) {
        document.importantText.push_back({subject, "subject"});
    }
    addAddresses(document, message, GMIME_ADDRESS_TYPE_FROM, "from");
    addAddresses(document, message, GMIME_ADDRESS_TYPE_TO, "to");
    addAddresses(document, message, GMIME_ADDRESS_TYPE_CC, "cc");
    addMetaTag(document, "date", headerText(message, "date"));

    if (GDateTime* date = g_mime_message_get_date(message)) {
        const base::DateTime local = shared::localTime(static_cast<std::time_t>(g_date_time_to_unix(date)));
        if (!local.isZero()) {
            document.properties["last_time_modified"] = local;
        }
    }
}

/// A file without headers: people name plain notes .eml too.
void readHeaderless(shared::SentenceCollector& sentences, const shared::InputFile& file) {
    std::string bytes = file.readAll();
    if (shared::looksBinary(bytes)) {
        throw shared::openError(shared::OpenError::isNotThatFormat, file.path(),
                                "this is binary data, not a message");
    }
    const std::string text = shared::toUtf8(std::move(bytes));
    if (shared::foldWhiteSpace(text).empty()) {
        throw shared::openError(shared::OpenError::isNotThatFormat, file.path(),
                                "this is no message: it has neither headers nor text");
    }
    shared::addPlainText(sentences, text);
}

}  // namespace

sdk::Document readMailDocument(const std::string& path, std::size_t mostSentences) {
    startLibrary();
    const shared::InputFile file(path);
    sdk::Document document;
    shared::setFileProperties(document, file);
    shared::SentenceCollector sentences(mostSentences);

    const std::string head = file.head(shared::binarySample);
    const std::shared_ptr<GMimeMessage> message = parse(file, messageStart(head));
    if (!hasHeaders(message.get())) {
        readHeaderless(sentences, file);
    } else {
        readHeaders(document, message.get());
        MessageParts(sentences, document, message).read();
    }
    document.sentences = sentences.take();
    return document;
}

}  // namespace mail
