// Which members of ADO are used, in which order and with what.
#include <gtest/gtest.h>
#include <windows.h>
// windows.h stands first: the automation headers need it.
#include <oleauto.h>

#include "base/runtime_error.h"
#include "platform/sqlite/sqlite_engine.h"
#include "platform/windows/ado_connection.h"
#include "platform/windows/dispatch.h"
#include "windows/ado/ado_library.h"

namespace {

using ado_tests::StandInLibrary;
using ado_tests::Use;
using platform::CursorType;
using platform::LockType;
using Record = std::vector<Use>;

class AdoMembers : public testing::Test {
  protected:
    void SetUp() override {
        if (!ado_tests::isStandInRegistered()) {
            GTEST_SKIP() << "only the stand-in tells what it was asked";
        }
        library_ = std::make_unique<StandInLibrary>();
    }

    std::unique_ptr<platform::Connection> connect() { return library_->engine().open(library_->settings()); }

    static std::string text(const std::string& value) {
        std::string escaped;
        for (const char c : value) {
            escaped += c == '\\' ? "\\\\" : std::string(1, c);
        }
        return "BSTR " + escaped;
    }

    std::unique_ptr<StandInLibrary> library_;
};

TEST_F(AdoMembers, OpenALibraryByItsProviderAndTwoProperties) {
    const auto connection = connect();
    EXPECT_EQ(library_->takeRecord(),
              (Record{{"Connection.Provider=", "BSTR Microsoft.Jet.OLEDB.4.0"},
                      {"Connection.Properties"},
                      {"Properties.Item", "BSTR Data Source"},
                      {"Property.Value=", text(library_->path())},
                      {"Connection.Properties"},
                      {"Properties.Item", "BSTR Jet OLEDB:System database"},
                      {"Property.Value=", text(library_->settings().systemDatabase)},
                      {"Connection.Open", "BSTR ", "BSTR reader", "BSTR password", "I4 -1"}}));
}

TEST_F(AdoMembers, SetPropertiesThatAreEmpty) {
    platform::ConnectionSettings settings = library_->settings();
    settings.systemDatabase.clear();
    const auto connection = library_->engine().open(settings);
    EXPECT_EQ(library_->takeRecord().at(6), (Use{"Property.Value=", "BSTR "}));
}

TEST_F(AdoMembers, ExecuteAStatementUnchangedWithoutACountOfRecords) {
    const auto connection = connect();
    library_->takeRecord();
    const std::string statement = "DELETE * FROM  root_word\tWHERE word = 'caf\xC3\xA9 \\ 100%' ";
    connection->execute(statement);
    const Record record = library_->takeRecord();
    EXPECT_EQ(record, (Record{{"Connection.Execute",
                               "BSTR DELETE * FROM  root_word\\tWHERE word = 'caf\xC3\xA9 \\\\ 100%' ", "-",
                               "I4 -1"}}));
}

TEST_F(AdoMembers, RunTransactions) {
    const auto connection = connect();
    library_->takeRecord();
    connection->beginTrans();
    connection->commitTrans();
    connection->beginTrans();
    connection->rollbackTrans();
    EXPECT_EQ(library_->takeRecord(), (Record{{"Connection.BeginTrans"},
                                              {"Connection.CommitTrans"},
                                              {"Connection.BeginTrans"},
                                              {"Connection.RollbackTrans"}}));
}

TEST_F(AdoMembers, RollATransactionBackBeforeTheConnectionCloses) {
    auto connection = connect();
    connection->beginTrans();
    library_->takeRecord();
    connection->close();
    EXPECT_EQ(library_->takeRecord(), (Record{{"Connection.RollbackTrans"}, {"Connection.Close"}}));
    connection.reset();
    EXPECT_EQ(library_->takeRecord(), Record{});
}

TEST_F(AdoMembers, CloseAConnectionWhoseTransactionCannotBeRolledBack) {
    const auto connection = connect();
    connection->beginTrans();
    IDispatch* shared = dynamic_cast<platform::windows::AdoConnection&>(*connection).object().object();
    shared->AddRef();
    platform::windows::Dispatch object(shared, "ADODB.Connection");
    object.call("RollbackTrans");  // behind its back
    library_->takeRecord();
    EXPECT_THROW(connection->close(), base::RuntimeError);
    EXPECT_EQ(library_->takeRecord(), (Record{{"Connection.RollbackTrans"}, {"Connection.Close"}}));
    EXPECT_EQ(object.get("State"), base::Variant(std::int32_t{0}));
}

TEST_F(AdoMembers, OpenARecordsetWithItsCursorAndLock) {
    const auto connection = connect();
    library_->takeRecord();
    auto rows = library_->engine().createRecordset();
    rows->open("SELECT id FROM file_index_queue WHERE flag_dirty = false", *connection,
               CursorType::forwardOnly, LockType::readOnly);
    rows->close();
    rows->open("SELECT * FROM prv_rules", *connection, CursorType::fixed, LockType::optimistic);
    rows.reset();
    EXPECT_EQ(library_->takeRecord(),
              (Record{{"Recordset.Open", "BSTR SELECT id FROM file_index_queue WHERE flag_dirty = false",
                       "DISPATCH", "I4 0", "I4 1", "I4 -1"},
                      {"Recordset.Close"},
                      {"Recordset.Open", "BSTR SELECT * FROM prv_rules", "DISPATCH", "I4 3", "I4 3", "I4 -1"},
                      {"Recordset.Close"}}));
}

TEST_F(AdoMembers, AskForAFieldOncePerRecordset) {
    const auto connection = connect();
    connection->execute("INSERT INTO root_word ( word ) VALUES( 'a')");
    connection->execute("INSERT INTO root_word ( word ) VALUES( 'b')");
    library_->takeRecord();
    const auto rows = connection->query("SELECT word FROM root_word");
    EXPECT_EQ(rows->field("word").toText(), "a");
    rows->moveNext();
    EXPECT_EQ(rows->field("word").toText(), "b");
    EXPECT_EQ(library_->takeRecord(),
              (Record{{"Connection.Execute", "BSTR SELECT word FROM root_word", "-", "I4 -1"},
                      {"Recordset.Fields"},
                      {"Fields.Item", "BSTR word"},
                      {"Fields(word).Value"},
                      {"Recordset.MoveNext"},
                      {"Fields(word).Value"}}));
}

TEST_F(AdoMembers, WalkOverRowsToTheEnd) {
    const auto connection = connect();
    connection->execute("INSERT INTO root_word ( word ) VALUES( 'a')");
    library_->takeRecord();
    auto rows = library_->engine().createRecordset();
    rows->open("SELECT id, word FROM root_word", *connection, CursorType::forwardOnly, LockType::readOnly);
    for (; !rows->eof(); rows->moveNext()) {
        static_cast<void>(rows->field("id"));
        static_cast<void>(rows->field("word"));
        static_cast<void>(rows->field("id"));
    }
    rows->close();
    EXPECT_EQ(library_->takeRecord(), (Record{{"Recordset.Open", "BSTR SELECT id, word FROM root_word",
                                               "DISPATCH", "I4 0", "I4 1", "I4 -1"},
                                              {"Recordset.EOF"},
                                              {"Recordset.Fields"},
                                              {"Fields.Item", "BSTR id"},
                                              {"Fields(id).Value"},
                                              {"Recordset.Fields"},
                                              {"Fields.Item", "BSTR word"},
                                              {"Fields(word).Value"},
                                              {"Fields(id).Value"},
                                              {"Recordset.MoveNext"},
                                              {"Recordset.EOF"},
                                              {"Recordset.Close"}}));
}

/// The record leaves nothing out: what the service never reads is in it too when it is read.
TEST_F(AdoMembers, AreRecordedWhenTheServiceHasNoUseForThem) {
    using platform::windows::Dispatch;
    Dispatch connection = Dispatch::create("ADODB.Connection");
    static_cast<void>(connection.get("State"));
    static_cast<void>(connection.get("Provider"));
    static_cast<void>(Dispatch::create("ADODB.Recordset").get("State"));
    EXPECT_EQ(library_->takeRecord(),
              (Record{{"Connection.State"}, {"Connection.Provider"}, {"Recordset.State"}}));
}

TEST_F(AdoMembers, TellEveryStatementToTheTraceBeforeItRuns) {
    auto& engine = dynamic_cast<platform::windows::AdoEngine&>(library_->engine());
    std::vector<std::string> traced;
    engine.setTrace([&traced](std::string_view statement) { traced.emplace_back(statement); });
    const auto connection = connect();
    library_->takeRecord();
    connection->beginTrans();
    connection->execute("DELETE * FROM root_word WHERE id = 1");
    connection->commitTrans();
    connection->beginTrans();
    connection->rollbackTrans();
    static_cast<void>(connection->query("SELECT id FROM root_word"));
    EXPECT_THROW(connection->execute("nonsense"), base::RuntimeError);
    EXPECT_EQ(traced, ado_tests::statementsOf(library_->takeRecord()));
    EXPECT_EQ(traced.size(), 7U);
    engine.setTrace({});
    connection->execute("DELETE * FROM root_word WHERE id = 2");
    EXPECT_EQ(traced.size(), 7U);
}

TEST_F(AdoMembers, RaiseTheProvidersErrorWithItsDescription) {
    platform::ConnectionSettings settings = library_->settings();
    settings.dataSource = library_->path() + ".missing";
    try {
        library_->engine().open(settings);
        FAIL() << "no error";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.description().find("The library \""), 0U) << error.description();
        EXPECT_EQ(error.number(), static_cast<int>(0x80040E14));
    }
}

TEST_F(AdoMembers, RefuseARecordsetOnAConnectionOfAnotherEngine) {
    platform::SqliteEngine other;
    const auto connection = other.open({library_->path(), {}, {}, {}});
    const auto rows = library_->engine().createRecordset();
    EXPECT_THROW(rows->open("SELECT id FROM root_word", *connection, CursorType::fixed, LockType::optimistic),
                 base::RuntimeError);
}

}  // namespace
