#include "text/text_document.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

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

/// The file's bytes. Most files are no larger than what is looked at before the rest is read.
std::string readText(const shared::InputFile& file) {
    std::string bytes = file.head(shared::binarySample);
    refuseBinary(file.path(), bytes);
    if (static_cast<std::int64_t>(bytes.size()) < file.size()) {
        file.readRest(bytes);
        refuseBinary(file.path(), bytes);
    }
    return bytes;
}

/// The sentences of a plain text, decoded and cut when they are asked for: what is wrong with a file shows
/// before that.
class PlainSentences {
  public:
    PlainSentences(std::string bytes, std::size_t most) : text_(std::move(bytes)), most_(most) {}

    std::vector<std::string> all() {
        decode();
        shared::SentenceCollector sentences(most_);
        shared::addPlainText(sentences, text_);
        return sentences.take();
    }

    /// The next few; none at the end.
    std::vector<std::string> next() {
        constexpr std::size_t few = 16;
        decode();
        if (!collector_) {
            collector_.emplace(most_);
            rest_ = text_;
        }
        shared::addLines(*collector_, rest_, few);
        return collector_->takeEnded();
    }

  private:
    void decode() {
        if (!decoded_) {
            text_ = shared::toUtf8(text_);
            decoded_ = true;
        }
    }

    std::string text_;
    std::size_t most_;
    bool decoded_ = false;
    std::optional<shared::SentenceCollector> collector_;
    std::string_view rest_;  // of the text, for the next few
};

/// Whether a text may have more sentences than this. Each has a character at least, and another one ends it
/// or keeps it apart from the next; no character has less than a byte.
bool mayHaveMore(std::string_view bytes, std::size_t most) {
    return bytes.size() / 2 >= most;
}

}  // namespace

sdk::Document readTextDocument(const std::string& path, std::size_t mostSentences) {
    const shared::InputFile file(path);
    std::string bytes = readText(file);

    sdk::Document document;
    shared::setFileProperties(document, file);
    if (isMarkdown(path)) {
        shared::SentenceCollector sentences(mostSentences);
        for (std::string& heading : addMarkdown(sentences, shared::toUtf8(std::move(bytes)), mostHeadings)) {
            document.importantText.push_back({std::move(heading), "heading"});
        }
        if (!document.importantText.empty()) {
            document.properties["title"] = document.importantText.front().text;
        }
        document.sentences = sentences.take();
    } else {
        const bool few = !mayHaveMore(bytes, mostSentences);
        const auto sentences = std::make_shared<PlainSentences>(std::move(bytes), mostSentences);
        if (few) {
            document.nextSentences = [sentences] { return sentences->next(); };
        } else {
            document.makeSentences = [sentences] { return sentences->all(); };
        }
    }
    return document;
}

}  // namespace text
