#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "base/checked.h"
#include "base/runtime_error.h"
#include "sdk/extractor.h"

namespace sdk {
namespace {

/// The number of sentences, in the contract, when it is not known.
constexpr std::int16_t unknownNumber = -1;

/// The item at a 1-based index; an index without an item is an error that names both.
template <class Items>
auto& itemAt(Items& items, std::int16_t index) {
    if (index < 1 || static_cast<std::size_t>(index) > items.size()) {
        throw ExtractionError(
            static_cast<int>(base::ErrorNumber::subscriptOutOfRange),
            "index " + std::to_string(index) + " is outside 1.." + std::to_string(items.size()));
    }
    return items[static_cast<std::size_t>(index) - 1];
}

template <class Item>
std::int32_t countOf(const std::vector<Item>& items) {
    return base::narrow32(static_cast<std::int64_t>(items.size()));
}

/// Joins neighbours until there are at most `most` sentences, so that a very long document loses no text.
void limitSentences(std::vector<std::string>& sentences, std::size_t most) {
    if (sentences.size() <= most) {
        return;
    }
    const std::size_t neighbours = (sentences.size() + most - 1) / most;
    std::vector<std::string> joined;
    joined.reserve(most);
    for (std::size_t first = 0; first < sentences.size(); first += neighbours) {
        std::string sentence = std::move(sentences[first]);
        const std::size_t end = std::min(first + neighbours, sentences.size());
        for (std::size_t next = first + 1; next < end; ++next) {
            sentence.append(" ").append(sentences[next]);
        }
        joined.push_back(std::move(sentence));
    }
    sentences = std::move(joined);
}

}  // namespace

bool Extractor::openByKey(std::int32_t key) {
    throw ExtractionError(static_cast<int>(base::ErrorNumber::automationError),
                          "a document cannot be opened by its key (" + std::to_string(key) +
                              "): this plug-in opens files by their path");
}

void Document::finish() {
    if (makeSentences) {
        sentences = makeSentences();
        makeSentences = nullptr;
    }
    while (makeMore()) {
    }
}

bool Document::makeMore() {
    if (!nextSentences) {
        return false;
    }
    std::vector<std::string> next = nextSentences();
    if (next.empty()) {
        nextSentences = nullptr;
        return false;
    }
    std::move(next.begin(), next.end(), std::back_inserter(sentences));
    return true;
}

bool DocumentExtractor::SetDocumentID(const std::string& path) {
    document_ = Document();
    sentencesRead_ = 0;
    clearError();
    try {
        document_ = extract(path);
    } catch (const ExtractionError& error) {
        // Number 0 would tell the service that nothing went wrong.
        constexpr auto unnumbered = static_cast<std::int32_t>(base::ErrorNumber::automationError);
        errorNumber_ = error.number() == 0 ? unnumbered : error.number();
        errorText_ = error.what();
        return false;
    }
    return true;
}

std::vector<std::string>& DocumentExtractor::sentences() {
    document_.finish();
    limitSentences(document_.sentences, maxSentences);
    return document_.sentences;
}

std::vector<std::string>& DocumentExtractor::sentencesToRead() {
    if (!document_.nextSentences) {
        return sentences();
    }
    while (sentencesRead_ >= document_.sentences.size() && document_.makeMore()) {
    }
    return document_.sentences;
}

std::int32_t DocumentExtractor::GetLastErrorNumber() {
    return errorNumber_;
}

std::string DocumentExtractor::GetLastErrorString() {
    return errorText_;
}

base::Variant DocumentExtractor::GetDocumentProperty(const std::string& name) {
    clearError();
    const auto found = document_.properties.find(name);
    return found == document_.properties.end() ? base::Variant() : found->second;
}

std::int16_t DocumentExtractor::GetNumberOfSentences() {
    clearError();
    sentencesRead_ = 0;  // sentences may have been sent with an answer that nobody took
    return document_.nextSentences ? unknownNumber : base::narrow16(countOf(sentences()));
}

bool DocumentExtractor::MoreSentences() {
    clearError();
    return sentencesRead_ < sentencesToRead().size();
}

std::string DocumentExtractor::GetNextSentence() {
    clearError();
    std::vector<std::string>& all = sentencesToRead();
    if (sentencesRead_ >= all.size()) {
        throw ExtractionError(static_cast<int>(base::ErrorNumber::subscriptOutOfRange),
                              "there is no sentence after number " + std::to_string(all.size()));
    }
    return all[sentencesRead_++];
}

std::string DocumentExtractor::GetSentenceText(std::int16_t index) {
    clearError();
    return itemAt(sentences(), index);
}

std::int32_t DocumentExtractor::GetNumberofImportantText() {
    clearError();
    return countOf(document_.importantText);
}

std::string DocumentExtractor::GetImportantTextText(std::int16_t index) {
    clearError();
    return itemAt(document_.importantText, index).text;
}

std::string DocumentExtractor::GetImportantTextType(std::int16_t index) {
    clearError();
    return itemAt(document_.importantText, index).type;
}

std::int32_t DocumentExtractor::GetNumberofAnnotations() {
    clearError();
    return countOf(document_.annotations);
}

std::string DocumentExtractor::GetAnnotationType(std::int16_t index) {
    clearError();
    return itemAt(document_.annotations, index).type;
}

std::string DocumentExtractor::GetAnnotationAnchor(std::int16_t index) {
    clearError();
    return itemAt(document_.annotations, index).anchor;
}

std::string DocumentExtractor::GetAnnotationText(std::int16_t index) {
    clearError();
    return itemAt(document_.annotations, index).text;
}

std::int32_t DocumentExtractor::GetNumberofMetaTags() {
    clearError();
    return countOf(document_.metaTags);
}

std::string DocumentExtractor::GetMetaTagText(std::int16_t index) {
    clearError();
    return itemAt(document_.metaTags, index).text;
}

std::string DocumentExtractor::GetMetaTagType(std::int16_t index) {
    clearError();
    return itemAt(document_.metaTags, index).type;
}

std::int16_t DocumentExtractor::GetNumberofSubDocuments() {
    clearError();
    return base::narrow16(countOf(document_.subDocuments));
}

std::string DocumentExtractor::GetSubDocumentTempPath(std::int16_t index) {
    clearError();
    Document::SubDocument& subDocument = itemAt(document_.subDocuments, index);
    if (subDocument.makeFile) {
        subDocument.tempPath = subDocument.makeFile();
        subDocument.makeFile = nullptr;  // from here on the file is the service's
    }
    return subDocument.tempPath;
}

std::string DocumentExtractor::GetSubDocumentPath(std::int16_t index) {
    clearError();
    return itemAt(document_.subDocuments, index).path;
}

void DocumentExtractor::clearError() {
    errorNumber_ = 0;
    errorText_.clear();
}

}  // namespace sdk
