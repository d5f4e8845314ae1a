// An Extractor is one document's view through a plug-in: the methods of the extraction contract by their own
// names. runPlugin makes one per document and destroys it when the service releases the document.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/variant.h"

namespace sdk {

/// Why a document cannot be opened or read; the service logs number and text.
class ExtractionError : public std::runtime_error {
  public:
    ExtractionError(std::int32_t number, const std::string& text)
        : std::runtime_error(text), number_(number) {}
    [[nodiscard]] std::int32_t number() const { return number_; }

  private:
    std::int32_t number_;
};

/// The contract's methods. Indices run from 1. An exception out of any of them is a run-time error of that
/// call.
class Extractor {
  public:
    Extractor() = default;
    Extractor(const Extractor&) = delete;
    Extractor& operator=(const Extractor&) = delete;
    virtual ~Extractor() = default;

    virtual bool SetDocumentID(const std::string& path) = 0;

    /// SetDocumentID with the key of a document in the library, in the place of a path: so the service asks
    /// where a message has moved to. Raises an error unless the plug-in overrides it; the service then
    /// indexes the document anew.
    virtual bool openByKey(std::int32_t key);

    virtual std::int32_t GetLastErrorNumber() = 0;
    virtual std::string GetLastErrorString() = 0;
    virtual base::Variant GetDocumentProperty(const std::string& name) = 0;
    virtual std::int16_t GetNumberOfSentences() = 0;
    virtual bool MoreSentences() = 0;
    virtual std::string GetNextSentence() = 0;
    virtual std::string GetSentenceText(std::int16_t index) = 0;
    virtual std::int32_t GetNumberofImportantText() = 0;
    virtual std::string GetImportantTextText(std::int16_t index) = 0;
    virtual std::string GetImportantTextType(std::int16_t index) = 0;
    virtual std::int32_t GetNumberofAnnotations() = 0;
    virtual std::string GetAnnotationType(std::int16_t index) = 0;
    virtual std::string GetAnnotationAnchor(std::int16_t index) = 0;
    virtual std::string GetAnnotationText(std::int16_t index) = 0;
    virtual std::int32_t GetNumberofMetaTags() = 0;
    virtual std::string GetMetaTagText(std::int16_t index) = 0;
    virtual std::string GetMetaTagType(std::int16_t index) = 0;
    virtual std::int16_t GetNumberofSubDocuments() = 0;
    virtual std::string GetSubDocumentTempPath(std::int16_t index) = 0;
    virtual std::string GetSubDocumentPath(std::int16_t index) = 0;
};

/// What a document holds, for plug-ins that read it whole.
struct Document {
    struct TypedText {
        std::string text;
        std::string type;
    };
    struct Annotation {
        std::string type;
        std::string anchor;
        std::string text;
    };
    struct SubDocument {
        std::string tempPath;  // a file that the service indexes and then deletes
        std::string path;      // used when there is no such file
        /// Makes that file and gives its path. Called when the service asks for the file, once: a file that
        /// nobody asks for would stay for ever.
        std::function<std::string()> makeFile = nullptr;
    };

    std::map<std::string, base::Variant>
        properties;  // "title", "data_size", "last_time_modified", "source_url", ...
    std::vector<std::string> sentences;
    /// Makes the sentences, where that can wait until they are asked for: the service sets up the document's
    /// record meanwhile. It must not depend on the file any more: what is wrong with a document has to be
    /// known when it is opened. Called once, unless it raises an error.
    std::function<std::vector<std::string>()> makeSentences = nullptr;
    /// Gives the next few sentences, none at the end: the service indexes the first while the others are
    /// made, and is told that their number is unknown. There must not be more of them than maxSentences,
    /// because none are joined. Copies of the document share it.
    std::function<std::vector<std::string>()> nextSentences = nullptr;
    std::vector<TypedText> importantText;
    std::vector<Annotation> annotations;
    std::vector<TypedText> metaTags;
    std::vector<SubDocument> subDocuments;

    /// Makes the sentences that have not been made yet.
    void finish();

    /// Makes the next few sentences. False when there are no more.
    bool makeMore();
};

/// An extractor for formats that are read whole: extract() is all that a plug-in writes.
class DocumentExtractor : public Extractor {
  public:
    bool SetDocumentID(const std::string& path) override;
    std::int32_t GetLastErrorNumber() override;
    std::string GetLastErrorString() override;
    base::Variant GetDocumentProperty(const std::string& name) override;
    std::int16_t GetNumberOfSentences() override;
    bool MoreSentences() override;
    std::string GetNextSentence() override;
    std::string GetSentenceText(std::int16_t index) override;
    std::int32_t GetNumberofImportantText() override;
    std::string GetImportantTextText(std::int16_t index) override;
    std::string GetImportantTextType(std::int16_t index) override;
    std::int32_t GetNumberofAnnotations() override;
    std::string GetAnnotationType(std::int16_t index) override;
    std::string GetAnnotationAnchor(std::int16_t index) override;
    std::string GetAnnotationText(std::int16_t index) override;
    std::int32_t GetNumberofMetaTags() override;
    std::string GetMetaTagText(std::int16_t index) override;
    std::string GetMetaTagType(std::int16_t index) override;
    std::int16_t GetNumberofSubDocuments() override;
    std::string GetSubDocumentTempPath(std::int16_t index) override;
    std::string GetSubDocumentPath(std::int16_t index) override;

  protected:
    /// Reads the document. An ExtractionError makes SetDocumentID answer false and stands in
    /// GetLastErrorNumber and GetLastErrorString. Of more than maxSentences sentences, neighbours are joined.
    virtual Document extract(const std::string& path) = 0;

    /// The contract numbers sentences in 16 bits, important text and annotations after the body included.
    static constexpr std::size_t maxSentences = 30000;

  private:
    /// The sentences, made when they are asked for first.
    std::vector<std::string>& sentences();
    /// The same up to the next one that is read, if there is one.
    std::vector<std::string>& sentencesToRead();
    /// Every call that succeeds leaves no error behind: the service asks after some of them.
    void clearError();

    Document document_;
    std::int32_t errorNumber_ = 0;
    std::string errorText_;
    std::size_t sentencesRead_ = 0;
};

using ExtractorFactory = std::function<std::unique_ptr<Extractor>()>;

/// The plug-in's main: answers the service on standard input and output until the input ends. Whatever the
/// plug-in or its libraries print to standard output goes to standard error instead. Gives the process's exit
/// status.
int runPlugin(int argc, char** argv, const ExtractorFactory& factory);

}  // namespace sdk
