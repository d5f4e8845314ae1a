// What the service has created through COM is gone when it is done with it: the plug-in after its document,
// the objects of ADO with their connection, after an error too.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <optional>

#include "app/Main.h"
#include "platform/windows/ado_engine.h"
#include "windows/ado/ado_library.h"
#include "windows/com_server/live_objects.h"
#include "windows/job/job_fixture.h"

namespace job_tests {
namespace {

struct LiveObjects {
    long plugins = com_server::liveObjectsOf(L"test_plugin.dll");
    long ado = com_server::liveObjectsOf(L"test_adodb.dll");

    bool operator==(const LiveObjects&) const = default;
};

std::ostream& operator<<(std::ostream& out, const LiveObjects& live) {
    return out << live.plugins << " of plug-ins, " << live.ado << " of ADO";
}

constexpr LiveObjects none{0, 0};

class References : public JobFixture {
  protected:
    void SetUp() override {
        if (!ado_tests::isStandInRegistered()) {
            GTEST_SKIP() << "only the stand-in tells how many of its objects there are";
        }
        JobFixture::SetUp();
        dynamic_cast<platform::windows::AdoEngine&>(made.library->engine())
            .setTrace([this](std::string_view statement) {
                trace.emplace_back(statement);
                most.plugins = std::max(most.plugins, LiveObjects().plugins);
                most.ado = std::max(most.ado, LiveObjects().ado);
            });
        ASSERT_EQ(LiveObjects(), none);
    }

    /// Carries a job out, of which it is known that it used ADO.
    void carryOut(int indexType) {
        most = none;
        statementsOf(indexType);
        EXPECT_GT(most.ado, 3);  // the connection, the queue's recordset and its fields at least
    }

    void breakLibrary(const char* statement) {
        made.library->engine().open(made.library->settings())->execute(statement);
    }

    LiveObjects most = none;  // at once, while a job ran
};

TEST_P(References, OfAJobAreGivenBack) {
    writeRiver("# River rules\n> bridge | see pier\n@user Low tide\n");
    carryOut(1);
    EXPECT_GT(most.plugins, 0);
    EXPECT_EQ(LiveObjects(), none);
    carryOut(2);
    EXPECT_GT(most.plugins, 0);
    EXPECT_EQ(LiveObjects(), none);
    carryOut(3);
    EXPECT_EQ(LiveObjects(), none);
}

TEST_P(References, OfADocumentInTheDocumentAreGivenBack) {
    work.folder.write("letter.txt", "Title: Letter\nThe boat sails.\n");
    writeRiver("+ letter.txt\n");
    carryOut(1);
    EXPECT_GT(most.plugins, 1);
    EXPECT_EQ(LiveObjects(), none);
}

TEST_P(References, OfAPluginThatFailsInTheMiddleAreGivenBack) {
    writeRiver("! The page is torn\n");
    carryOut(1);
    EXPECT_GT(most.plugins, 0);
    EXPECT_NE(logText().find("The page is torn"), std::string::npos) << logText();
    EXPECT_EQ(LiveObjects(), none);
}

TEST_P(References, OfAnObjectThatIsNoPluginAreGivenBack) {
    registerPlugin("txt", "TyTest.Probe");
    statementsOf(1);
    EXPECT_NE(logText().find("SetDocumentID failed"), std::string::npos) << logText();
    EXPECT_EQ(LiveObjects(), none);
}

TEST_P(References, OfAJobWhoseStatementsFailAreGivenBack) {
    breakLibrary("ALTER TABLE document_object RENAME TO somewhere_else");
    enqueue(1);
    EXPECT_THROW(indexer->DoIndex(lastEntry), fakes::ProcessEnded);
    EXPECT_EQ(LiveObjects(), none);
}

TEST_P(References, OfALibraryThatCannotBeOpenedAreGivenBack) {
    platform::ConnectionSettings missing = made.library->settings();
    missing.dataSource += ".missing";
    EXPECT_THROW(made.library->engine().open(missing), base::RuntimeError);
    EXPECT_EQ(LiveObjects(), none);
}

TEST_P(References, OfTheServiceAreGivenBackWithItsWindow) {
    std::optional<app::Main> window(std::in_place, *services,
                                    [this](std::int32_t id) { return indexer->DoIndex(id); });
    enqueue(1);
    window->start();
    waiter.advance(toolkit, std::chrono::seconds(1));
    EXPECT_GT(most.plugins, 0);
    EXPECT_EQ(LiveObjects().plugins, 0);
    toolkit.click("cmdExit");
    toolkit.processEvents();
    EXPECT_EQ(LiveObjects(), none);
}

INSTANTIATE_TEST_SUITE_P(StandIn, References, ::testing::Values(&ado_tests::standInLibrary));

}  // namespace
}  // namespace job_tests
