#include "infra/tysDataBase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/runtime_error.h"
#include "fakes/test_library.h"

namespace {

using base::DateTime;
using base::Variant;
using ::testing::ElementsAre;

class TysDataBase : public ::testing::Test {
  protected:
    /// Initialises, and tells whether that ended the process as a failed start does.
    bool initialiseEndsTheProcess() {
        try {
            database.initialise();
        } catch (const fakes::ProcessEnded& ended) {
            return ended.status == platform::ExitStatus::failed;
        }
        return false;
    }

    fakes::TestLibrary library;
    infra::tysDataBase database{library.services};
};

/// An engine that notes what a connection is opened with and refuses it.
class RefusingEngine : public platform::DatabaseEngine {
  public:
    std::unique_ptr<platform::Connection> open(const platform::ConnectionSettings& settings) override {
        asked = settings;
        throw base::RuntimeError(base::ErrorNumber::databaseError, "Not a valid workgroup");
    }
    std::unique_ptr<platform::Recordset> createRecordset() override { return nullptr; }

    platform::ConnectionSettings asked;
};

TEST_F(TysDataBase, HandsOutTheSameConnectionEachTime) {
    database.initialise();
    EXPECT_FALSE(database.getConnection().empty());
    EXPECT_EQ(database.getConnection(), database.getConnection());
    database.getConnection()->execute("DELETE * FROM file_index_queue");
    EXPECT_THAT(library.trace, ElementsAre("DELETE * FROM file_index_queue"));
}

TEST_F(TysDataBase, HasNoConnectionBeforeItIsInitialised) {
    EXPECT_TRUE(database.getConnection().empty());
}

TEST_F(TysDataBase, DropsTheConnectionWhenItIsFinalised) {
    database.initialise();
    const auto connection = database.getConnection();
    database.finalise();
    EXPECT_TRUE(database.getConnection().empty());
    EXPECT_THROW(connection->execute("DELETE * FROM file_index_queue"), base::RuntimeError);
}

TEST_F(TysDataBase, RaisesError91WhenItIsFinalisedWithoutAConnection) {
    try {
        database.finalise();
        FAIL() << "nothing was raised";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), 91);
    }
}

TEST_F(TysDataBase, RaisesTheConnectionsErrorWhenItIsFinalisedAfterTheConnectionWasClosed) {
    database.initialise();
    database.getConnection()->close();
    EXPECT_THROW(database.finalise(), base::RuntimeError);
}

TEST_F(TysDataBase, OpensAgainAfterItWasFinalised) {
    database.initialise();
    database.finalise();
    database.initialise();
    EXPECT_EQ(database
                  .openRecordset("SELECT id FROM file_index_queue", platform::CursorType::fixed,
                                 platform::LockType::optimistic)
                  ->eof(),
              true);
}

TEST_F(TysDataBase, OpensRecordsetsOnItsConnectionOnly) {
    EXPECT_THROW(static_cast<void>(database.openRecordset("SELECT id FROM prv", platform::CursorType::fixed,
                                                          platform::LockType::optimistic)),
                 base::RuntimeError);
}

TEST_F(TysDataBase, TellsAFailedOpenAndEndsTheProcess) {
    const std::string missing = library.folder / "missing.db";
    library.settings.put(infra::serviceKey, "DataBasePath", missing);
    library.settings.put(infra::serviceKey, "DataBaseSecurityFile", R"(C:\security.mdw)");
    EXPECT_TRUE(initialiseEndsTheProcess());
    EXPECT_THAT(library.messages, ElementsAre("Unable to connect to database: \r\n" + missing +
                                              "\r\n\r\nPlease contact your Tessaly system administrator."));
    EXPECT_TRUE(database.getConnection().empty());
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(TysDataBase, LogsAFailedOpenWithTheDoubledDashBetweenThePaths) {
    RefusingEngine engine;
    platform::System system{library.settings, engine,          library.automation, library.toolkit,
                            library.files,    library.process, library.drives,     library.clock};
    infra::Services services(system);
    infra::tysDataBase refused(services);
    library.settings.put(infra::serviceKey, "DataBasePath", "a.mdb");
    library.settings.put(infra::serviceKey, "DataBaseSecurityFile", "b.mdw");
    EXPECT_THROW(refused.initialise(), fakes::ProcessEnded);
    EXPECT_THAT(library.logLines(), ElementsAre("Error: db:init: Not a valid workgroup-a.mdb--b.mdw-"));
}

TEST_F(TysDataBase, LogsInWithSixAndTenCharactersThatAreNeverLogged) {
    RefusingEngine engine;
    platform::System system{library.settings, engine,          library.automation, library.toolkit,
                            library.files,    library.process, library.drives,     library.clock};
    infra::Services services(system);
    infra::tysDataBase refused(services);
    EXPECT_THROW(refused.initialise(), fakes::ProcessEnded);
    EXPECT_EQ(engine.asked.dataSource, library.path);
    EXPECT_EQ(engine.asked.systemDatabase, "");
    EXPECT_EQ(engine.asked.user.size(), 6U);
    EXPECT_EQ(engine.asked.password.size(), 10U);
    EXPECT_EQ(library.logText().find(engine.asked.user), std::string::npos);
    EXPECT_EQ(library.logText().find(engine.asked.password), std::string::npos);
}

TEST_F(TysDataBase, NamesAnEmptyPathWhenThePathIsMissing) {
    library.settings.put(infra::serviceKey, "DataBasePath", "");
    EXPECT_TRUE(initialiseEndsTheProcess());
    EXPECT_THAT(library.messages,
                ElementsAre("Unable to connect to database: \r\n\r\n\r\nPlease contact your "
                            "Tessaly system administrator."));
}

TEST_F(TysDataBase, DoublesQuotesForTextLiterals) {
    EXPECT_EQ(database.sanitise("O'Brien"), "O''Brien");
    EXPECT_EQ(database.sanitise(""), "");
    EXPECT_EQ(database.sanitise("''"), "''''");
    EXPECT_EQ(database.sanitise(R"(no "other" \ character; --)"), R"(no "other" \ character; --)");
}

TEST_F(TysDataBase, CutsBeforeItDoublesQuotes) {
    EXPECT_EQ(database.sanitiseToLength("abc'def", 4), "abc''");
    EXPECT_EQ(database.sanitiseToLength("abc'def", 3), "abc");
    EXPECT_EQ(database.sanitiseToLength("abc'def", 10), "abc''def");
    EXPECT_EQ(database.sanitiseToLength("abc'def", 7), "abc''def");
    EXPECT_EQ(database.sanitiseToLength("abc", 0), "");
    EXPECT_EQ(database.sanitiseToLength("", 5), "");
}

TEST_F(TysDataBase, CutsAtCharactersNotBytes) {
    EXPECT_EQ(database.sanitiseToLength("né'à\xF0\x9F\x98\x80z", 5), "né''à\xF0\x9F\x98\x80");
    EXPECT_EQ(database.sanitise("l'été"), "l''été");
}

TEST_F(TysDataBase, WritesDatesDayFirstWithoutSeconds) {
    EXPECT_EQ(database.ausDateTime(*DateTime::parse("2002-03-05 09:07:04")), "5/3/2002 9:07");
    EXPECT_EQ(database.ausDateTime(*DateTime::parse("2003-01-01 10:05:00")), "1/1/2003 10:05");
    EXPECT_EQ(database.ausDateTime("1 Jan 2003 23:30"), "1/1/2003 23:30");
    EXPECT_EQ(database.ausDateTime(*DateTime::parse("2003-12-31")), "31/12/2003 0:00");
}

TEST_F(TysDataBase, WritesDatesExplicitly) {
    EXPECT_EQ(database.explicitDateTime(*DateTime::parse("2002-03-05 09:07:04")), "05, Mar 2002 09:07:04");
    EXPECT_EQ(database.explicitDateTime("31/12/2003 23:30"), "31, Dec 2003 23:30:00");
}

TEST_F(TysDataBase, WritesDatesMonthFirstUnpadded) {
    EXPECT_EQ(database.usDateTime(*DateTime::parse("2002-03-05 09:07:04")), "3/5/2002 9:7:4");
    EXPECT_EQ(database.usDateTime(*DateTime::parse("2003-12-31")), "12/31/2003 0:0:0");
}

TEST_F(TysDataBase, WritesNothingForWhatIsNoDate) {
    for (const Variant& value :
         {Variant("soon"), Variant(""), Variant(), Variant(base::Null{}), Variant(2.5)}) {
        EXPECT_EQ(database.ausDateTime(value), "");
        EXPECT_EQ(database.explicitDateTime(value), "");
        EXPECT_EQ(database.usDateTime(value), "");
    }
}

}  // namespace
