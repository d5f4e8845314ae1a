#include "indexer/WordCaches.h"

#include <array>
#include <span>
#include <variant>

#include "base/text.h"
#include "indexer/WordIndexEntry.h"

namespace indexer {

using platform::CursorType;
using platform::LockType;

void WordCaches::LoadCaches(infra::tysDataBase& database) {
    // A second load meets every word again; without this it would end at the first.
    rootWords_.clear();
    loadSearchWeights(database);
    database.getConnection()->execute(
        "DELETE * FROM root_word WHERE NOT EXISTS (SELECT id_root_word FROM word_index WHERE id_root_word = "
        "root_word.id)");
    loadRootWords(database);
    loadNoiseWords(database);
}

void WordCaches::loadSearchWeights(infra::tysDataBase& database) {
    normalType_ = -1;
    searchWeights_.clear();
    const auto rows = database.openRecordset("SELECT type, description, comp_type FROM search_weight",
                                             CursorType::forwardOnly, LockType::readOnly);
    for (; !rows->eof(); rows->moveNext()) {
        const std::string type = rows->field("type").toText();
        const std::string description = rows->field("description").toText();
        const std::int16_t compType = rows->field("comp_type").toInt16();
        searchWeights_.add(type, std::string(base::trim(description)) + "_" + std::to_string(compType));
        if (normalType_ == -1 && description == "normal" && compType == bodyComponent) {
            normalType_ = base::Variant(type).toInt16();
        }
    }
    rows->close();
}

void WordCaches::loadRootWords(infra::tysDataBase& database) {
    const auto rows =
        database.openRecordset("SELECT id, word FROM root_word", CursorType::forwardOnly, LockType::readOnly);
    constexpr std::array<std::string_view, 2> columns = {"id", "word"};
    rows->forEachRow(columns, [this](std::span<const base::Variant> fields) {
        if (const auto* word = std::get_if<std::string>(&fields[1].value())) {
            rootWords_.add(fields[0].toInt32(), *word);  // without a copy: there may be a million
        } else {
            rootWords_.add(fields[0].toInt32(), fields[1].toText());
        }
    });
    rows->close();
}

void WordCaches::loadNoiseWords(infra::tysDataBase& database) {
    noiseWords_.clear();
    const auto rows =
        database.openRecordset("SELECT term FROM word_noise", CursorType::forwardOnly, LockType::readOnly);
    for (; !rows->eof(); rows->moveNext()) {
        noiseWords_.add(' ', rows->field("term").toText());
    }
    rows->close();
}

std::optional<std::int16_t> WordCaches::typeOf(std::int16_t compType, std::string_view typeText) {
    if (compType == bodyComponent && (typeText.empty() || typeText == "normal") && normalType_ != -1) {
        return normalType_;
    }
    if (const auto type = searchWeight(typeText, compType)) {
        return type;
    }
    return searchWeight("zzzDef", compType);
}

std::optional<std::int16_t> WordCaches::searchWeight(std::string_view description, std::int16_t compType) {
    const std::string* type = searchWeights_.find(std::string(description) + "_" + std::to_string(compType));
    if (type == nullptr) {
        return std::nullopt;
    }
    const std::int16_t number = base::Variant(*type).toInt16();
    // -1 stands for "no type" wherever types are looked up.
    return number == -1 ? std::nullopt : std::optional(number);
}

}  // namespace indexer
