// A DocumentPipeline takes one document through the indexer: plug-in, records, text, commits, sub-documents,
// clean-up. IndexDocument makes one per document; sub-documents and the second try with the default plug-in
// have their own.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "indexer/DocumentJob.h"
#include "indexer/DocumentRecord.h"
#include "indexer/Indexer.h"
#include "indexer/Plugin.h"

namespace indexer {

class DocumentPipeline {
  public:
    DocumentPipeline(Indexer& indexer, const DocumentJob& job, infra::tysDataBase& database);

    /// Errors of the phases are logged and handled here; an error of the commits rises.
    void run();

  private:
    /// How the way to the commits ended.
    enum class Outcome {
        proceed,      // on to the commits
        abandoned,    // left as it is
        notOpened,    // the plug-in refuses the document
        setupFailed,  // its records could not be set up
    };

    Outcome openAndExtractTrapped();
    Outcome openAndExtract();
    void registerTemporaryFile();
    bool isRegisteredForAnother(const std::string& name);
    [[nodiscard]] std::string findPlugin();
    void createPlugin(const std::string& progId);
    Outcome openDocument();
    Outcome readProperties();
    Outcome setUpRecords();
    void extractPhases();

    void indexBody();
    void indexBodySentence(const std::string& text);
    void indexTitleAndPath();
    void indexImportantText();
    void indexAnnotations();
    void indexAnnotation(std::int16_t number);
    void indexMetaTags();
    /// True when the plug-in reports no error; else logs it with the suffix of the phase.
    bool countSucceeded(std::string_view suffix);
    void logPluginError(std::int32_t number, std::string_view suffix, infra::LogLevel level);
    /// Text that comes after the body: it goes on counting after the last body sentence.
    void indexNumbered(const std::string& text, std::int16_t compType, std::string_view type);

    void commit();
    void indexSubDocuments();
    void indexSubDocument(std::int16_t number);
    void close();
    void retryWithDefaultPlugin();
    void endAfterFailedSetup();

    [[nodiscard]] bool isEmail() const { return job_.dataType == emailDataType; }
    void log(const std::string& message, infra::LogLevel level);

    Indexer& indexer_;
    const DocumentJob& job_;
    infra::tysDataBase& database_;
    infra::Services& services_;
    std::unique_ptr<Plugin> plugin_;
    DocumentRecord record_;
    std::string temporaryFileName_;  // of the value that registers the temporary file
    std::int16_t lastSentence_ = 0;
};

}  // namespace indexer
