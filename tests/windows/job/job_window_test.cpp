// The whole service late bound, from a tick of the control window to the rows: what ADO is asked, and what
// the supervisor finds in the registry.
#include <windows.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>

#include "app/Main.h"
#include "windows/ado/ado_library.h"
#include "windows/job/job_fixture.h"

namespace job_tests {
namespace {

using ado_tests::Use;

class WindowsService : public JobFixture {
  protected:
    void SetUp() override {
        JobFixture::SetUp();
        if (made.library != nullptr) {
            window.emplace(*services, [this](std::int32_t id) { return indexer->DoIndex(id); });
        }
    }

    void tick() { waiter.advance(toolkit, std::chrono::seconds(1)); }

    void closeWindow() {
        toolkit.click("cmdExit");
        toolkit.processEvents();
    }

    std::vector<Use> takeRecord() {
        return dynamic_cast<ado_tests::StandInLibrary&>(*made.library).takeRecord();
    }

    /// The cursor, lock and options that a query is opened with.
    static Use howOpened(const std::vector<Use>& record, const std::string& statement) {
        for (const Use& use : record) {
            if (use.front() == "Recordset.Open" && use.at(1) == "BSTR " + statement) {
                return {use.begin() + 3, use.end()};
            }
        }
        return {"not opened"};
    }

    /// What the record tells from a query's opening up to the close of a recordset.
    static std::vector<Use> walkOver(const std::vector<Use>& record, const std::string& statement) {
        const auto open = std::find_if(record.begin(), record.end(), [&](const Use& use) {
            return use.front() == "Recordset.Open" && use.at(1) == "BSTR " + statement;
        });
        const auto close = std::find(open, record.end(), Use{"Recordset.Close"});
        return {open, close == record.end() ? close : close + 1};
    }

    static std::string registryText(const wchar_t* key, const wchar_t* name) {
        std::array<wchar_t, 256> text{};
        DWORD size = sizeof(text);
        const LSTATUS status =
            ::RegGetValueW(HKEY_CURRENT_USER, key, name, RRF_RT_REG_SZ, nullptr, text.data(), &size);
        return status == ERROR_SUCCESS ? std::filesystem::path(text.data()).string()
                                       : "error " + std::to_string(status);
    }

    static std::optional<DWORD> registryNumber(const wchar_t* key, const wchar_t* name) {
        DWORD number = 0;
        DWORD size = sizeof(number);
        return ::RegGetValueW(HKEY_CURRENT_USER, key, name, RRF_RT_REG_DWORD, nullptr, &number, &size) ==
                       ERROR_SUCCESS
                   ? std::optional(number)
                   : std::nullopt;
    }

    std::optional<app::Main> window;
};

/// The service where the stand-in tells what it was asked, in a registry that is nobody's.
class ObservedService : public WindowsService {};

TEST_P(WindowsService, WorksOffTheQueue) {
    enqueue(1);
    window->start();
    trace.clear();
    tick();
    EXPECT_EQ(lines({trace.begin(), trace.begin() + 3}),
              lines({"DELETE * FROM file_index_queue WHERE flag_dirty = true",
                     "SELECT id FROM file_index_queue WHERE flag_dirty = false",
                     "UPDATE file_index_queue SET flag_dirty = true WHERE id = 1"}));
    const Statements job(trace.begin() + 3, trace.end());
    EXPECT_EQ(lines(job),
              lines(queueEntry(1) + loadOfCaches() + begin() +
                    creation({"docs\\o''ki\\river.txt", "The Ki''s river", "05 Mar 2002 09:07:04"}) +
                    commit() + textOfRiver()));
    EXPECT_EQ(rows("SELECT COUNT(id) AS n FROM file_index_queue", {"n"}), Statements{"0"});
    EXPECT_EQ(rows("SELECT title FROM document_object", {"title"}), Statements{"The Ki's river"});
    closeWindow();
    EXPECT_EQ(messages, Statements{});
    EXPECT_EQ(process.ended, std::nullopt);
}

TEST_P(ObservedService, AsksAdoForWhatItsTraceTells) {
    enqueue(1);
    window->start();
    takeRecord();
    trace.clear();
    tick();
    EXPECT_EQ(lines(ado_tests::statementsOf(takeRecord())), lines(trace));
}

TEST_P(ObservedService, OpensEachQueryWithItsOwnCursorAndLock) {
    enqueue(1);
    window->start();
    takeRecord();
    tick();
    const std::vector<Use> record = takeRecord();
    const Use forward = {"I4 0", "I4 1", "I4 -1"};
    const Use fixed = {"I4 3", "I4 3", "I4 -1"};
    const Statements forwardQueries = {"SELECT id FROM file_index_queue WHERE flag_dirty = false",
                                       "SELECT type, description, comp_type FROM search_weight",
                                       "SELECT id, word FROM root_word", "SELECT term FROM word_noise"};
    for (const std::string& statement : forwardQueries) {
        EXPECT_EQ(howOpened(record, statement), forward) << statement;
    }
    EXPECT_EQ(howOpened(record, queueEntry(1).front()), fixed);
    std::size_t others = 0;
    for (const Use& use : record) {
        if (use.front() == "Connection.Execute") {
            EXPECT_EQ(Use(use.begin() + 2, use.end()), (Use{"-", "I4 -1"})) << use.at(1);
        } else if (use.front() == "Recordset.Open" && Use(use.begin() + 3, use.end()) != forward) {
            EXPECT_EQ(Use(use.begin() + 3, use.end()), fixed) << use.at(1);
            ++others;
        }
    }
    EXPECT_GT(others, 1U);
}

TEST_P(ObservedService, WalksOverTheRowsOfAQueryAndClosesIt) {
    const std::size_t terms = rows("SELECT term FROM word_noise", {"term"}).size();
    ASSERT_GT(terms, 1U);
    enqueue(1);
    window->start();
    takeRecord();
    tick();
    const std::string statement = "SELECT term FROM word_noise";
    // A field is asked for once and then follows the rows.
    std::vector<Use> walk = {{"Recordset.Open", "BSTR " + statement, "DISPATCH", "I4 0", "I4 1", "I4 -1"},
                             {"Recordset.EOF"},
                             {"Recordset.Fields"},
                             {"Fields.Item", "BSTR term"}};
    for (std::size_t i = 0; i < terms; ++i) {
        walk.insert(walk.end(), {{"Fields(term).Value"}, {"Recordset.MoveNext"}, {"Recordset.EOF"}});
    }
    walk.push_back({"Recordset.Close"});
    EXPECT_EQ(walkOver(takeRecord(), statement), walk);
}

TEST_P(ObservedService, OpensAConnectionOfItsOwnForEachJob) {
    enqueue(1);
    window->start();
    tick();
    closeWindow();
    int opened = 0;
    int closed = 0;
    for (const Use& use : takeRecord()) {
        opened += use.front() == "Connection.Open" ? 1 : 0;
        closed += use.front() == "Connection.Close" ? 1 : 0;
    }
    EXPECT_EQ(opened - 1, 2);  // the queue entry was written on one more
    EXPECT_EQ(opened, closed);
}

TEST_P(ObservedService, LeavesTheHeartbeatInTheRegistry) {
    enqueue(1);
    window->start();
    tick();
    const wchar_t* key = L"software\\orlent corporation\\tessaly\\service\\Indexer";
    EXPECT_EQ(registryText(key, L"LastTouch"), "16 Nov 2026 01:47:03");
    EXPECT_NE(registryNumber(key, L"DeadMansSwitchSeconds"), std::nullopt);
    EXPECT_EQ(registryNumber(key, L"IndexingQueueNumber"), 0U);  // nothing is in work any more
    EXPECT_EQ(registryText(key, L"IndexingKey"), "");
    EXPECT_EQ(registryNumber(L"software\\orlent corporation\\tessaly\\service\\Master",
                             L"DocsIndexedSinceCompaction"),
              1U);
}

INSTANTIATE_TEST_SUITE_P(StandIn, WindowsService, ::testing::Values(&ado_tests::standInLibrary));
INSTANTIATE_TEST_SUITE_P(StandIn, ObservedService, ::testing::Values(&ado_tests::standInLibrary));
INSTANTIATE_TEST_SUITE_P(Jet, WindowsService, ::testing::Values(&ado_tests::jetLibrary));

}  // namespace
}  // namespace job_tests
