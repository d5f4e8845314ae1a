// A document that has moved keeps its words and text; only the words of its path change.
#include <exception>
#include <memory>

#include "base/object_ref.h"
#include "indexer/Indexer.h"
#include "indexer/Plugin.h"
#include "indexer/Records.h"

namespace indexer {

using infra::LogLevel;
using platform::CursorType;
using platform::LockType;
using platform::RootKey;

namespace {

constexpr std::int16_t pathSentence = 0;  // the blank sentence that every committed document has
constexpr const char* pathType = "document_path";

/// What the plug-in of a message tells of its place.
struct MessagePlace {
    std::string sourceUrl;
    std::string documentPath;
};

class PathUpdate {
  public:
    PathUpdate(Indexer& indexer, const std::string& location, const std::string& dataType,
               infra::tysDataBase& database)
        : indexer_(indexer),
          location_(location),
          dataType_(dataType),
          database_(database),
          services_(indexer.services()) {}

    /// False when a statement failed.
    bool run();

  private:
    /// Runs a statement, and once more when it fails. Each failure is logged; the second one rises.
    template <class Statement>
    auto twice(Statement statement) {
        try {
            return statement();
        } catch (const std::exception& error) {
            logFailure(error);
        }
        try {
            return statement();
        } catch (const std::exception& error) {
            logFailure(error);
            throw;
        }
    }

    void logFailure(const std::exception& error) {
        services_.support.WriteLog(std::string("Update index for Move: ") + error.what(),
                                   LogLevel::errorReport);
    }

    std::unique_ptr<platform::Recordset> openRecord() {
        return database_.openRecordset("SELECT id FROM document_object WHERE  saved_location = '" +
                                           database_.sanitise(location_) + "' AND location_invalid = FALSE",
                                       CursorType::fixed, LockType::optimistic);
    }

    /// Not tried again: rows that have been read do not change.
    void readId(platform::Recordset& rows) {
        try {
            idDocument_ = rows.field("id").toInt32();
        } catch (const std::exception& error) {
            logFailure(error);
            throw;
        }
    }

    void deletePathWords() {
        database_.getConnection()->execute(
            "DELETE * FROM word_index WHERE id_document_object = " + std::to_string(idDocument_) +
            " AND comp_type = 2 AND type = (SELECT type FROM search_weight WHERE"
            " description = 'document_path')");
    }

    void deletePathText() {
        database_.getConnection()->execute(
            "DELETE * FROM important_text WHERE id_document = " + std::to_string(idDocument_) +
            " AND type = (SELECT type FROM search_weight WHERE"
            " description = 'document_path')");
    }

    void indexPath() {
        if (dataType_ != emailDataType) {
            indexAsPath(location_);
            return;
        }
        const MessagePlace place = askPlugin();
        indexAsPath(place.documentPath);
        twice([&] {
            // The address goes in as the plug-in gives it, quotes included: one with a quote fails here, and
            // the document is indexed anew.
            database_.getConnection()->execute("UPDATE document_object SET source_url = '" + place.sourceUrl +
                                               "' WHERE id = " + std::to_string(idDocument_));
        });
    }

    void indexAsPath(const std::string& path) {
        twice([&] { AddImportantText(idDocument_, bodyComponent, pathType, database_); });
        twice([&] {
            indexer_.indexSentence(path, idDocument_, pathSentence, bodyComponent, pathType, false,
                                   database_);
        });
    }

    MessagePlace askPlugin() {
        const std::string progId = services_.registry.GetSettingString(
            RootKey::currentUser, std::string(infra::dataTypesKey) + dataType_, "IndexPlugin");
        base::ObjectRef<Plugin> plugin;
        if (!progId.empty()) {
            services_.support.WriteLog("Attempting to create plugin: " + progId, LogLevel::logicPath);
            plugin = base::ObjectRef<Plugin>(
                twice([&] { return std::make_shared<Plugin>(services_.system.automation.create(progId)); }));
            services_.support.WriteLog("Created plugin: " + progId, LogLevel::logicPath);
        }
        MessagePlace place;
        if (twice([&] { return plugin->SetDocumentID(idDocument_); })) {
            place.sourceUrl = propertyText(twice([&] { return plugin->GetDocumentProperty("source_url"); }));
            place.documentPath =
                propertyText(twice([&] { return plugin->GetDocumentProperty("document_path"); }));
        }
        return place;
    }

    Indexer& indexer_;
    const std::string& location_;
    const std::string& dataType_;
    infra::tysDataBase& database_;
    infra::Services& services_;
    std::int32_t idDocument_ = -1;
};

bool PathUpdate::run() {
    try {
        twice([&] { indexer_.LoadCaches(database_); });
        const auto rows = twice([&] { return openRecord(); });
        readId(*rows);
        twice([&] { deletePathWords(); });
        twice([&] { deletePathText(); });
        indexPath();
        twice([&] { indexer_.CommitWords(idDocument_, database_); });
        if (services_.registry.GetSettingLong(RootKey::currentUser, infra::serviceKey, "StoreContext", 1) !=
            0) {
            twice([&] { indexer_.CommitSentences(idDocument_, database_); });
        }
        return true;
    } catch (const std::exception&) {
        // Logged where it happened; the caller indexes the document anew.
        return false;
    }
}

}  // namespace

bool Indexer::UpdateIndexForMove(const std::string& location, const std::string& dataType,
                                 std::int32_t /*idUser*/, infra::tysDataBase& database) {
    ForgetPending();
    return PathUpdate(*this, location, dataType, database).run();
}

}  // namespace indexer
