// The phases in which the pipeline pulls a document's text out of its plug-in.
#include "base/checked.h"
#include "base/text.h"
#include "indexer/AnnotationPoints.h"
#include "indexer/DocumentPipeline.h"
#include "indexer/Heartbeat.h"
#include "indexer/Records.h"
#include "platform/ui.h"

namespace indexer {

using infra::LogLevel;

namespace {

constexpr std::int32_t bodyHeartbeat = 60;
constexpr std::int16_t countUnknown = -1;

/// Every so many sentences the operator's buttons get their turn.
constexpr std::int16_t sentencesPerTurn = 50;

/// Sentences that every committed document has as one blank: title and path point at the first, meta tags at
/// the second.
constexpr std::int16_t titleSentence = 0;
constexpr std::int16_t metaTagSentence = -1;

}  // namespace

void DocumentPipeline::extractPhases() {
    indexBody();
    indexTitleAndPath();
    indexImportantText();
    indexAnnotations();
    indexMetaTags();
}

void DocumentPipeline::indexBody() {
    log("Start Normal", LogLevel::logicPath);
    const std::int16_t count = plugin_->GetNumberOfSentences();
    writeHeartbeat(services_, bodyHeartbeat);
    log("Normal sentences " + std::to_string(count), LogLevel::logicPath);
    if (count == countUnknown) {
        while (plugin_->MoreSentences()) {
            indexBodySentence(plugin_->GetNextSentence());
        }
    } else {
        for (int i = 1; i <= count; ++i) {
            indexBodySentence(plugin_->GetSentenceText(static_cast<std::int16_t>(i)));
        }
    }
}

void DocumentPipeline::indexBodySentence(const std::string& text) {
    lastSentence_ = base::add16(lastSentence_, 1);
    indexer_.indexSentence(text, record_.id, lastSentence_, bodyComponent, "", true, database_);
    if (lastSentence_ % sentencesPerTurn == 0) {
        services_.system.toolkit.processEvents();
    }
}

void DocumentPipeline::indexTitleAndPath() {
    AddImportantText(record_.id, bodyComponent, "title", database_);
    indexer_.indexSentence(record_.title, record_.id, titleSentence, bodyComponent, "title", false,
                           database_);
    if (!isEmail()) {
        AddImportantText(record_.id, bodyComponent, "document_path", database_);
        indexer_.indexSentence(job_.path, record_.id, titleSentence, bodyComponent, "document_path", false,
                               database_);
    }
}

void DocumentPipeline::indexImportantText() {
    log("Start Important", LogLevel::logicPath);
    const std::int32_t count = plugin_->GetNumberofImportantText();
    if (countSucceeded(" (Retrieving Important Text)")) {
        for (std::int32_t i = 1; i <= count; ++i) {
            const std::int16_t index = base::narrow16(i);
            const std::string text = plugin_->GetImportantTextText(index);
            const std::string type = plugin_->GetImportantTextType(index);
            AddImportantText(record_.id, bodyComponent, type, database_);
            indexNumbered(text, bodyComponent, type);
        }
    }
    log("End Important", LogLevel::logicPath);
}

void DocumentPipeline::indexAnnotations() {
    log("Start Anno", LogLevel::logicPath);
    const std::int32_t count = plugin_->GetNumberofAnnotations();
    if (countSucceeded(" (Retrieving Annotations)")) {
        for (std::int32_t i = 1; i <= count; ++i) {
            indexAnnotation(base::narrow16(i));
        }
    }
    log("End Anno", LogLevel::logicPath);
}

void DocumentPipeline::indexAnnotation(std::int16_t number) {
    const std::string type = base::toLower(plugin_->GetAnnotationType(number));
    const std::string anchor = plugin_->GetAnnotationAnchor(number);
    if (type != "comment_anchor" && type != "comment" && type != "general_comment") {
        return;
    }
    const std::string text = plugin_->GetAnnotationText(number);
    AddAnnotationSection(record_.id, annotationComponent, type, number, database_);
    indexNumbered(anchor, annotationComponent, type);
    AddAnnotationSection(record_.id, annotationComponent, type, number, database_);
    indexNumbered(text, annotationComponent, type);
    const auto characters = static_cast<double>(base::length(anchor) + base::length(text));
    // The rules of annotation points are looked up by annotation type here: libraries keep rules of these
    // names.
    ComputeAnnotationPoints(record_.id, type, base::divide(characters, record_.dataSize), database_);
}

void DocumentPipeline::indexMetaTags() {
    log("Start Meta", LogLevel::logicPath);
    const std::int32_t count = plugin_->GetNumberofMetaTags();
    if (countSucceeded(" (Retrieving Meta-tags)")) {
        for (std::int32_t i = 1; i <= count; ++i) {
            const std::int16_t index = base::narrow16(i);
            const std::string text = plugin_->GetMetaTagText(index);
            const std::string type = plugin_->GetMetaTagType(index);
            if (IsNewMetaTag(record_.id, text, database_, job_.idUser)) {
                indexer_.indexSentence(text, record_.id, metaTagSentence, metaTagComponent, type, false,
                                       database_);
                AddMetaTag(record_.id, metaTagComponent, type, text, database_);
            }
        }
    }
    log("End Meta", LogLevel::logicPath);
}

void DocumentPipeline::indexNumbered(const std::string& text, std::int16_t compType, std::string_view type) {
    lastSentence_ = base::add16(lastSentence_, 1);
    indexer_.indexSentence(text, record_.id, lastSentence_, compType, type, true, database_);
}

bool DocumentPipeline::countSucceeded(std::string_view suffix) {
    const std::int32_t error = plugin_->GetLastErrorNumber();
    if (error != 0) {
        logPluginError(error, suffix, LogLevel::errorReport);
    }
    return error == 0;
}

void DocumentPipeline::logPluginError(std::int32_t number, std::string_view suffix, LogLevel level) {
    log("ERROR " + std::to_string(number) + ":" + plugin_->GetLastErrorString() + std::string(suffix), level);
}

}  // namespace indexer
