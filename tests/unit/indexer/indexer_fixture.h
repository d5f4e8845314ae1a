// What the indexer's tests share: a library on disk, a scripted plug-in, and short ways to look at what came
// of it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "fakes/test_library.h"
#include "indexer/Indexer.h"

namespace indexer_tests {

/// What a scripted plug-in gives of a document.
struct ScriptedDocument {
    struct Typed {
        std::string type;
        std::string text;
    };
    struct Annotation {
        std::string type;
        std::string anchor;
        std::string text;
    };
    struct SubDocument {
        std::string temporaryPath;
        std::string path;
    };

    std::string title = "A title";
    base::Variant dataSize = std::int32_t{1000};
    base::Variant lastModified = *base::DateTime::parse("2002-03-05 09:07:04");
    std::string sourceUrl;
    std::vector<std::string> sentences = {"The river rises early.", "Boats go down the river."};
    bool countIsKnown = true;
    std::vector<Typed> importantText;
    std::vector<Annotation> annotations;
    std::vector<Typed> metaTags;
    std::vector<SubDocument> subDocuments;

    void answerThrough(fakes::ScriptedPlugin& plugin) const;
};

class IndexerTest : public testing::Test {
  protected:
    IndexerTest();

    /// Registers a plug-in for a data type and gives it, answering as the document does.
    fakes::ScriptedPlugin& givePlugin(const std::string& dataType, const std::string& progId,
                                      const ScriptedDocument& document);

    /// Indexes a document of type "txt" for user 7 on the fixture's connection.
    void indexDocument(const std::string& path = "/docs/river.txt");
    [[nodiscard]] static indexer::DocumentJob job(const std::string& path);

    /// Puts an entry into the queue and gives its id.
    std::int32_t queue(const std::string& path, int indexType = 2, const std::string& dataType = "txt");

    /// The first field of the first row.
    std::string value(const std::string& sql);
    int number(const std::string& sql) { return std::stoi(value(sql)); }

    /// The log without its dates.
    std::vector<std::string> log();
    bool logged(const std::string& line);

    /// The statements since the last call.
    std::vector<std::string> statements();

    fakes::TestLibrary library;
    indexer::Indexer indexer{library.services};
    infra::tysDataBase database{library.services};
};

}  // namespace indexer_tests
