#include "unit/indexer/indexer_fixture.h"

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace indexer_tests {

namespace {

using Arguments = std::span<base::Variant>;

/// Answers a method with the element that its 1-based index argument names.
template <class List, class Field>
void answerByIndex(fakes::ScriptedPlugin& plugin, const std::string& method, const List& list, Field field) {
    plugin.methods[method] = [list, field](Arguments arguments) -> base::Variant {
        return std::string(list.at(static_cast<std::size_t>(arguments[0].toInt16() - 1)).*field);
    };
}

std::int32_t sizeOf(const auto& list) {
    return static_cast<std::int32_t>(list.size());
}

}  // namespace

void ScriptedDocument::answerThrough(fakes::ScriptedPlugin& plugin) const {
    plugin.answer("SetDocumentID", true);
    plugin.answer("GetLastErrorNumber", std::int32_t{0});
    plugin.answer("GetLastErrorString", "");
    plugin.methods["GetDocumentProperty"] = [*this](Arguments arguments) -> base::Variant {
        const std::string name = arguments[0].toText();
        return name == "title"                ? base::Variant(title)
               : name == "data_size"          ? dataSize
               : name == "last_time_modified" ? lastModified
               : name == "source_url"         ? base::Variant(sourceUrl)
                                              : base::Variant();
    };
    plugin.answer("GetNumberOfSentences", countIsKnown ? sizeOf(sentences) : -1);
    plugin.methods["GetSentenceText"] = [*this](Arguments arguments) -> base::Variant {
        return sentences.at(static_cast<std::size_t>(arguments[0].toInt16() - 1));
    };
    auto next = std::make_shared<std::size_t>(0);
    plugin.methods["MoreSentences"] = [*this, next](Arguments) -> base::Variant {
        return *next < sentences.size();
    };
    plugin.methods["GetNextSentence"] = [*this, next](Arguments) -> base::Variant {
        return sentences.at((*next)++);
    };
    plugin.answer("GetNumberofImportantText", sizeOf(importantText));
    answerByIndex(plugin, "GetImportantTextText", importantText, &Typed::text);
    answerByIndex(plugin, "GetImportantTextType", importantText, &Typed::type);
    plugin.answer("GetNumberofAnnotations", sizeOf(annotations));
    answerByIndex(plugin, "GetAnnotationType", annotations, &Annotation::type);
    answerByIndex(plugin, "GetAnnotationAnchor", annotations, &Annotation::anchor);
    answerByIndex(plugin, "GetAnnotationText", annotations, &Annotation::text);
    plugin.answer("GetNumberofMetaTags", sizeOf(metaTags));
    answerByIndex(plugin, "GetMetaTagText", metaTags, &Typed::text);
    answerByIndex(plugin, "GetMetaTagType", metaTags, &Typed::type);
    plugin.answer("GetNumberofSubDocuments", sizeOf(subDocuments));
    answerByIndex(plugin, "GetSubDocumentTempPath", subDocuments, &SubDocument::temporaryPath);
    answerByIndex(plugin, "GetSubDocumentPath", subDocuments, &SubDocument::path);
}

IndexerTest::IndexerTest() {
    database.initialise();
    givePlugin("txt", "Test.Text", ScriptedDocument());
}

fakes::ScriptedPlugin& IndexerTest::givePlugin(const std::string& dataType, const std::string& progId,
                                               const ScriptedDocument& document) {
    library.settings.put(std::string(infra::dataTypesKey) + dataType, "IndexPlugin", progId);
    fakes::ScriptedPlugin& plugin = library.automation.plugins[progId];
    document.answerThrough(plugin);
    return plugin;
}

indexer::DocumentJob IndexerTest::job(const std::string& path) {
    indexer::DocumentJob job;
    job.path = path;
    job.dataType = "txt";
    job.idUser = 7;
    return job;
}

void IndexerTest::indexDocument(const std::string& path) {
    indexer.IndexDocument(job(path), database);
}

std::int32_t IndexerTest::queue(const std::string& path, int indexType, const std::string& dataType) {
    const std::string quoted = base::replaceAll(path, "'", "''");
    library.exec(
        "INSERT INTO file_index_queue (doc_path, index_type, date_time, data_type, user_id, flag_dirty) "
        "VALUES ('" +
        quoted + "', " + std::to_string(indexType) + ", '2026-11-16 01:00:00', '" + dataType + "', 7, 1)");
    return number("SELECT max(id) FROM file_index_queue");
}

std::string IndexerTest::value(const std::string& sql) {
    const auto rows = library.rows(sql);
    return rows.empty() ? "(no row)" : rows.front().front();
}

std::vector<std::string> IndexerTest::log() {
    return library.logLines();
}

bool IndexerTest::logged(const std::string& line) {
    const auto lines = log();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

std::vector<std::string> IndexerTest::statements() {
    return std::exchange(library.trace, {});
}

}  // namespace indexer_tests
