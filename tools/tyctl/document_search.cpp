#include "tyctl/document_search.h"

#include <algorithm>
#include <functional>
#include <tuple>
#include <utility>

#include "base/date_time.h"

namespace tyctl {
namespace {

std::string textOf(const base::Variant& value) {
    return value.isNull() ? std::string() : value.toText();
}

std::int32_t numberOf(const base::Variant& value) {
    return value.isNull() ? 0 : value.toInt32();
}

/// The number behind the last "?attach=" of a saved location, or empty text.
std::string attachmentOf(const std::string& location) {
    constexpr std::string_view marker = "?attach=";
    const std::size_t position = location.rfind(marker);
    return position == std::string::npos ? std::string() : location.substr(position + marker.size());
}

/// Of matches in the order of their hits, those that can be among the first `limit`: the last one brings all
/// that have as many hits along, because their relevance is not known yet.
std::size_t candidates(const std::vector<std::int64_t>& hits, std::size_t limit) {
    if (limit == 0 || limit >= hits.size()) {
        return hits.size();
    }
    std::size_t count = limit;
    while (count < hits.size() && hits[count] == hits[limit - 1]) {
        ++count;
    }
    return count;
}

}  // namespace

DocumentSearch::DocumentSearch(Library& library, std::int32_t user) : library_(library), user_(user) {
    relevance_.setDataSource(library.database());
}

SearchResult DocumentSearch::find(const std::vector<std::string>& terms, std::size_t limit) {
    SearchResult result;
    for (const std::string& term : terms) {
        if (isNoise(term)) {
            result.noise.push_back(term);
        } else if (isKnown(term)) {
            result.searched.push_back(term);
        } else {
            result.unknown.push_back(term);
        }
    }
    if (!result.unknown.empty()) {
        return result;
    }
    Matches matches;
    for (std::size_t word = 0; word < result.searched.size(); ++word) {
        addMatches(result.searched[word], word, matches);
    }
    std::erase_if(matches,
                  [&](const auto& match) { return match.second.wordsHeld < result.searched.size(); });
    result.found = matches.size();

    std::vector<std::pair<std::int32_t, Match>> ordered(matches.begin(), matches.end());
    std::stable_sort(ordered.begin(), ordered.end(), [](const auto& left, const auto& right) {
        return left.second.hits > right.second.hits;
    });
    std::vector<std::int64_t> hits;
    hits.reserve(ordered.size());
    for (const auto& match : ordered) {
        hits.push_back(match.second.hits);
    }
    ordered.resize(candidates(hits, limit));
    for (const auto& [document, match] : ordered) {
        result.hits.push_back(describe(document, match));
    }
    std::sort(result.hits.begin(), result.hits.end(), [](const SearchHit& left, const SearchHit& right) {
        return std::tie(right.hits, right.relevance, left.title, left.document) <
               std::tie(left.hits, left.relevance, right.title, right.document);
    });
    if (limit != 0 && result.hits.size() > limit) {
        result.hits.resize(limit);
    }
    return result;
}

bool DocumentSearch::isNoise(const std::string& term) {
    return !library_.query("SELECT term FROM word_noise WHERE term = " + library_.quoted(term))->eof();
}

bool DocumentSearch::isKnown(const std::string& term) {
    return !library_.query("SELECT id FROM root_word WHERE word = " + library_.quoted(term))->eof();
}

/// Counts the word's hits in the documents that hold all words before it.
void DocumentSearch::addMatches(const std::string& term, std::size_t wordsBefore, Matches& matches) {
    const auto rows = library_.query(
        "SELECT word_index.id_document_object, word_index.hit_count, word_index.first_matching_sentence"
        " FROM root_word, word_index, document_object WHERE root_word.word = " +
        library_.quoted(term) +
        " AND word_index.id_root_word = root_word.id AND document_object.id = word_index.id_document_object"
        " AND document_object.location_invalid = FALSE");
    for (; !rows->eof(); rows->moveNext()) {
        const std::int32_t document = numberOf(rows->field("id_document_object"));
        if (wordsBefore > 0 && !matches.contains(document)) {
            continue;
        }
        Match& match = matches[document];
        if (match.wordsHeld < wordsBefore) {
            continue;
        }
        match.wordsHeld = wordsBefore + 1;
        match.hits += numberOf(rows->field("hit_count"));
        const std::int32_t first = numberOf(rows->field("first_matching_sentence"));
        if (first > 0 && (match.firstSentence == 0 || first < match.firstSentence)) {
            match.firstSentence = first;
        }
    }
}

SearchHit DocumentSearch::describe(std::int32_t document, const Match& match) {
    SearchHit hit;
    hit.document = document;
    hit.hits = match.hits;
    hit.relevance = relevance_.getPRV(document, user_, base::DateTime(), true).toDouble();
    const auto row =
        library_.query("SELECT title, data_type, saved_location, id_parent FROM document_object WHERE id = " +
                       std::to_string(document));
    hit.title = textOf(row->field("title"));
    hit.dataType = textOf(row->field("data_type"));
    placeOf(hit, numberOf(row->field("id_parent")), textOf(row->field("saved_location")));
    hit.sentence = sentence(document, match.firstSentence);
    return hit;
}

/// An attachment of an attachment was indexed from a temporary file: the way to the file that people know
/// goes through the parents.
void DocumentSearch::placeOf(SearchHit& hit, std::int32_t parent, const std::string& location) {
    constexpr int deepest = 50;
    hit.path = location;
    for (int depth = 0; parent > 0 && depth < deepest; ++depth) {
        const std::string number = attachmentOf(hit.path);
        const auto row = library_.query("SELECT saved_location, id_parent FROM document_object WHERE id = " +
                                        std::to_string(parent));
        if (row->eof() || number.empty()) {
            return;
        }
        hit.attachment = hit.attachment.empty() ? number : number + "." + hit.attachment;
        hit.path = textOf(row->field("saved_location"));
        parent = numberOf(row->field("id_parent"));
    }
}

std::string DocumentSearch::sentence(std::int32_t document, std::int32_t number) {
    if (number <= 0) {
        return {};
    }
    const auto row = library_.query(
        "SELECT content FROM ascii_sentences WHERE id_document_object = " + std::to_string(document) +
        " AND num_sentence = " + std::to_string(number));
    return row->eof() ? std::string() : textOf(row->field("content"));
}

}  // namespace tyctl
