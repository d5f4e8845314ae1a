#include "indexer/DocumentRecord.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "base/runtime_error.h"
#include "base/text.h"
#include "indexer/transactions.h"
#include "relevance/tysDocument.h"
#include "relevance/tysPRV.h"

namespace indexer {

using infra::LogLevel;
using platform::CursorType;
using platform::LockType;

namespace {

/// Temporary files are named by 14 digits of time, then the name that the sub-document has within its parent.
constexpr std::size_t timePrefixLength = 14;

constexpr std::size_t longestTitle = 250;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// The byte behind the last separator of a path, or nothing when it has none. Paths are written with "\" in
/// the library; temporary files have the system's own separator.
std::optional<std::size_t> nameStart(const std::string& path) {
    std::size_t separator = path.rfind('\\');
    if (separator == std::string::npos && std::filesystem::path::preferred_separator == '/') {
        separator = path.rfind('/');
    }
    return separator == std::string::npos ? std::nullopt : std::optional(separator + 1);
}

std::string titleFromFileName(const std::string& name) {
    std::string title = name.substr(0, name.rfind('.'));
    // A prefix is told by its two ends alone.
    const std::string_view prefix = base::left(title, timePrefixLength);
    if (base::length(title) > timePrefixLength && isDigit(prefix.front()) && isDigit(prefix.back())) {
        title.erase(0, prefix.size());
    }
    return title;
}

/// The document's own date, when the plug-in knows it.
std::optional<base::DateTime> modificationDate(Plugin& plugin) {
    const base::Variant date = plugin.GetDocumentProperty("last_time_modified");
    return date.isDate() ? std::optional(date.toDate()) : std::nullopt;
}

/// One document's setup: what its steps share.
class Setup {
  public:
    Setup(DocumentRecord& record, const DocumentJob& job, Plugin& plugin, infra::tysDataBase& database)
        : record_(record), job_(job), plugin_(plugin), database_(database), services_(database.services()) {}

    void run() {
        beginTransaction(database_, LogLevel::unknown);
        record_.id = -1;
        const bool foundExisting = !job_.createNew && findExisting();
        if (foundExisting && record_.id > 0) {
            purge();
            refresh();
        } else {
            create();
        }
        database_.getConnection()->commitTrans();
    }

  private:
    void execute(const std::string& statement) { database_.getConnection()->execute(statement); }

    [[nodiscard]] std::string savedLocation() const { return database_.sanitise(record_.savedLocation); }
    [[nodiscard]] std::string nowText() const { return services_.system.clock.now().text(); }

    bool findExisting() {
        const auto rows =
            database_.openRecordset("SELECT id, source_url FROM document_object WHERE  saved_location = '" +
                                        savedLocation() + "' AND location_invalid = FALSE",
                                    CursorType::fixed, LockType::optimistic);
        bool found = false;
        for (; !found && !rows->eof(); rows->moveNext()) {
            const std::int32_t id = rows->field("id").toInt32();
            const base::Variant sourceUrl = rows->field("source_url");
            if (!sourceUrl.isNull() && sourceUrl.toText() == record_.sourceUrl) {
                record_.id = id;
                found = true;
            } else {
                execute("UPDATE document_object SET location_invalid = TRUE, location_invalid_date = '" +
                        nowText() + "' WHERE id = " + std::to_string(id));
            }
        }
        rows->close();
        return found;
    }

    /// What users and other programs have added stays: their words and comments, their tags and counter-tags.
    void purge() {
        const std::string id = std::to_string(record_.id);
        const std::string idUser = std::to_string(job_.idUser);
        execute("DELETE * FROM ascii_sentences WHERE id_document_object = " + id);
        execute("DELETE * FROM word_index WHERE id_document_object = " + id +
                " AND ( word_index.comp_type <> 4 OR word_index.type NOT IN"
                " (SELECT type FROM search_weight WHERE  description = 'user'))"
                " AND ( word_index.comp_type <> 3 OR word_index.type NOT IN"
                " (SELECT type FROM search_weight WHERE  description = 'external_comment'))");
        execute("DELETE * FROM important_text WHERE id_document = " + id);
        // Compares the key of a share with that of a document: sections stay unless the two happen to be
        // equal. Programs that read annotations count on what this leaves.
        execute(
            "DELETE * FROM annotation_section WHERE id_document_share in  (select id_document from "
            "document_share "
            "  where id_document=" +
            id + " and id_user=" + idUser + ")");
        execute(
            "DELETE * FROM meta_tags WHERE id_document_share IN  (SELECT id FROM document_share WHERE "
            "id_document=" +
            id + " AND id_user=" + idUser +
            ") AND type NOT IN ( SELECT type FROM search_weight WHERE comp_type = 4"
            " AND (description = 'user' OR description = 'anti') )");
    }

    void refresh() {
        const std::string id = std::to_string(record_.id);
        const base::DateTime date = modificationDate(plugin_).value_or(services_.system.clock.now());
        const bool titleIsUserSet = keepUserTitle(id);
        std::string statement = "UPDATE document_object SET";
        if (!titleIsUserSet) {
            statement += " title = '" + database_.sanitiseToLength(record_.title, longestTitle) + "', ";
        }
        statement +=
            " data_size = " + std::to_string(record_.dataSize) + ", time_stamp = '" + date.longText() + "'";
        if (job_.useDefaultPlugin) {
            statement += ", flag_indexing_failed = TRUE";
        }
        execute(statement + " WHERE id = " + id);
    }

    /// True when the user has chosen the title; it is then the one that is indexed.
    bool keepUserTitle(const std::string& id) {
        const auto row =
            database_.openRecordset("SELECT flag_user_set_title, title FROM document_object WHERE id = " + id,
                                    CursorType::fixed, LockType::optimistic);
        bool isUserSet = false;
        if (!row->eof()) {
            const base::Variant flag = row->field("flag_user_set_title");
            isUserSet = !flag.isNull() && flag.toBool();
            if (isUserSet) {
                record_.title = propertyText(row->field("title"));
            }
        }
        row->close();
        return isUserSet;
    }

    void create() {
        log("CD: Doc Setup - Start");
        // A date that is not known stays zero; the record's creation replaces it and says so in the log.
        base::DateTime date = modificationDate(plugin_).value_or(base::DateTime());
        log("CD: Doc Setup - Date");
        execute("UPDATE document_object SET location_invalid = TRUE, location_invalid_date = '" + nowText() +
                "' WHERE saved_location = '" + savedLocation() + "'");
        log("CD: Doc Setup - Purged previous instances");
        log("CD: Doc Setup - (creating) " + record_.sourceUrl + "~" + record_.title + "~" + date.text() +
            "~" + job_.dataType + "~" + record_.savedLocation + "~" + std::to_string(record_.dataSize) +
            "~False~" + std::to_string(job_.idParent) + "~" + std::to_string(job_.idUser));
        constexpr bool snapshot = false;
        const base::Variant id = relevance::createDocument(
            record_.sourceUrl, record_.title, date, job_.dataType, record_.savedLocation, record_.dataSize,
            snapshot, job_.idParent, job_.idUser, database_);
        if (id.isEmpty()) {
            throw base::RuntimeError(base::ErrorNumber::databaseError,
                                     "Document record could not be created");
        }
        record_.id = id.toInt32();
        log("CD: Doc Setup - Document Created");
        relevance::tysPRV prv;
        prv.setDataSource(database_);
        const std::int32_t idPrv = prv.createPRV(job_.dataType);
        relevance::createDocumentShare(record_.id, job_.idUser, idPrv, database_);
        log("CD: Doc Setup - Created PRV and Doc Share");
        if (job_.useDefaultPlugin) {
            execute("UPDATE document_object SET flag_indexing_failed = TRUE WHERE id = " +
                    std::to_string(record_.id));
        }
    }

    void log(const std::string& message) { services_.support.WriteLog(message, LogLevel::logicPath); }

    DocumentRecord& record_;
    const DocumentJob& job_;
    Plugin& plugin_;
    infra::tysDataBase& database_;
    infra::Services& services_;
};

}  // namespace

void makeSubDocumentTitle(DocumentRecord& record, const DocumentJob& job, infra::tysDataBase& database) {
    if (record.title.empty() && !job.parentPath.empty() && !job.subDocumentName.empty()) {
        const auto start = nameStart(job.path);
        record.title =
            start ? titleFromFileName(job.path.substr(*start)) : "Attachment: " + job.subDocumentName;
    }
    if (!job.parentPath.empty()) {
        const auto parent =
            database.openRecordset("SELECT title FROM document_object WHERE saved_location = '" +
                                       database.sanitise(job.parentPath) + "' AND location_invalid = false",
                                   CursorType::fixed, LockType::optimistic);
        if (!parent->eof()) {
            record.title = propertyText(parent->field("title")) + " - " + record.title;
        }
        parent->close();
    }
}

void setUpDocumentRecord(DocumentRecord& record, const DocumentJob& job, Plugin& plugin,
                         infra::tysDataBase& database) {
    Setup(record, job, plugin, database).run();
}

}  // namespace indexer
