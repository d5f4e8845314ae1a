#include "relevance/tysDocument.h"

#include <exception>
#include <string>

#include "platform/clock.h"

namespace relevance {
namespace {

constexpr std::size_t longestTitle = 250;
/// Data types are three-letter codes; a longer one is cut, not refused.
constexpr std::size_t longestDataType = 3;

/// A list of columns and the list of their values, growing side by side.
class InsertLists {
  public:
    void add(std::string_view columnPiece, const std::string& valuePiece) {
        columns_ += columnPiece;
        values_ += valuePiece;
    }

    [[nodiscard]] std::string statement(std::string_view table) const {
        return "INSERT INTO " + std::string(table) + " (" + columns_ + " ) VALUES (" + values_ + " ) ";
    }

  private:
    std::string columns_;
    std::string values_;
};

}  // namespace

base::Variant createDocument(std::string_view sourceUrl, std::string_view title, base::DateTime& documentDate,
                             std::string_view dataType, std::string_view savedLocation, std::int32_t dataSize,
                             bool snapshot, std::int32_t idParent, std::int32_t idOwningUser,
                             infra::tysDataBase& database) {
    infra::Services& services = database.services();
    try {
        InsertLists lists;
        lists.add("source_url", "'" + database.sanitise(sourceUrl) + "'");
        lists.add(",first_saved", ",'" + services.system.clock.now().longText() + "'");
        lists.add(", title", ", '" + database.sanitiseToLength(title, longestTitle) + "'");
        lists.add(", data_type", ", '" + database.sanitiseToLength(dataType, longestDataType) + "'");
        lists.add(", saved_location", ", '" + database.sanitise(savedLocation) + "'");
        lists.add(", data_size", ", " + std::to_string(dataSize));
        lists.add(", snapshot", snapshot ? ", true" : ", false");
        if (documentDate.isZero()) {
            services.support.WriteLog("tysDocument.createDocument - 0 time_stamp, reset.",
                                      infra::LogLevel::logicPath);
            documentDate = services.system.clock.now();
        }
        lists.add(", time_stamp", ", '" + documentDate.longText() + "'");
        lists.add(", id_parent", ", " + std::to_string(idParent));
        lists.add(", id_owning_user", ", " + std::to_string(idOwningUser));

        const auto connection = database.getConnection();
        connection->execute(lists.statement("document_object"));
        const auto key = connection->query("SELECT @@IDENTITY AS id_document FROM document_object");
        const std::int32_t idDocument = key->field("id_document").toInt32();
        key->close();
        return idDocument;
    } catch (const std::exception& error) {
        services.support.WriteLog("tysDocument.createDocument - " + std::string(error.what()),
                                  infra::LogLevel::errorReport);
        return {};
    }
}

void createDocumentShare(std::int32_t idDocument, std::int32_t idUser, std::int32_t idPrv,
                         infra::tysDataBase& database) {
    InsertLists lists;
    lists.add("id_document", std::to_string(idDocument));
    lists.add(", id_user", ", " + std::to_string(idUser));
    lists.add(", id_prv", ", " + std::to_string(idPrv));
    database.getConnection()->execute(lists.statement("document_share"));
}

}  // namespace relevance
