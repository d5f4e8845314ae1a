#include "relevance/tysPRV.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/runtime_error.h"
#include "fakes/test_library.h"

namespace {

using base::DateTime;
using base::Variant;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::int32_t document = 12;
constexpr std::int32_t user = 7;

const std::string shareQuery =
    "SELECT prv.last_prv, prv.last_modified, prv.hard_prv, document_share.id_annotation FROM document_share "
    "INNER JOIN prv ON document_share.id_prv = prv.id WHERE (((document_share.id_user)=7) AND "
    "((document_share.id_document)=12))";
const std::string dataTypeQuery = "SELECT data_type FROM document_object WHERE document_object.id = 12";
const std::string halfLifeQuery =
    "SELECT decay_halflife FROM prv_rules WHERE data_type = 'eml' OR data_type = 'zzzzDef' ORDER BY "
    "data_type "
    "ASC";

/// A library with one document of the type "eml" (half-life 10, new ones worth 40; by default 5 and 100),
/// shared by one user and worth 100 since 1 January 2026.
class TysPRV : public ::testing::Test {
  protected:
    void SetUp() override {
        library.exec(
            "DELETE FROM prv_rules;"
            "INSERT INTO prv_rules (data_type, decay_halflife, creation_prv) VALUES ('zzzzDef', 5, 100);"
            "INSERT INTO prv_rules (data_type, decay_halflife, creation_prv) VALUES ('eml', 10, 40);"
            "INSERT INTO document_object (id, data_type) VALUES (12, 'eml');"
            "INSERT INTO prv (id, last_prv, last_modified) VALUES (3, 100, '2026-01-01 12:00:00');"
            "INSERT INTO document_share (id_document, id_user, id_prv) VALUES (12, 7, 3);");
        database.initialise();
        prv.setDataSource(database);
        at("2026-01-11 12:00:00");
    }

    void at(const char* moment) { library.clock.moment = *DateTime::parse(moment); }

    Variant decay(bool withAnnotation = false) {
        return prv.decayPRV(document, user, Variant(), withAnnotation);
    }

    fakes::TestLibrary library;
    infra::tysDataBase database{library.services};
    relevance::tysPRV prv;
};

TEST_F(TysPRV, HalvesWithEveryHalfLife) {
    EXPECT_EQ(decay(), Variant(50.0));
    at("2026-01-21 00:00:00");
    EXPECT_EQ(decay(), Variant(25.0));
    EXPECT_THAT(library.trace, ElementsAre(shareQuery, dataTypeQuery, halfLifeQuery, shareQuery,
                                           dataTypeQuery, halfLifeQuery));
}

TEST_F(TysPRV, StaysAWholeNumberOnTheDayOfTheChange) {
    at("2026-01-01 23:59:59");
    EXPECT_EQ(decay(), Variant(std::int32_t{100}));
    EXPECT_THAT(library.trace, ElementsAre(shareQuery));
}

TEST_F(TysPRV, CountsMidnightsNotHours) {
    library.exec("UPDATE prv SET last_modified = '2026-01-01 23:59:00'");
    library.exec("UPDATE prv_rules SET decay_halflife = 1");
    at("2026-01-02 00:01:00");
    EXPECT_EQ(decay(), Variant(50.0));
}

TEST_F(TysPRV, DoesNotRoundADecayedValue) {
    at("2026-01-02 00:00:00");
    EXPECT_DOUBLE_EQ(decay().toDouble(), 93.303299153680742);
}

TEST_F(TysPRV, NeverDecaysAChangeInTheFuture) {
    at("2025-12-01 00:00:00");
    EXPECT_EQ(decay(), Variant(std::int32_t{100}));
}

TEST_F(TysPRV, WritesNothingWhenAValueIsRead) {
    const auto before = library.rows("SELECT * FROM prv");
    EXPECT_EQ(prv.getPRV(document, user, Variant(), false), Variant(50.0));
    EXPECT_EQ(library.rows("SELECT * FROM prv"), before);
    EXPECT_EQ(library.value("SELECT COUNT(*) FROM prv_history"), "0");
}

TEST_F(TysPRV, GivesTheLastValueWhileAFixedOneIsHeld) {
    library.exec("UPDATE prv SET hard_prv = 0");
    EXPECT_EQ(decay(), Variant(std::int32_t{100}));
    EXPECT_THAT(library.trace, ElementsAre(shareQuery));
    library.exec(
        "UPDATE prv SET hard_prv = 77; UPDATE document_share SET id_annotation = 5;"
        "INSERT INTO annotation (id, points) VALUES (5, 8)");
    at("2036-01-01 00:00:00");
    EXPECT_EQ(decay(), Variant(std::int32_t{100}));
    EXPECT_EQ(decay(true), Variant(std::int32_t{108}));
}

TEST_F(TysPRV, AnEmptyFixedValueIsNone) {
    library.exec("UPDATE prv SET hard_prv = ''");
    EXPECT_EQ(decay(), Variant(50.0));
}

TEST_F(TysPRV, AddsTheAnnotationsPointsBeforeTheDecay) {
    library.exec(
        "UPDATE document_share SET id_annotation = 5; INSERT INTO annotation (id, points) VALUES (5, 20)");
    EXPECT_EQ(decay(true), Variant(60.0));
    EXPECT_THAT(library.trace, ElementsAre(shareQuery, "SELECT points FROM annotation WHERE id = 5",
                                           dataTypeQuery, halfLifeQuery));
    EXPECT_EQ(decay(false), Variant(50.0));
}

TEST_F(TysPRV, ReadsNoAnnotationWhereThereIsNone) {
    at("2026-01-01 23:00:00");
    decay(true);
    library.exec("UPDATE document_share SET id_annotation = NULL");
    EXPECT_EQ(decay(true), Variant(std::int32_t{100}));
    EXPECT_THAT(library.trace, ElementsAre(shareQuery, shareQuery));
}

TEST_F(TysPRV, AMissingAnnotationIsWorthNothing) {
    library.exec("UPDATE document_share SET id_annotation = 99");
    EXPECT_EQ(decay(true), Variant(50.0));
}

TEST_F(TysPRV, RoundsTheStoredValueHalvesToEven) {
    at("2026-01-01 23:00:00");
    library.exec("UPDATE prv SET last_prv = 2.5");
    EXPECT_EQ(decay(), Variant(std::int32_t{2}));
    library.exec("UPDATE prv SET last_prv = 3.5");
    EXPECT_EQ(decay(), Variant(std::int32_t{4}));
}

TEST_F(TysPRV, AShareThatDoesNotExistIsWorthNothing) {
    EXPECT_EQ(prv.decayPRV(document, 8, Variant(), true), Variant(std::int32_t{0}));
    EXPECT_EQ(library.trace.size(), 1U);
}

TEST_F(TysPRV, TakesTheDefaultHalfLifeForATypeWithoutRules) {
    library.exec("UPDATE document_object SET data_type = 'txt'");
    EXPECT_EQ(decay(), Variant(25.0));
}

TEST_F(TysPRV, TakesTheDefaultHalfLifeForATypeThatSortsBehindIt) {
    library.exec(
        "UPDATE document_object SET data_type = 'zzzzzz';"
        "INSERT INTO prv_rules (data_type, decay_halflife, creation_prv) VALUES ('zzzzzz', 1, 1)");
    EXPECT_EQ(decay(), Variant(25.0));
}

TEST_F(TysPRV, TakesTheDefaultHalfLifeForADocumentWithoutAType) {
    library.exec("UPDATE document_object SET data_type = NULL");
    EXPECT_EQ(decay(), Variant(25.0));
}

TEST_F(TysPRV, DoesNotDecayWithoutADocumentWithoutRulesOrWithAHalfLifeOfZero) {
    library.exec("UPDATE prv_rules SET decay_halflife = 0");
    EXPECT_EQ(decay(), Variant(std::int32_t{100}));
    library.exec("DELETE FROM prv_rules");
    EXPECT_EQ(decay(), Variant(std::int32_t{100}));
    library.exec("DELETE FROM document_object");
    EXPECT_EQ(decay(), Variant(std::int32_t{100}));
    EXPECT_EQ(library.trace.back(), dataTypeQuery);
}

TEST_F(TysPRV, DecaysEveryUseOfASearchTerm) {
    library.exec(
        "INSERT INTO search_term_history (id_search_term, time_stamp) VALUES (4, '2026-01-01 23:59:00'),"
        "(4, '2026-01-06 00:01:00'), (5, '2026-01-07 00:00:00'), (4, '2026-01-11 12:00:00')");
    EXPECT_DOUBLE_EQ(prv.getSearchPRV(4, *DateTime::parse("2026-01-11 12:00:00")), 7.5);
    EXPECT_THAT(
        library.trace,
        ElementsAre("SELECT decay_halflife FROM prv_rules WHERE data_type = 'zzzzDef'",
                    "SELECT time_stamp FROM search_term_history WHERE id_search_term = 4 AND time_stamp "
                    "< '2026-01-11 12:00:00' ORDER BY id ASC"));
}

TEST_F(TysPRV, ASearchTermThatWasNeverUsedIsWorthNothing) {
    EXPECT_EQ(prv.getSearchPRV(4, library.clock.moment), 0.0);
}

TEST_F(TysPRV, TheUsesOfASearchTermAddUpWithoutAHalfLife) {
    library.exec(
        "UPDATE prv_rules SET decay_halflife = 0;"
        "INSERT INTO search_term_history (id_search_term, time_stamp) VALUES (4, '2020-01-01 00:00:00'),"
        "(4, '2021-01-01 00:00:00')");
    EXPECT_EQ(prv.getSearchPRV(4, library.clock.moment), 20.0);
}

TEST_F(TysPRV, StoresAChangeAsTheNewBaseOfTheDecayWithItsHistory) {
    // 47.5 after ten days; 44.5 rounds to the even 44.
    library.exec("UPDATE prv SET last_prv = 95; UPDATE prv_rules SET decay_halflife = 10");
    library.exec(
        "UPDATE document_share SET id_annotation = 5; INSERT INTO annotation (id, points) VALUES (5, 20)");
    prv.changePRV(document, user, std::int32_t{-3}, "Read");
    EXPECT_THAT(
        library.trace,
        ElementsAre("SELECT id_prv FROM document_share WHERE document_share.id_document = 12 AND "
                    "document_share.id_user = 7",
                    shareQuery, dataTypeQuery, halfLifeQuery,
                    "UPDATE prv SET last_prv = 44, last_modified = '2026-01-11 12:00:00' WHERE id = 3",
                    "INSERT INTO prv_history (id_prv, time_stamp, action_description, prv_value ) VALUES (3, "
                    "'2026-01-11 12:00:00', 'Read', 44 ) "));
    EXPECT_THAT(library.rows("SELECT last_prv, last_modified FROM prv"),
                ElementsAre(ElementsAre("44", "2026-01-11 12:00:00")));
    EXPECT_THAT(library.rows("SELECT * FROM prv_history"),
                ElementsAre(ElementsAre("3", "2026-01-11 12:00:00", "Read", "44")));
}

TEST_F(TysPRV, RoundsAChangedValueToTheNearestWholeNumber) {
    library.exec("UPDATE prv SET last_prv = 50; UPDATE prv_rules SET decay_halflife = 70");
    at("2026-01-06 00:00:00");
    EXPECT_NEAR(decay().toDouble(), 47.6, 0.05);
    prv.changePRV(document, user, std::int32_t{-3}, "Read");
    EXPECT_EQ(library.value("SELECT last_prv FROM prv"), "45");
    EXPECT_EQ(library.value("SELECT last_modified FROM prv"), "2026-01-06 00:00:00");
}

TEST_F(TysPRV, ChangesNothingForAShareThatDoesNotExist) {
    prv.changePRV(document, 8, std::int32_t{5}, "Read");
    EXPECT_EQ(library.trace.size(), 1U);
    EXPECT_THAT(library.rows("SELECT * FROM prv_history"), IsEmpty());
}

TEST_F(TysPRV, MakesARecordWithTheTypesOwnValueAndItsHistory) {
    const std::int32_t key = prv.createPRV("eml");
    EXPECT_EQ(key, 4);
    EXPECT_THAT(
        library.trace,
        ElementsAre(
            "SELECT creation_prv FROM prv_rules WHERE data_type = 'eml' OR data_type = 'zzzzDef' ORDER BY "
            "data_type ASC",
            "INSERT INTO prv (last_prv, last_doc_usage ) VALUES (40, '2026-01-11 12:00:00' ) ",
            "SELECT @@IDENTITY AS id_prv FROM prv",
            "INSERT INTO prv_history (id_prv, time_stamp, action_description, prv_value ) VALUES (4, "
            "'2026-01-11 12:00:00', 'Document Created', 40 ) "));
    EXPECT_THAT(library.rows(
                    "SELECT last_prv, last_doc_usage, hard_prv, last_modified IS NULL FROM prv WHERE id = 4"),
                ElementsAre(ElementsAre("40", "2026-01-11 12:00:00", "NULL", "0")));
    EXPECT_THAT(library.rows("SELECT * FROM prv_history"),
                ElementsAre(ElementsAre("4", "2026-01-11 12:00:00", "Document Created", "40")));
}

TEST_F(TysPRV, MakesARecordWithTheDefaultValueForATypeWithoutRules) {
    const std::int32_t key = prv.createPRV("txt");
    EXPECT_EQ(library.value("SELECT last_prv FROM prv WHERE id = " + std::to_string(key)), "100");
}

TEST_F(TysPRV, KeepsTheFractionOfACreationValue) {
    library.exec("UPDATE prv_rules SET creation_prv = 12.5");
    prv.createPRV("eml");
    EXPECT_EQ(library.value("SELECT prv_value FROM prv_history"), "12.5");
}

TEST_F(TysPRV, RaisesWhenThereAreNoRulesToMakeARecordWith) {
    library.exec("DELETE FROM prv_rules");
    EXPECT_THROW(prv.createPRV("eml"), base::RuntimeError);
    EXPECT_EQ(library.value("SELECT COUNT(*) FROM prv"), "1");
}

TEST_F(TysPRV, DecaysAKnownValueFromOneDateToAnother) {
    const DateTime from = *DateTime::parse("2026-01-01 23:00:00");
    EXPECT_EQ(prv.decayPRVFromDate(document, std::int32_t{80}, from, *DateTime::parse("2026-01-21 01:00:00")),
              Variant(20.0));
    EXPECT_THAT(library.trace, ElementsAre(dataTypeQuery, halfLifeQuery));
}

TEST_F(TysPRV, LeavesAKnownValueAsItIsWithoutDaysOrAHalfLife) {
    const DateTime from = *DateTime::parse("2026-01-01 01:00:00");
    EXPECT_EQ(prv.decayPRVFromDate(document, Variant(0.5), from, *DateTime::parse("2026-01-01 23:00:00")),
              Variant(0.5));
    EXPECT_EQ(prv.decayPRVFromDate(document, "80", from, *DateTime::parse("2025-01-01")), Variant("80"));
    EXPECT_THAT(library.trace, IsEmpty());
    EXPECT_EQ(prv.decayPRVFromDate(99, Variant(0.5), from, *DateTime::parse("2027-01-01")), Variant(0.5));
}

TEST_F(TysPRV, RaisesOverflowWhereANegativeHalfLifeOutgrowsANumber) {
    library.exec("UPDATE prv_rules SET decay_halflife = -1");
    at("2036-01-01 00:00:00");
    try {
        static_cast<void>(decay());
        FAIL() << "there is no number for it";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), 6);
        EXPECT_EQ(error.description(), "Overflow");
    }
}

TEST_F(TysPRV, RaisesOverflowWhereUsesOutOfOrderOutgrowANumber) {
    library.exec(
        "UPDATE prv_rules SET decay_halflife = 1;"
        "INSERT INTO search_term_history (id_search_term, time_stamp) VALUES (4, '2025-01-01 00:00:00'),"
        "(4, '2020-01-01 00:00:00')");
    EXPECT_THROW(static_cast<void>(prv.getSearchPRV(4, library.clock.moment)), base::RuntimeError);
}

TEST_F(TysPRV, RaisesTheErrorOfAFailingStatement) {
    library.exec("DROP TABLE prv_history");
    EXPECT_THROW(prv.changePRV(document, user, std::int32_t{1}, "Read"), base::RuntimeError);
    EXPECT_THAT(library.logLines(), IsEmpty());
}

TEST_F(TysPRV, RaisesError91WithoutADataSource) {
    relevance::tysPRV unset;
    try {
        unset.createPRV("eml");
        FAIL() << "nothing was raised";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), 91);
    }
}

}  // namespace
