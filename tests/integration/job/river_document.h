// The document of the tests of whole jobs, and what of it is to reach the library.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "integration/job/expected_statements.h"

namespace job_tests {

// Kinds of text as every new library has them.
inline constexpr int normalType = 1;
inline constexpr int titleType = 2;
inline constexpr int pathType = 3;
inline constexpr int headingType = 4;
inline constexpr int commentType = 20;
inline constexpr int userTagType = 40;

/// It has two sentences, a title with an apostrophe, and a path whose words are docs, ki, river and txt.
class River {
  public:
    /// The path as it stands in statements.
    explicit River(std::string path) : path_(std::move(path)) {}

    /// What follows the setup of the river document: words, their commit and the end of its entry.
    [[nodiscard]] Statements textOfRiver() const {
        return newWords({"river", "ki", "rises", "boat"}) + importantText("title") +
               importantText("document_path") + newWords({"docs", "txt"}) + commitOfRiver();
    }

    static std::vector<WordRow> bodyRows() {
        return {{2, 2, normalType, river, 1},
                {1, 2, normalType, ki, 1},
                {1, 2, normalType, rises, 1},
                {1, 2, normalType, boat, 2}};
    }
    static std::vector<WordRow> titleRows() {
        return {{1, 2, titleType, ki, 0}, {1, 2, titleType, river, 0}};
    }
    static std::vector<WordRow> pathRows() {
        return {{1, 2, pathType, docs, 0},
                {1, 2, pathType, ki, 0},
                {1, 2, pathType, river, 0},
                {1, 2, pathType, txt, 0}};
    }
    static std::vector<std::string> bodySentences() {
        return {"28,'The river Ki rises; a ''q''.',1", "16,'A boat, a river.',2"};
    }

    [[nodiscard]] Statements commitOfRiver() const {
        return words(joined({bodyRows(), titleRows(), pathRows()})) + sentences(bodySentences()) +
               leaveQueue(path_);
    }

    static std::vector<WordRow> joined(const std::vector<std::vector<WordRow>>& parts) {
        std::vector<WordRow> all;
        for (const auto& part : parts) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    /// Root words in the order in which the river document brings them.
    enum RootWord : int { river = 1, ki, rises, boat, docs, txt, next };

    /// The same with a heading, a comment on an anchor, and a tag of the user.
    [[nodiscard]] Statements textOfRiverWithExtras() const {
        enum : int { rules = next, bridge, see, pier, low, tide };
        const std::vector<WordRow> extraRows = {{1, 2, headingType, river, 3},  {1, 2, headingType, rules, 3},
                                                {1, 3, commentType, bridge, 4}, {1, 3, commentType, see, 5},
                                                {1, 3, commentType, pier, 5},   {1, 4, userTagType, low, -1},
                                                {1, 4, userTagType, tide, -1}};
        return newWords({"river", "ki", "rises", "boat"}) + importantText("title") +
               importantText("document_path") + newWords({"docs", "txt"}) + importantText("heading") +
               newWords({"rules"}) + annotationSection("comment", 1) + newWords({"bridge"}) +
               annotationSection("comment", 1) + newWords({"see", "pier"}) + annotationPoints("comment", 11) +
               lookForTag() + newWords({"low", "tide"}) + metaTag("user", {"low", "tide"}) +
               words(joined({bodyRows(), titleRows(), pathRows(), extraRows})) +
               sentences({bodySentences()[0], bodySentences()[1], "11,'River rules',3", "6,'bridge',4",
                          "8,'see pier',5"}) +
               leaveQueue(path_);
    }

  private:
    std::string path_;
};

/// As one text, of which a failure shows the lines that differ.
inline std::string lines(const Statements& statements) {
    std::string text;
    for (const std::string& statement : statements) {
        text.append(statement).append("|\n");
    }
    return text;
}

}  // namespace job_tests
