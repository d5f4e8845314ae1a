#include <CLI/CLI.hpp>
#include <iomanip>
#include <iostream>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "base/text.h"
#include "tyctl/arguments.h"
#include "tyctl/commands.h"
#include "tyctl/console.h"
#include "tyctl/document_search.h"
#include "tyctl/failure.h"
#include "tyctl/search_terms.h"

namespace tyctl {
namespace {

struct Options {
    std::vector<std::string> words;
    std::int32_t user = 1;
    std::size_t limit = 20;
    bool json = false;
};

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

/// The part of a long sentence that holds the first match.
std::string excerpt(const std::string& sentence, const std::vector<std::string>& terms) {
    constexpr std::size_t longest = 240;
    constexpr std::size_t before = 80;
    std::string line = onOneLine(sentence);
    if (base::length(line) <= longest) {
        return line;
    }
    const auto matches = matchesIn(line, terms);
    const std::string_view whole = line;
    const std::string_view head = whole.substr(0, matches.empty() ? 0 : matches.front().begin);
    const std::string_view lead = base::right(head, before);
    const std::string_view rest = whole.substr(head.size());
    const std::string_view tail = base::left(rest, longest - base::length(lead));
    return (lead.size() < head.size() ? "..." : "") + std::string(lead) + std::string(tail) +
           (tail.size() < rest.size() ? "..." : "");
}

std::string nameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

void printHit(const SearchHit& hit, const std::vector<std::string>& terms) {
    std::ostringstream relevance;
    relevance << std::fixed << std::setprecision(1) << hit.relevance;
    const std::string title = onOneLine(hit.title.empty() ? nameOf(hit.path) : hit.title);
    const std::string sentence = excerpt(hit.sentence, terms);
    std::cout << highlighted(title, matchesIn(title, terms)) << "  [" << counted(hit.hits, "hit")
              << ", relevance " << relevance.str() << "]\n    " << printablePath(hit.path)
              << (hit.attachment.empty() ? "" : ", attachment " + hit.attachment) << '\n';
    if (!sentence.empty()) {
        std::cout << "    " << highlighted(sentence, matchesIn(sentence, terms)) << '\n';
    }
}

void print(const SearchResult& result) {
    for (const SearchHit& hit : result.hits) {
        printHit(hit, result.searched);
    }
    if (result.found == 0) {
        std::cout << "No document holds "
                  << (result.searched.size() + result.unknown.size() > 1 ? "all of " : "")
                  << joined(result.unknown.empty() ? result.searched : result.unknown) << ".\n";
    } else if (result.found > result.hits.size()) {
        std::cout << result.hits.size() << " of "
                  << counted(static_cast<std::int64_t>(result.found), "document")
                  << "; --limit 0 shows all\n";
    } else {
        std::cout << counted(static_cast<std::int64_t>(result.found), "document") << '\n';
    }
}

void printJson(const SearchResult& result) {
    nlohmann::json documents = nlohmann::json::array();
    for (const SearchHit& hit : result.hits) {
        documents.push_back({{"id", hit.document},
                             {"hits", hit.hits},
                             {"relevance", hit.relevance},
                             {"title", hit.title},
                             {"path", hit.path},
                             {"attachment", hit.attachment},
                             {"data_type", hit.dataType},
                             {"sentence", hit.sentence}});
    }
    const nlohmann::json all = {{"words", result.searched},
                                {"noise_words", result.noise},
                                {"unknown_words", result.unknown},
                                {"found", result.found},
                                {"documents", documents}};
    std::cout << all.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

int search(const Options& options) {
    std::string text;
    for (const std::string& word : options.words) {
        text += word + " ";
    }
    const std::vector<std::string> terms = searchTerms(text);
    if (terms.empty()) {
        throw Failure(
            "there is nothing to search for: only words of two or more ASCII letters and digits are indexed");
    }
    Settings settings;
    Library library(settings);
    const SearchResult result = DocumentSearch(library, options.user).find(terms, options.limit);
    if (!result.noise.empty()) {
        note("left out, because the library does not index them: " + joined(result.noise));
    }
    if (result.noise.size() == terms.size()) {
        throw Failure("there is nothing else to search for");
    }
    options.json ? printJson(result) : print(result);
    return succeeded;
}

}  // namespace

void addSearchCommand(CLI::App& program, int& status) {
    using Numbers = std::numeric_limits<std::int32_t>;
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("search", "Find the documents that hold all of some words");
    command->footer("Ranked by hits; documents with as many hits by their present relevance value.");
    command->add_option("WORDS", options->words, "The words")->required();
    command->add_option("--user", options->user, "Whose relevance values count")
        ->check(wholeNumber(Numbers::min(), Numbers::max()))
        ->capture_default_str();
    command->add_option("--limit", options->limit, "Documents to show; 0 shows all")
        ->check(wholeNumber(0, Numbers::max()))
        ->capture_default_str();
    command->add_flag("--json", options->json, "Print JSON");
    command->callback([options, &status] { status = search(*options); });
}

}  // namespace tyctl
