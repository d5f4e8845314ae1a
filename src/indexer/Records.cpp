#include "indexer/Records.h"

#include <exception>

#include "base/checked.h"
#include "base/text.h"
#include "indexer/NormaliseText.h"

namespace indexer {

using platform::CursorType;
using platform::LockType;

namespace {

constexpr std::size_t longestDescription = 50;

/// Ends each of the inserts: picks the word type of the description, or the component type's row of type 0.
std::string typeClause(std::int16_t compType, std::string_view description,
                       const infra::tysDataBase& database) {
    const std::string name = database.sanitiseToLength(description, longestDescription);
    return " and       ( search_weight.description='" + name +
           "' OR         (type=0 and NOT EXISTS (select type from search_weight where comp_type=" +
           std::to_string(compType) + " and description='" + name + "'       )))";
}

/// The rows between the select list and the type clause: every share of the document, with every type of the
/// component.
std::string sharesOf(std::int32_t idDocument, std::int16_t compType) {
    return "FROM document_share, search_weight WHERE document_share.id_document=" +
           std::to_string(idDocument) + " and       search_weight.comp_type=" + std::to_string(compType);
}

}  // namespace

void AddMetaTag(std::int32_t idDocument, std::int16_t compType, std::string_view description,
                std::string_view metaText, infra::tysDataBase& database) {
    database.getConnection()->execute(
        "INSERT INTO meta_tags (id_document_share, type) SELECT document_share.id, search_weight.type " +
        sharesOf(idDocument, compType) + typeClause(compType, description, database));
    AddMetaTagEntries(metaText, database);
}

void AddMetaTagEntries(std::string_view metaText, infra::tysDataBase& database) {
    // With several shares this is the last one's tag, which alone gets the words: that is where readers look
    // for them. A document without a share has no tag; the key is then the one given last in any table.
    const auto row = database.openRecordset("SELECT @@IDENTITY AS id_meta_tag FROM meta_tags",
                                            CursorType::fixed, LockType::optimistic);
    const std::string idTag = std::to_string(row->field("id_meta_tag").toInt32());
    row->close();
    std::int16_t position = 1;
    const std::string normalised = NormaliseText(metaText);
    for (const std::string_view piece : base::split(normalised, ' ')) {
        const std::string word = database.sanitise(base::trim(piece));
        if (!word.empty()) {
            std::string statement = "Insert into metatag_entry(id_meta_tags, id_root_word,pos)  Select ";
            statement.append(idTag).append(",root_word.id,").append(std::to_string(position));
            statement.append(" from root_word where root_word.word='").append(word).append("'");
            database.getConnection()->execute(statement);
            position = base::add16(position, 1);
        }
    }
}

void AddAnnotationSection(std::int32_t idDocument, std::int16_t compType, std::string_view description,
                          std::int16_t sequence, infra::tysDataBase& database) {
    database.getConnection()->execute(
        "INSERT INTO annotation_section (id_document_share, type,sequence) SELECT document_share.id, "
        "search_weight.type, " +
        std::to_string(sequence) + " " + sharesOf(idDocument, compType) +
        typeClause(compType, description, database));
}

void AddImportantText(std::int32_t idDocument, std::int16_t compType, std::string_view description,
                      infra::tysDataBase& database) {
    database.getConnection()->execute(
        "INSERT INTO important_text (id_document, type) SELECT " + std::to_string(idDocument) +
        ", search_weight.type FROM search_weight WHERE search_weight.comp_type=" + std::to_string(compType) +
        typeClause(compType, description, database));
}

bool IsNewMetaTag(std::int32_t idDocument, std::string_view metaText, infra::tysDataBase& database,
                  std::int32_t idUser) {
    bool isNew = false;
    try {
        const auto rows = database.openRecordset(
            "SELECT root_word.word, meta_tags.id, metatag_entry.pos"
            " FROM meta_tags, document_share, metatag_entry, root_word"
            " WHERE document_share.id_document = " +
                std::to_string(idDocument) + " AND id_user = " + std::to_string(idUser) +
                " AND document_share.Id = meta_tags.id_document_share"
                " AND metatag_entry.id_meta_tags = meta_tags.id"
                " AND metatag_entry.id_root_word = root_word.id"
                " ORDER BY meta_tags.id ASC, metatag_entry.pos ASC",
            CursorType::fixed, LockType::optimistic);
        const std::string_view wanted = base::trim(metaText);
        isNew = true;
        std::string tag;
        std::int32_t lastId = -1;
        for (; isNew && !rows->eof(); rows->moveNext()) {
            const std::int32_t id = rows->field("id").toInt32();
            const std::string word = rows->field("word").toText();
            if (id == lastId) {
                tag += ' ';
            } else if (tag == wanted) {
                // Before the first tag the text is empty, so that a blank text is never new to a share with
                // tags.
                isNew = false;
                break;
            } else {
                tag.clear();
            }
            tag += word;
            lastId = id;
        }
        if (isNew && tag == wanted) {
            isNew = false;
        }
        rows->close();
    } catch (const std::exception& error) {
        database.services().support.WriteLog(std::string("Error:mtir: ") + error.what(),
                                             infra::LogLevel::errorReport);
    }
    return isNew;
}

}  // namespace indexer
