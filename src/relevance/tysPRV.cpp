#include "relevance/tysPRV.h"

#include <cmath>
#include <memory>
#include <string>

#include "base/checked.h"
#include "base/runtime_error.h"
#include "platform/clock.h"

namespace relevance {
namespace {

/// What one use of a search term is worth at the moment of the use.
constexpr double pointsPerUse = 10;

/// `id_annotation` of a share without an annotation.
constexpr std::int32_t noAnnotation = -1;

infra::tysDataBase& set(infra::tysDataBase* dataSource) {
    if (dataSource == nullptr) {
        throw base::RuntimeError(base::ErrorNumber::objectNotSet,
                                 "tysPRV has no data source; call setDataSource first");
    }
    return *dataSource;
}

std::unique_ptr<platform::Recordset> openQuery(infra::tysDataBase& database, const std::string& statement) {
    return database.openRecordset(statement, platform::CursorType::fixed, platform::LockType::optimistic);
}

base::DateTime presentMoment(infra::tysDataBase& database) {
    return database.services().system.clock.now();
}

/// Midnights between two moments. The times of day do not count: a minute may be a day.
std::int32_t calendarDays(base::DateTime from, base::DateTime to) {
    return base::narrow32(to.dayNumber() - from.dayNumber());
}

/// Raises "Overflow" for a value without a number: one that grows, with a negative half-life or between uses
/// that are out of order, can outgrow them all.
double decayed(double value, std::int32_t days, std::int32_t halfLife) {
    const std::int32_t exponent = -days;
    const double result =
        value * std::pow(2.0, static_cast<double>(exponent) / static_cast<double>(halfLife));
    if (!std::isfinite(result)) {
        throw base::RuntimeError(base::ErrorNumber::overflow, "Overflow");
    }
    return result;
}

/// `decay_halflife` of the first row, 0 without a row.
std::int32_t readHalfLife(infra::tysDataBase& database, const std::string& statement) {
    const auto rules = openQuery(database, statement);
    return rules->eof() ? 0 : rules->field("decay_halflife").toInt32();
}

/// The half-life of the document's data type. 'zzzzDef' sorts behind every data type, so that a data type's
/// own row comes first. A document without a data type has the default half-life, no document has none.
std::int32_t documentHalfLife(infra::tysDataBase& database, std::int32_t iDocID) {
    std::string dataType;
    {
        const auto document =
            openQuery(database, "SELECT data_type FROM document_object WHERE document_object.id = " +
                                    std::to_string(iDocID));
        if (document->eof()) {
            return 0;
        }
        const base::Variant stored = document->field("data_type");
        dataType = stored.isNull() ? std::string() : stored.toText();
    }
    return readHalfLife(database, "SELECT decay_halflife FROM prv_rules WHERE data_type = '" +
                                      database.sanitise(dataType) +
                                      "' OR data_type = 'zzzzDef' ORDER BY data_type ASC");
}

std::int32_t annotationPoints(infra::tysDataBase& database, const base::Variant& idAnnotation) {
    if (idAnnotation.isNull() || idAnnotation.toInt32() == noAnnotation) {
        return 0;
    }
    const auto annotation =
        openQuery(database, "SELECT points FROM annotation WHERE id = " + idAnnotation.toText());
    return annotation->eof() ? 0 : annotation->field("points").toInt32();
}

/// What a share's records say about its relevance.
struct ShareValue {
    std::int32_t value = 0;
    base::DateTime lastChange;
    bool isFixed = false;
};

ShareValue readShareValue(infra::tysDataBase& database, std::int32_t iDocID, std::int32_t iUserID,
                          bool bCountAnnotationPoints, base::DateTime now) {
    const auto share = openQuery(
        database,
        "SELECT prv.last_prv, prv.last_modified, prv.hard_prv, document_share.id_annotation FROM "
        "document_share INNER JOIN prv ON document_share.id_prv = prv.id WHERE (((document_share.id_user)=" +
            std::to_string(iUserID) + ") AND ((document_share.id_document)=" + std::to_string(iDocID) + "))");
    if (share->eof()) {
        return {0, now, false};
    }
    ShareValue result;
    const std::int32_t points =
        bCountAnnotationPoints ? annotationPoints(database, share->field("id_annotation")) : 0;
    result.value = base::round32(share->field("last_prv").toDouble() + points);
    result.lastChange = share->field("last_modified").toDate();
    const base::Variant hardValue = share->field("hard_prv");
    if (!hardValue.isNull() && !hardValue.toText().empty()) {
        // The fixed value itself is not what readers get: it only says that last_prv stays as it is. It must
        // be a number all the same.
        static_cast<void>(hardValue.toInt32());
        result.isFixed = true;
    }
    return result;
}

}  // namespace

void tysPRV::setDataSource(infra::tysDataBase& dataSource) {
    dataSource_ = &dataSource;
}

base::Variant tysPRV::decayPRV(std::int32_t iDocID, std::int32_t iUserID, const base::Variant& /*dLastMod*/,
                               bool bCountAnnotationPoints) {
    infra::tysDataBase& database = set(dataSource_);
    const base::DateTime now = presentMoment(database);
    const ShareValue share = readShareValue(database, iDocID, iUserID, bCountAnnotationPoints, now);
    const std::int32_t days = calendarDays(share.lastChange, now);
    std::int32_t halfLife = 0;
    if (!share.isFixed && days >= 1) {
        halfLife = documentHalfLife(database, iDocID);
    }
    if (halfLife != 0) {
        return decayed(share.value, days, halfLife);
    }
    return share.value;
}

base::Variant tysPRV::getPRV(std::int32_t iDocID, std::int32_t iUserID, const base::Variant& dLastMod,
                             bool bCountAnnotationPoints) {
    return decayPRV(iDocID, iUserID, dLastMod, bCountAnnotationPoints);
}

double tysPRV::getSearchPRV(std::int32_t iSearchID, base::DateTime dDecayTo) {
    infra::tysDataBase& database = set(dataSource_);
    const std::int32_t halfLife =
        readHalfLife(database, "SELECT decay_halflife FROM prv_rules WHERE data_type = 'zzzzDef'");
    const auto uses = openQuery(
        database,
        "SELECT time_stamp FROM search_term_history WHERE id_search_term = " + std::to_string(iSearchID) +
            " AND time_stamp < '" + dDecayTo.text() + "' ORDER BY id ASC");
    double value = 0;
    base::DateTime previousUse;
    const auto decayUntil = [&](base::DateTime moment) {
        // Nothing stays nothing; the way from the zero date to the first use need not be computed.
        if (halfLife != 0 && value != 0) {
            value = decayed(value, calendarDays(previousUse, moment), halfLife);
        }
        previousUse = moment;
    };
    for (; !uses->eof(); uses->moveNext()) {
        decayUntil(uses->field("time_stamp").toDate());
        value += pointsPerUse;
    }
    decayUntil(dDecayTo);
    return value;
}

void tysPRV::changePRV(std::int32_t iDocID, std::int32_t iUserID, const base::Variant& iValue,
                       std::string_view sComment) {
    infra::tysDataBase& database = set(dataSource_);
    const auto share = openQuery(
        database, "SELECT id_prv FROM document_share WHERE document_share.id_document = " +
                      std::to_string(iDocID) + " AND document_share.id_user = " + std::to_string(iUserID));
    if (share->eof()) {
        return;
    }
    const std::int32_t idPrv = share->field("id_prv").toInt32();
    const double current = getPRV(iDocID, iUserID, base::Variant(), false).toDouble();
    const std::int32_t newValue = base::round32(current + iValue.toDouble());
    database.getConnection()->execute("UPDATE prv SET last_prv = " + std::to_string(newValue) +
                                      ", last_modified = '" + presentMoment(database).text() +
                                      "' WHERE id = " + std::to_string(idPrv));
    addPRVHistoryEvent(idPrv, sComment, newValue);
}

void tysPRV::addPRVHistoryEvent(std::int32_t iPRVid, std::string_view sDescription,
                                const base::Variant& iPRVvalue) {
    infra::tysDataBase& database = set(dataSource_);
    const std::string columns = "id_prv, time_stamp, action_description, prv_value";
    const std::string values = std::to_string(iPRVid) + ", '" + presentMoment(database).text() + "', '" +
                               std::string(sDescription) + "', " + iPRVvalue.toText();
    database.getConnection()->execute("INSERT INTO prv_history (" + columns + " ) VALUES (" + values + " ) ");
}

std::int32_t tysPRV::createPRV(std::string_view sDataType) {
    infra::tysDataBase& database = set(dataSource_);
    const std::string dataType(sDataType);
    const auto rules = openQuery(database, "SELECT creation_prv FROM prv_rules WHERE data_type = '" +
                                               database.sanitise(dataType) +
                                               "' OR data_type = 'zzzzDef' ORDER BY data_type ASC");
    if (rules->eof()) {
        throw base::RuntimeError(base::ErrorNumber::noCurrentRecord,
                                 "tysPRV.createPRV: prv_rules has no row for the data type '" + dataType +
                                     "' and no default row 'zzzzDef'; add one of them");
    }
    const base::Variant creationValue = rules->field("creation_prv");
    database.getConnection()->execute("INSERT INTO prv (last_prv, last_doc_usage ) VALUES (" +
                                      creationValue.toText() + ", '" + presentMoment(database).text() +
                                      "' ) ");
    const std::int32_t idPrv =
        openQuery(database, "SELECT @@IDENTITY AS id_prv FROM prv")->field("id_prv").toInt32();
    addPRVHistoryEvent(idPrv, "Document Created", creationValue);
    return idPrv;
}

base::Variant tysPRV::decayPRVFromDate(std::int32_t iDocID, const base::Variant& iLastKnownPRV,
                                       base::DateTime dLastKnownDate, base::DateTime dDecayTo) {
    const std::int32_t days = calendarDays(dLastKnownDate, dDecayTo);
    std::int32_t halfLife = 0;
    if (days > 0) {
        halfLife = documentHalfLife(set(dataSource_), iDocID);
    }
    if (halfLife != 0) {
        return decayed(iLastKnownPRV.toDouble(), days, halfLife);
    }
    return iLastKnownPRV;
}

}  // namespace relevance
