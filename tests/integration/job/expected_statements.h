// The statements of a job as the library's other programs and its administrators know them, blanks included.
#pragma once

#include <string>
#include <vector>

namespace job_tests {

using Statements = std::vector<std::string>;

inline Statements operator+(Statements first, const Statements& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline Statements queueEntry(int id) {
    return {
        "SELECT TOP 1 doc_path, index_type, date_time, data_type, user_id FROM file_index_queue WHERE id = " +
        std::to_string(id) + " AND doc_path <> '' AND doc_path <> Null"};
}

inline Statements loadOfCaches() {
    return {"SELECT type, description, comp_type FROM search_weight",
            "DELETE * FROM root_word WHERE NOT EXISTS (SELECT id_root_word FROM word_index WHERE "
            "id_root_word = root_word.id)",
            "SELECT id, word FROM root_word", "SELECT term FROM word_noise"};
}

inline Statements newWords(const std::vector<std::string>& words) {
    Statements statements;
    for (const std::string& word : words) {
        statements.push_back("INSERT INTO root_word ( word ) VALUES( '" + word + "')");
        statements.emplace_back("SELECT @@IDENTITY AS id_root_word FROM root_word");
    }
    return statements;
}

inline std::string typeClause(const std::string& description, int compType) {
    return " and "
           "      ( search_weight.description='" +
           description +
           "' OR "
           "        (type=0 and NOT EXISTS (select type from search_weight where comp_type=" +
           std::to_string(compType) + " and description='" + description +
           "'"
           "       )))";
}

inline Statements importantText(const std::string& description) {
    return {
        "INSERT INTO important_text (id_document, type) SELECT 1, search_weight.type FROM search_weight "
        "WHERE "
        "search_weight.comp_type=2" +
        typeClause(description, 2)};
}

/// How the type of a record is found, behind the choice of the first document's shares.
inline std::string sharesOfDocument(const std::string& description, int compType) {
    return "FROM document_share, search_weight WHERE document_share.id_document=1 and "
           "      search_weight.comp_type=" +
           std::to_string(compType) + typeClause(description, compType);
}

inline Statements annotationSection(const std::string& description, int sequence) {
    return {
        "INSERT INTO annotation_section (id_document_share, type,sequence) SELECT document_share.id, "
        "search_weight.type, " +
        std::to_string(sequence) + " " + sharesOfDocument(description, 3)};
}

inline Statements annotationPoints(const std::string& dataType, int points) {
    return {
        "SELECT annotation_section.type, COUNT(annotation_section.type) * MAX(prv_rules_annotation.points) "
        "AS "
        "score, MAX(prv_rules_annotation.cap) AS cap FROM annotation_section, prv_rules, "
        "prv_rules_annotation, document_share WHERE prv_rules_annotation.id_annotation_type = "
        "annotation_section.type AND annotation_section.id_document_share = document_share.id AND "
        "document_share.id_document= 1 AND prv_rules.id = prv_rules_annotation.id_prv_rules AND (  data_type "
        "= "
        "'" +
            dataType +
            "' OR    data_type = 'zzzzDef' AND    NOT EXISTS   (     SELECT annotation_section.type, "
            "prv_rules_annotation.points, prv_rules_annotation.cap, prv_rules.annotation_density_as_weight   "
            "  "
            "FROM annotation_section, prv_rules, prv_rules_annotation, document_share     WHERE "
            "(prv_rules.id = "
            "prv_rules_annotation.id_prv_rules AND data_type = '" +
            dataType +
            "' AND     prv_rules_annotation.id_annotation_type = annotation_section.type AND     "
            "annotation_section.id_document_share = document_share.id AND     document_share.id_document= 1) "
            ")  "
            ")GROUP BY annotation_section.type",
        "SELECT * FROM prv_rules WHERE data_type = '" + dataType +
            "' UNION (SELECT * FROM prv_rules WHERE data_type = 'zzzzDef' AND NOT EXISTS (SELECT * FROM "
            "prv_rules WHERE data_type = '" +
            dataType + "'))",
        "UPDATE document_share SET anno_points = " + std::to_string(points) + " WHERE id_document = 1"};
}

/// Whether user 7 has the tag already.
inline Statements lookForTag() {
    return {
        "SELECT root_word.word, meta_tags.id, metatag_entry.pos FROM meta_tags, document_share, "
        "metatag_entry, "
        "root_word WHERE document_share.id_document = 1 AND id_user = 7 AND document_share.Id = "
        "meta_tags.id_document_share AND metatag_entry.id_meta_tags = meta_tags.id AND "
        "metatag_entry.id_root_word = root_word.id ORDER BY meta_tags.id ASC, metatag_entry.pos ASC"};
}

inline Statements metaTag(const std::string& description, const std::vector<std::string>& words) {
    Statements statements = {
        "INSERT INTO meta_tags (id_document_share, type) SELECT document_share.id, "
        "search_weight.type " +
            sharesOfDocument(description, 4),
        "SELECT @@IDENTITY AS id_meta_tag FROM meta_tags"};
    for (std::size_t i = 0; i < words.size(); ++i) {
        statements.push_back(
            "Insert into metatag_entry(id_meta_tags, id_root_word,pos)  Select 1,root_word.id," +
            std::to_string(i + 1) + " from root_word where root_word.word='" + words[i] + "'");
    }
    return statements;
}

struct WordRow {
    int hits;
    int compType;
    int type;
    int idRootWord;
    int sentence;
};

inline Statements begin() {
    return {"BEGIN TRANSACTION"};
}

inline Statements commit() {
    return {"COMMIT TRANSACTION"};
}

/// The commit of words to the first document.
inline Statements words(const std::vector<WordRow>& rows) {
    Statements statements = {"BEGIN TRANSACTION"};
    for (const WordRow& row : rows) {
        statements.push_back(
            "INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
            "first_matching_sentence ) VALUES( 1, " +
            std::to_string(row.hits) + " , " + std::to_string(row.compType) + ", " +
            std::to_string(row.type) + ", " + std::to_string(row.idRootWord) + ", " +
            std::to_string(row.sentence) + " )");
    }
    statements.emplace_back("COMMIT TRANSACTION");
    return statements;
}

/// The commit of sentences to the first document; each text begins with its length.
inline Statements sentences(const std::vector<std::string>& rows) {
    static const std::string head =
        "INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) VALUES(1";
    Statements statements = {"BEGIN TRANSACTION", head + ", 1, ' ', -1)", head + ", 1, ' ', 0)"};
    for (const std::string& row : rows) {
        statements.push_back(head + "," + row + ")");
    }
    statements.emplace_back("COMMIT TRANSACTION");
    return statements;
}

inline Statements lookForRecord(const std::string& path) {
    return {"BEGIN TRANSACTION", "SELECT id, source_url FROM document_object WHERE  saved_location = '" +
                                     path + "' AND location_invalid = FALSE"};
}

struct NewDocument {
    std::string path;
    std::string title;
    std::string time;  // of the document, as it is written
};

/// What makes the first document with its relevance value and share.
inline Statements creation(const NewDocument& document) {
    return {
        "UPDATE document_object SET location_invalid = TRUE, location_invalid_date = '2026-11-16 01:47:03' "
        "WHERE saved_location = '" +
            document.path + "'",
        "INSERT INTO document_object (source_url,first_saved, title, data_type, saved_location, data_size, "
        "snapshot, time_stamp, id_parent, id_owning_user ) VALUES ('" +
            document.path + "','16 Nov 2026 01:47:03', '" + document.title + "', 'txt', '" + document.path +
            "', 1000, false, '" + document.time + "', -1, 7 ) ",
        "SELECT @@IDENTITY AS id_document FROM document_object",
        "SELECT creation_prv FROM prv_rules WHERE data_type = 'txt' OR data_type = 'zzzzDef' ORDER BY "
        "data_type ASC",
        "INSERT INTO prv (last_prv, last_doc_usage ) VALUES (100, '2026-11-16 01:47:03' ) ",
        "SELECT @@IDENTITY AS id_prv FROM prv",
        "INSERT INTO prv_history (id_prv, time_stamp, action_description, prv_value ) VALUES (1, '2026-11-16 "
        "01:47:03', 'Document Created', 100 ) ",
        "INSERT INTO document_share (id_document, id_user, id_prv ) VALUES (1, 7, 1 ) "};
}

/// What takes the rows of an earlier indexing away from the first document.
inline Statements purge() {
    return {
        "DELETE * FROM ascii_sentences WHERE id_document_object = 1",
        "DELETE * FROM word_index WHERE id_document_object = 1 AND ( word_index.comp_type <> 4 OR "
        "word_index.type NOT IN (SELECT type FROM search_weight WHERE  description = 'user')) AND ( "
        "word_index.comp_type <> 3 OR word_index.type NOT IN (SELECT type FROM search_weight WHERE  "
        "description = 'external_comment'))",
        "DELETE * FROM important_text WHERE id_document = 1",
        "DELETE * FROM annotation_section WHERE id_document_share in  (select id_document from "
        "document_share   where id_document=1 and id_user=7)",
        "DELETE * FROM meta_tags WHERE id_document_share IN  (SELECT id FROM document_share WHERE "
        "id_document=1 AND id_user=7) AND type NOT IN ( SELECT type FROM search_weight WHERE comp_type = 4 "
        "AND (description = 'user' OR description = 'anti') )"};
}

inline Statements readTitle() {
    return {"SELECT flag_user_set_title, title FROM document_object WHERE id = 1"};
}

/// `columns` as they follow SET, blanks included.
inline Statements refresh(const std::string& columns) {
    return {"UPDATE document_object SET" + columns + " WHERE id = 1"};
}

inline Statements markAsFailed() {
    return {"UPDATE document_object SET flag_indexing_failed = TRUE WHERE id = 1"};
}

/// What takes the path words of a moved document away.
inline Statements forgetPath(const std::string& path) {
    return {
        "SELECT id FROM document_object WHERE  saved_location = '" + path + "' AND location_invalid = FALSE",
        "DELETE * FROM word_index WHERE id_document_object = 1 AND comp_type = 2 AND type = (SELECT type "
        "FROM "
        "search_weight WHERE description = 'document_path')",
        "DELETE * FROM important_text WHERE id_document = 1 AND type = (SELECT type FROM search_weight WHERE "
        "description = 'document_path')"};
}

inline Statements leaveQueue(const std::string& path) {
    return {"DELETE * FROM file_index_queue WHERE doc_path = '" + path + "'"};
}

}  // namespace job_tests
