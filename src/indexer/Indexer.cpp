#include "indexer/Indexer.h"

#include <exception>

#include "base/checked.h"
#include "base/runtime_error.h"
#include "base/text.h"
#include "indexer/DocumentPipeline.h"
#include "indexer/Heartbeat.h"

namespace indexer {

using infra::LogLevel;
using platform::CursorType;
using platform::LockType;
using platform::RootKey;

namespace {

/// Seconds after a sign of life within which the next one is due, outside the pipeline.
constexpr std::int32_t jobHeartbeat = 60;

/// Characters at the end of a path that tell a supervisor which document is in work.
constexpr std::size_t documentKeyLength = 10;

enum IndexType : std::int32_t { indexAsNew = 1, documentHasMoved = 3 };

/// Doubled separators become single ones, but for the two that begin a network path.
std::string normalisePath(const std::string& path) {
    const std::string_view head = base::left(path, 2);
    const std::string rest = base::replaceAll(std::string_view(path).substr(head.size()), R"(\\)", R"(\)");
    return std::string(base::trim(std::string(head) + rest));
}

/// Closes the connection of a job that has failed; one that is gone already does not keep the job from
/// ending.
void closeQuietly(infra::tysDataBase& database) {
    try {
        database.finalise();
    } catch (const std::exception&) {
        return;
    }
}

}  // namespace

Indexer::Indexer(infra::Services& services) : services_(services) {}

bool Indexer::DoIndex(std::int32_t queueId) {
    infra::tysDataBase database(services_);
    try {
        services_.support.WriteLog("Do Index: " + std::to_string(queueId), LogLevel::logicPath);
        database.initialise();
        carryOut(queueId, database);
    } catch (const std::exception&) {
        // Nothing is logged here, and the entry stays claimed until the next start drops it: a document that
        // brings a job down must not do so again and again.
        closeQuietly(database);
        writeJobInWork(services_, 0, {});
        return false;
    }
    database.finalise();
    services_.support.WriteLog("Do index complete", LogLevel::logicPath);
    countForCompaction();
    return true;
}

void Indexer::carryOut(std::int32_t queueId, infra::tysDataBase& database) {
    services_.support.WriteLog("Retrieve from queue", LogLevel::logicPath);
    const auto entry = database.openRecordset(
        "SELECT TOP 1 doc_path, index_type, date_time, data_type, user_id FROM file_index_queue WHERE id = " +
            std::to_string(queueId) + " AND doc_path <> '' AND doc_path <> Null",
        CursorType::fixed, LockType::optimistic);
    if (entry->eof()) {
        throw base::RuntimeError(base::ErrorNumber::noCurrentRecord,
                                 "queue entry " + std::to_string(queueId) + " has no document path");
    }
    DocumentJob job;
    job.path = normalisePath(entry->field("doc_path").toText());
    // Until the plug-in opens the document, some hundred microseconds go by; a disk needs as long to give its
    // beginning. A document that came out of another was written just now, so this is for queue entries
    // alone.
    services_.system.automation.expectReading(job.path);
    writeHeartbeat(services_, jobHeartbeat);
    writeJobInWork(services_, queueId, std::string(base::right(job.path, documentKeyLength)));
    const std::int32_t indexType = entry->field("index_type").toInt32();
    job.createNew = indexType == indexAsNew;
    job.queued = entry->field("date_time").toDate();
    job.dataType = entry->field("data_type").toText();
    job.idUser = entry->field("user_id").toInt32();
    services_.support.WriteLog("Index document: " + job.path, LogLevel::logicPath);
    if (indexType != documentHasMoved || !UpdateIndexForMove(job.path, job.dataType, job.idUser, database)) {
        IndexDocument(job, database);
    }
    services_.support.WriteLog("Finished index", LogLevel::logicPath);
    writeHeartbeat(services_, jobHeartbeat);
    writeJobInWork(services_, 0, {});
    services_.support.WriteLog("Delete from queue", LogLevel::logicPath);
    std::string statement =
        "DELETE * FROM file_index_queue WHERE doc_path = '" + database.sanitise(job.path) + "'";
    if (const std::string other = otherPathForm(job.path); !other.empty()) {
        statement += " OR doc_path = '" + database.sanitise(other) + "'";
    }
    database.getConnection()->execute(statement);
}

std::string Indexer::otherPathForm(const std::string& path) {
    if (base::left(path, 3).ends_with(R"(:\)") && path.find(R"(:\)") == base::left(path, 1).size()) {
        const std::string_view drive = base::left(path, 2);
        return services_.support.getNetworkConnection(path) + path.substr(drive.size());
    }
    return path.starts_with(R"(\\)") ? services_.support.getMappedDrivePath(path) : std::string();
}

void Indexer::countForCompaction() {
    const std::int32_t finished = services_.registry.GetSettingLong(RootKey::currentUser, infra::masterKey,
                                                                    "DocsIndexedSinceCompaction");
    std::int32_t counted = 0;
    try {
        counted = base::add32(finished, 1);
    } catch (const std::exception&) {
        // A count that no supervisor has reset for so long begins anew.
        counted = 0;
    }
    services_.registry.SaveSettingLong(RootKey::currentUser, infra::masterKey, "DocsIndexedSinceCompaction",
                                       counted);
}

void Indexer::IndexDocument(const DocumentJob& job, infra::tysDataBase& database) {
    DocumentPipeline(*this, job, database).run();
}

}  // namespace indexer
