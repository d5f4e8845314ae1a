// tyindexer-floor: what the machine can do. It reads text files with the text plug-in's own code, in its own
// process, and writes the same rows as the service with nothing in between: no queue, no plug-in process, no
// statements as text, no log, no settings. Paths come on standard input, one a line, in the order in which
// they are read.
#include <algorithm>
#include <cstdint>
#include <deque>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/text.h"
#include "bench/floor_library.h"
#include "text/text_extractor.h"

namespace {

constexpr int body = 2;  // the component class of all text that is no annotation and no tag
constexpr std::int16_t mostHits = 32767;

struct Entry {
    std::int64_t rootWord = 0;
    std::string_view description;
    std::int16_t hits = 0;
    std::int16_t firstSentence = 0;
};

struct Sentence {
    std::string text;
    std::int16_t number = 0;
    bool referenced = false;
};

bool isWordCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// Calls `take` with each word of two characters or more, in lower case and without "'s".
template <class Take>
void forEachWord(std::string_view text, std::string& word, const Take& take) {
    const auto finish = [&] {
        if (word.size() > 1) {
            take(word);
        }
        word.clear();
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (isWordCharacter(c)) {
            word.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c);
        } else if (c == '\'' && i + 1 < text.size() && (text[i + 1] == 's' || text[i + 1] == 'S')) {
            ++i;
        } else {
            finish();
        }
    }
    finish();
}

class Floor {
  public:
    explicit Floor(const std::string& path) : library_(path) {}

    /// False when the text plug-in refuses the file.
    bool index(const std::string& path) {
        text::TextExtractor extractor;
        if (!extractor.SetDocumentID(path)) {
            return false;
        }
        library_.begin.run();
        const std::int64_t document = addRecords(path, extractor);
        const std::string title = extractor.GetDocumentProperty("title").toText();
        const int sentences = extractor.GetNumberOfSentences();  // -1 when it is not known
        while (sentences < 0 && extractor.MoreSentences()) {
            addSentence(extractor.GetNextSentence(), "");
        }
        for (int i = 1; i <= sentences; ++i) {
            addSentence(extractor.GetSentenceText(static_cast<std::int16_t>(i)), "");
        }
        addUnkept(document, title, "title");
        addUnkept(document, path, "document_path");
        const std::int32_t importantTexts = extractor.GetNumberofImportantText();
        for (std::int32_t i = 1; i <= importantTexts; ++i) {
            const auto index = static_cast<std::int16_t>(i);
            types_.push_back(extractor.GetImportantTextType(index));
            library_.important.run(document,
                                   std::int64_t{library_.rules.importantTextType(body, types_.back())});
            addSentence(extractor.GetImportantTextText(index), types_.back());
        }
        write(document);
        library_.commit.run();
        return true;
    }

  private:
    std::int64_t addRecords(const std::string& path, text::TextExtractor& extractor) {
        constexpr std::string_view moment = "2026-11-16 01:47:03";
        constexpr std::int64_t creationValue = 100;
        constexpr std::int64_t user = 1;
        const std::string title = extractor.GetDocumentProperty("title").toText();
        const std::string dataType = path.substr(path.rfind('.') + 1);
        const std::int64_t size = extractor.GetDocumentProperty("data_size").toInt32();
        library_.document.run(path, moment, std::string(base::left(title, 250)), dataType, path, size, moment,
                              user);
        const std::int64_t document = library_.lastKey();
        library_.relevance.run(creationValue, moment);
        const std::int64_t relevance = library_.lastKey();
        library_.history.run(relevance, moment, std::string_view("Document Created"), creationValue);
        library_.share.run(document, user, relevance);
        return document;
    }

    void addSentence(std::string text, std::string_view description) {
        const auto number = static_cast<std::int16_t>(sentences_.size() + 1);
        sentences_.push_back({std::move(text), number, false});
        sentences_.back().referenced = count(sentences_.back().text, description, number);
    }

    void addUnkept(std::int64_t document, const std::string& text, std::string_view description) {
        library_.important.run(document, std::int64_t{library_.rules.importantTextType(body, description)});
        count(text, description, 0);
    }

    /// True when one of the words was new in the document.
    bool count(const std::string& text, std::string_view description, std::int16_t sentence) {
        bool isFirst = false;
        forEachWord(text, word_, [&](const std::string& word) {
            if (library_.rules.noise.contains(word)) {
                return;
            }
            key_.assign(description).append("_").append(word);
            Entry& entry = entries_[key_];
            if (entry.hits == 0) {
                entry = {keyOf(word), description, 1, sentence};
                isFirst = true;
            } else if (entry.hits < mostHits) {
                ++entry.hits;
            }
        });
        return isFirst;
    }

    std::int64_t keyOf(const std::string& word) {
        const auto [known, isNew] = rootWords_.try_emplace(word, 0);
        if (isNew) {
            library_.rootWord.run(word);
            known->second = library_.lastKey();
        }
        return known->second;
    }

    void write(std::int64_t document) {
        for (const auto& [key, entry] : entries_) {
            library_.word.run(document, std::int64_t{entry.hits}, std::int64_t{body},
                              std::int64_t{library_.rules.typeOf(body, entry.description)}, entry.rootWord,
                              std::int64_t{entry.firstSentence});
        }
        entries_.clear();
        for (const std::int64_t placeholder : {-1, 0}) {
            library_.sentence.run(document, std::int64_t{1}, std::string_view(" "), placeholder);
        }
        for (const Sentence& sentence : sentences_) {
            if (sentence.referenced) {
                // The service measures the sentence as it stands in a statement, quotes doubled.
                const auto quotes = std::count(sentence.text.begin(), sentence.text.end(), '\'');
                const auto length = static_cast<std::int64_t>(base::length(sentence.text)) + quotes;
                library_.sentence.run(document, length, sentence.text, std::int64_t{sentence.number});
            }
        }
        sentences_.clear();
        types_.clear();
    }

    bench::FloorLibrary library_;
    std::unordered_map<std::string, std::int64_t> rootWords_;
    std::unordered_map<std::string, Entry> entries_;  // of the document, by description and word
    std::vector<Sentence> sentences_;                 // of the document
    std::deque<std::string> types_;                   // what the entries' descriptions point at
    std::string word_;
    std::string key_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: tyindexer-floor LIBRARY < PATHS\n";
        return 2;
    }
    try {
        Floor floor(argv[1]);
        int refused = 0;
        for (std::string path; std::getline(std::cin, path);) {
            refused += floor.index(path) ? 0 : 1;
        }
        if (refused > 0) {
            std::cerr << "tyindexer-floor: " << refused << " files are no text\n";
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "tyindexer-floor: " << error.what() << '\n';
        return 1;
    }
}
