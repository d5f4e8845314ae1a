#include "indexer/DocumentPipeline.h"

#include <array>
#include <cstdio>
#include <exception>

#include "base/runtime_error.h"
#include "indexer/Heartbeat.h"
#include "indexer/NormaliseText.h"
#include "indexer/transactions.h"
#include "platform/process.h"

namespace indexer {

using infra::LogLevel;
using platform::RootKey;

namespace {

/// Seconds within which the next sign of life is due: long before a plug-in opens a document and before a
/// commit.
constexpr std::int32_t longHeartbeat = 120;
constexpr std::int32_t shortHeartbeat = 60;

/// A document that holds itself, as some do by mistake or on purpose, must not bring the service down.
constexpr int deepestNesting = 32;

/// "ddhhnnss"
std::string temporaryFileNameAt(base::DateTime moment) {
    const base::CivilTime c = moment.civil();
    std::array<char, 48> name{};
    std::snprintf(name.data(), name.size(), "%02d%02d%02d%02d", c.day, c.hour, c.minute, c.second);
    return name.data();
}

}  // namespace

DocumentPipeline::DocumentPipeline(Indexer& indexer, const DocumentJob& job, infra::tysDataBase& database)
    : indexer_(indexer), job_(job), database_(database), services_(indexer.services()) {}

void DocumentPipeline::run() {
    const Outcome outcome = openAndExtractTrapped();
    if (outcome == Outcome::setupFailed) {
        endAfterFailedSetup();
    }
    if (outcome == Outcome::notOpened) {
        // No trap here: an error of the second try's commits is the caller's, like that of the first.
        retryWithDefaultPlugin();
    }
    if (outcome != Outcome::proceed) {
        return;
    }
    commit();
    if (plugin_ != nullptr) {
        indexSubDocuments();
    }
    close();
}

DocumentPipeline::Outcome DocumentPipeline::openAndExtractTrapped() {
    try {
        return openAndExtract();
    } catch (const std::exception& error) {
        log(std::string("ERROR Indexing failed - ") + error.what(), LogLevel::errorReport);
        plugin_.reset();
        return Outcome::proceed;
    }
}

DocumentPipeline::Outcome DocumentPipeline::openAndExtract() {
    indexer_.LoadCachesOnce(database_);
    log("Indexer::IndexDocument - Starting: " + job_.path, LogLevel::interest);
    indexer_.ForgetPending();
    if (job_.isTemporaryFile) {
        registerTemporaryFile();
    }
    const bool isSubDocument = !job_.parentPath.empty() && !job_.subDocumentName.empty();
    record_.savedLocation = isSubDocument ? job_.parentPath + "?attach=" + job_.subDocumentName : job_.path;
    const std::string progId = findPlugin();
    if (progId == "NULL") {
        log("NULL Plugin specified abandoning indexing for this document.", LogLevel::logicPath);
        return Outcome::abandoned;
    }
    if (progId.empty()) {
        return Outcome::abandoned;
    }
    createPlugin(progId);
    for (const auto step : {&DocumentPipeline::openDocument, &DocumentPipeline::readProperties,
                            &DocumentPipeline::setUpRecords}) {
        if (const Outcome outcome = (this->*step)(); outcome != Outcome::proceed) {
            return outcome;
        }
    }
    extractPhases();
    return Outcome::proceed;
}

void DocumentPipeline::registerTemporaryFile() {
    base::DateTime moment = services_.system.clock.now();
    temporaryFileName_ = temporaryFileNameAt(moment);
    // Several files within a second must not push each other out of the register.
    while (isRegisteredForAnother(temporaryFileName_)) {
        moment = base::DateTime::fromSeconds(moment.seconds() + 1);
        temporaryFileName_ = temporaryFileNameAt(moment);
    }
    services_.registry.SaveSettingString(RootKey::currentUser, infra::temporaryFilesKey, temporaryFileName_,
                                         job_.path);
}

bool DocumentPipeline::isRegisteredForAnother(const std::string& name) {
    const std::string path =
        services_.registry.GetSettingString(RootKey::currentUser, infra::temporaryFilesKey, name);
    return !path.empty() && path != job_.path;
}

std::string DocumentPipeline::findPlugin() {
    const auto pluginOf = [this](const std::string& dataType) {
        return services_.registry.GetSettingString(
            RootKey::currentUser, std::string(infra::dataTypesKey) + dataType, "IndexPlugin");
    };
    std::string progId;
    if (!job_.useDefaultPlugin) {
        progId = pluginOf(job_.dataType);
    }
    return progId.empty() ? pluginOf("Default") : progId;
}

void DocumentPipeline::createPlugin(const std::string& progId) {
    log("Attempting to create plugin: " + progId, LogLevel::logicPath);
    plugin_ = std::make_unique<Plugin>(services_.system.automation.create(progId));
    log("Created plugin: " + progId, LogLevel::logicPath);
    writeHeartbeat(services_, longHeartbeat);
}

DocumentPipeline::Outcome DocumentPipeline::openDocument() {
    try {
        if (plugin_->SetDocumentID(job_.path)) {
            writeHeartbeat(services_, shortHeartbeat);
            log("Document Opened", LogLevel::logicPath);
            return Outcome::proceed;
        }
        logPluginError(plugin_->GetLastErrorNumber(), {}, LogLevel::errorReport);
    } catch (const std::exception& error) {
        log(std::string("Indexer::IndexDocument - SetDocumentID failed. - ") + error.what(),
            LogLevel::errorReport);
    }
    plugin_.reset();
    return Outcome::notOpened;
}

DocumentPipeline::Outcome DocumentPipeline::readProperties() {
    const base::Variant sourceUrl = plugin_->GetDocumentProperty("source_url");
    if (const std::int32_t error = plugin_->GetLastErrorNumber(); error != 0) {
        logPluginError(error, {}, LogLevel::unknown);
        plugin_.reset();
        return Outcome::notOpened;
    }
    record_.sourceUrl = propertyText(sourceUrl);
    if (record_.sourceUrl.empty()) {
        record_.sourceUrl = job_.path;
    }
    const base::Variant dataSize = plugin_->GetDocumentProperty("data_size");
    record_.dataSize = dataSize.isNumeric() ? dataSize.toInt32() : 0;
    record_.title = propertyText(plugin_->GetDocumentProperty("title"));
    return Outcome::proceed;
}

DocumentPipeline::Outcome DocumentPipeline::setUpRecords() {
    log("Document Setup", LogLevel::logicPath);
    makeSubDocumentTitle(record_, job_, database_);
    try {
        setUpDocumentRecord(record_, job_, *plugin_, database_);
        return Outcome::proceed;
    } catch (const std::exception& error) {
        log(std::string("ERROR Document Setup failed - ") + error.what(), LogLevel::errorReport);
    }
    rollBackQuietly(database_);
    log("Transaction rolled back", LogLevel::errorReport);
    plugin_.reset();
    return Outcome::setupFailed;
}

void DocumentPipeline::endAfterFailedSetup() {
    try {
        if (!isEmail()) {
            retryWithDefaultPlugin();
        }
    } catch (const std::exception& error) {
        log(std::string("ERROR Indexing failed - ") + error.what(), LogLevel::errorReport);
    }
    // Deliberately hard, whatever the second try gave: a library whose records cannot be set up is left to
    // the supervisor, which starts the service with a fresh connection and fresh caches.
    services_.system.process.endProcess(platform::ExitStatus::setupFailed);
}

void DocumentPipeline::retryWithDefaultPlugin() {
    if (job_.useDefaultPlugin) {
        return;
    }
    DocumentJob secondTry = job_;
    secondTry.useDefaultPlugin = true;
    secondTry.createNew = false;
    indexer_.IndexDocument(secondTry, database_);
}

void DocumentPipeline::commit() {
    writeHeartbeat(services_, longHeartbeat);
    log("Commit Words", LogLevel::logicPath);
    // Without a document record nothing has been collected that could be written, and no row may stand for
    // it.
    const bool hasRecord = record_.id > 0;
    if (hasRecord) {
        indexer_.CommitWords(record_.id, database_);
    }
    log("End Commit Words", LogLevel::logicPath);
    writeHeartbeat(services_, longHeartbeat);
    log("Commit sentences", LogLevel::logicPath);
    const auto storeContext =
        services_.registry.GetSettingLong(RootKey::currentUser, infra::serviceKey, "StoreContext", 1);
    if (hasRecord && storeContext != 0) {
        indexer_.CommitSentences(record_.id, database_);
    }
    log("End Commit Sentences", LogLevel::logicPath);
}

void DocumentPipeline::indexSubDocuments() {
    std::int16_t count = 0;
    try {
        const bool attachmentsAreOff =
            isEmail() && services_.registry.GetSettingLong(RootKey::currentUser, infra::indexerKey,
                                                           "IndexEmailAttachments", 1) == 0;
        count = attachmentsAreOff ? std::int16_t{0} : plugin_->GetNumberofSubDocuments();
    } catch (const std::exception& error) {
        log(std::string("ERROR Indexing failed - ") + error.what(), LogLevel::errorReport);
    }
    for (int number = 1; number <= count; ++number) {
        try {
            indexSubDocument(static_cast<std::int16_t>(number));
        } catch (const std::exception& error) {
            log("Failed to index sub-document " + std::to_string(number) + " - " + error.what(),
                LogLevel::errorReport);
        }
    }
}

void DocumentPipeline::indexSubDocument(std::int16_t number) {
    if (job_.depth == deepestNesting) {
        throw base::RuntimeError(
            base::ErrorNumber::automationError,
            "sub-documents are nested more than " + std::to_string(deepestNesting) + " deep");
    }
    const std::string temporaryPath = plugin_->GetSubDocumentTempPath(number);
    log("Indexer::IndexDocument - Sub Doc: " + temporaryPath, LogLevel::logicPath);
    DocumentJob sub = job_;
    sub.isTemporaryFile = !temporaryPath.empty();
    sub.path = sub.isTemporaryFile ? temporaryPath : plugin_->GetSubDocumentPath(number);
    sub.dataType = GetExtension(sub.path);
    sub.idParent = record_.id;
    sub.parentPath = job_.path;
    sub.subDocumentName = std::to_string(number);
    sub.useDefaultPlugin = false;
    sub.depth = job_.depth + 1;
    indexer_.IndexDocument(sub, database_);
}

void DocumentPipeline::close() {
    if (plugin_ != nullptr) {
        log("Close plugin", LogLevel::logicPath);
        plugin_.reset();
    }
    if (job_.isTemporaryFile) {
        try {
            services_.system.files.deleteFile(job_.path);
            services_.registry.DeleteValue(RootKey::currentUser, infra::temporaryFilesKey,
                                           temporaryFileName_);
        } catch (const std::exception&) {
            // The register keeps the file's name, so that the next start of the service tries again.
            log("Indexer.IndexDocument - Could not delete temp file: " + job_.path, LogLevel::unknown);
        }
    }
    log("Indexer::IndexDocument - Completed: " + job_.path, LogLevel::interest);
}

void DocumentPipeline::log(const std::string& message, LogLevel level) {
    services_.support.WriteLog(message, level);
}

}  // namespace indexer
