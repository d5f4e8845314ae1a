#include "indexer/AnnotationPoints.h"

#include <cmath>

#include "base/checked.h"
#include "base/runtime_error.h"

namespace indexer {

using platform::CursorType;
using platform::LockType;

namespace {

/// Score and cap of each annotation type of the document, by the data type's own rules, or by the default
/// ones when its own match none of the document's types.
std::string scoreQuery(std::int32_t idDocument, const std::string& dataType) {
    const std::string id = std::to_string(idDocument);
    return "SELECT annotation_section.type,"
           " COUNT(annotation_section.type) * MAX(prv_rules_annotation.points) AS score,"
           " MAX(prv_rules_annotation.cap) AS cap "
           "FROM annotation_section, prv_rules, prv_rules_annotation, document_share "
           "WHERE "
           "prv_rules_annotation.id_annotation_type = annotation_section.type AND "
           "annotation_section.id_document_share = document_share.id AND "
           "document_share.id_document= " +
           id +
           " AND "
           "prv_rules.id = prv_rules_annotation.id_prv_rules AND "
           "(  data_type = '" +
           dataType +
           "' OR "
           "   data_type = 'zzzzDef' AND "
           "   NOT EXISTS "
           "  ( "
           "    SELECT annotation_section.type, prv_rules_annotation.points, prv_rules_annotation.cap,"
           " prv_rules.annotation_density_as_weight "
           "    FROM annotation_section, prv_rules, prv_rules_annotation, document_share "
           "    WHERE (prv_rules.id = prv_rules_annotation.id_prv_rules AND data_type = '" +
           dataType +
           "' AND "
           "    prv_rules_annotation.id_annotation_type = annotation_section.type AND "
           "    annotation_section.id_document_share = document_share.id AND "
           "    document_share.id_document= " +
           id +
           ") "
           ")  )"
           "GROUP BY annotation_section.type";
}

std::int16_t scoreOf(std::int32_t idDocument, const std::string& dataType, infra::tysDataBase& database) {
    const auto rows =
        database.openRecordset(scoreQuery(idDocument, dataType), CursorType::fixed, LockType::optimistic);
    std::int16_t total = 0;
    for (; !rows->eof(); rows->moveNext()) {
        const std::int16_t score = rows->field("score").toInt16();
        const std::int16_t cap = rows->field("cap").toInt16();
        total = base::add16(total, score < cap ? score : cap);
    }
    rows->close();
    return total;
}

/// The whole part, as 16 bits.
std::int16_t truncate16(double value) {
    return base::round16(std::trunc(value));
}

}  // namespace

std::int16_t ComputeAnnotationPoints(std::int32_t idDocument, const std::string& dataType, double density,
                                     infra::tysDataBase& database) {
    std::int16_t total = scoreOf(idDocument, dataType, database);
    const auto rules = database.openRecordset("SELECT * FROM prv_rules WHERE data_type = '" + dataType +
                                                  "' UNION (SELECT * FROM prv_rules WHERE data_type = "
                                                  "'zzzzDef' AND NOT EXISTS (SELECT * FROM prv_rules WHERE"
                                                  " data_type = '" +
                                                  dataType + "'))",
                                              CursorType::fixed, LockType::optimistic);
    if (rules->field("annotation_density_as_weight").toBool()) {
        total = truncate16(std::trunc(total * density) + 1);
    } else {
        total = truncate16(std::trunc(density * 100) + total);
    }
    const std::int16_t cap = rules->field("annotation_points_cap").toInt16();
    if (total > cap) {
        total = cap;
    }
    rules->close();
    database.getConnection()->execute("UPDATE document_share SET anno_points = " + std::to_string(total) +
                                      " WHERE id_document = " + std::to_string(idDocument));
    return total;
}

}  // namespace indexer
