#include "text/text_document.h"

#include <string_view>
#include <utility>

#include "base/text.h"
#include "shared/charset.h"
#include "shared/files.h"
#include "shared/sentences.h"
#include "text/markdown.h"

namespace text {
namespace {

bool isMarkdown(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    if (dot == std::string_view::npos) {
        return false;
    }
    const std::string_view extension = path.substr(dot + 1);
    return base::equalsIgnoringCase(extension, "md") || base::equalsIgnoringCase(extension, "markdown");
}

void refuseBinary(const std::string& path, std::string_view bytes) {
    if (shared::looksBinary(bytes)) {
        throw shared::openError(shared::OpenError::isNotThatFormat, path, "this is binary data, not text");
    }
}

}  // namespace

sdk::Document readTextDocument(const std::string& path, std::size_t mostSentences) {
    const shared::InputFile file(path);
    refuseBinary(path, file.head(shared::binarySample));
    std::string bytes = file.readAll();
    refuseBinary(path, bytes);
    std::string content = shared::toUtf8(std::move(bytes));

    sdk::Document document;
    shared::setFileProperties(document, file);
    if (isMarkdown(path)) {
        shared::SentenceCollector sentences(mostSentences);
        for (std::string& heading : addMarkdown(sentences, content, mostHeadings)) {
            document.importantText.push_back({std::move(heading), "heading"});
        }
        if (!document.importantText.empty()) {
            document.properties["title"] = document.importantText.front().text;
        }
        document.sentences = sentences.take();
    } else {
        document.makeSentences = [content = std::move(content), mostSentences] {
            shared::SentenceCollector sentences(mostSentences);
            shared::addPlainText(sentences, content);
            return sentences.take();
        };
    }
    return document;
}

}  // namespace text
