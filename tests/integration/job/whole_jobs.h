// Carries out whole jobs of every kind, so that tests can look at what the database was asked meanwhile.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "unit/indexer/indexer_fixture.h"

namespace job_tests {

class WholeJobs : public indexer_tests::IndexerTest {
  protected:
    using ScriptedDocument = indexer_tests::ScriptedDocument;
    enum IndexType : int { anew = 1, known = 2, moved = 3 };

    void run(const std::string& path, IndexType type, const std::string& dataType = "txt") {
        ASSERT_TRUE(indexer.DoIndex(queue(path, type, dataType))) << path;
    }

    /// New, indexed again, retitled, moved, replaced, failed and nested documents.
    void runJobsOfEveryKind() {
        givePlugin("txt", "Test.Text", documentWithEverything());
        run("/docs/o'ki/river.txt", anew);
        run("/docs/o'ki/river.txt", known);
        library.exec("UPDATE document_object SET flag_user_set_title = 1");
        run("/docs/o'ki/river.txt", known);
        run("/docs/o'ki/river.txt", moved);
        run("/docs/o'ki/river.txt", anew);
        run(R"(\\host\share\river.txt)", known);
        library.drives.shares["Q:"] = R"(\\host\share)";
        run(R"(\\host\share\boat.txt)", known);
        runParent();
        runFailing();
    }

  private:
    static ScriptedDocument documentWithEverything() {
        ScriptedDocument document;
        document.importantText = {{"heading", "River rules"}, {"no such kind", "Low water"}};
        document.annotations = {{"Comment", "bridge", "see pier"}, {"general_comment", "", "all of it"}};
        document.metaTags = {{"user", "Low tide"}, {"author", "Ann Heron"}};
        return document;
    }

    void runParent() {
        ScriptedDocument message = documentWithEverything();
        message.subDocuments = {{library.folder.write("attached.txt", "one"), ""}, {"", "/docs/second.txt"}};
        fakes::ScriptedPlugin& mail = givePlugin("eml", "Test.Mail", message);
        mail.methods["GetNumberofSubDocuments"] = [&mail](std::span<base::Variant>) -> base::Variant {
            return mail.created % 3 == 1 ? std::int32_t{2} : std::int32_t{0};
        };
        run("/mail/a.eml", anew, "eml");
        run("/mail/a.eml", known, "eml");
        run("/mail/a.eml", moved, "eml");
    }

    void runFailing() {
        givePlugin("Default", "Test.Default", ScriptedDocument());
        fakes::ScriptedPlugin& refusing = givePlugin("pdf", "Test.Refusing", ScriptedDocument());
        refusing.answer("SetDocumentID", false);
        refusing.answer("GetLastErrorNumber", std::int32_t{5});
        run("/docs/refused.pdf", known, "pdf");
        run("/docs/refused.pdf", known, "pdf");
    }
};

}  // namespace job_tests
