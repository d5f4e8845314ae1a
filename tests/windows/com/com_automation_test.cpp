// Automation objects as the service sees them, on servers that are registered for this machine.
#include "platform/windows/com_automation.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "base/runtime_error.h"
#include "fakes/temporary_folder.h"

namespace {

using base::Variant;

// Types as automation numbers them.
constexpr std::int32_t typeOfShort = 2;
constexpr std::int32_t typeOfLong = 3;
constexpr std::int32_t typeOfDouble = 5;
constexpr std::int32_t typeOfDate = 7;
constexpr std::int32_t typeOfText = 8;
constexpr std::int32_t typeOfFlag = 11;
constexpr std::int32_t typeOfVariant = 12;
constexpr std::int32_t byReference = 0x4000;

class ComAutomation : public testing::Test {
  protected:
    /// What the method is given for a variable, by automation's number.
    std::int32_t typeOf(Variant variable) { return probe().call("TypeOf", {&variable, 1}).toInt32(); }

    Variant changed(Variant variable) {
        probe().call("Change", {&variable, 1});
        return variable;
    }

    Variant given(const char* type) {
        const Variant argument(type);
        return probe().callByValue("Give", {&argument, 1});
    }

    base::RuntimeError errorOf(const char* method) {
        try {
            probe().call(method);
        } catch (const base::RuntimeError& error) {
            return error;
        }
        ADD_FAILURE() << method << " raised no error";
        return {0, ""};
    }

    platform::AutomationObject& probe() {
        if (probe_ == nullptr) {
            probe_ = factory_.create("TyTest.Probe");
        }
        return *probe_;
    }

    platform::windows::ComApartment apartment_;
    platform::windows::ComAutomationFactory factory_;
    std::unique_ptr<platform::AutomationObject> probe_;
};

TEST_F(ComAutomation, PassesAnIndexAsA16BitVariable) {
    EXPECT_EQ(typeOf(std::int16_t{7}), byReference | typeOfShort);
}

TEST_F(ComAutomation, PassesEveryVariableInItsOwnType) {
    EXPECT_EQ(typeOf(std::int32_t{7}), byReference | typeOfLong);
    EXPECT_EQ(typeOf(7.5), byReference | typeOfDouble);
    EXPECT_EQ(typeOf("text"), byReference | typeOfText);
    EXPECT_EQ(typeOf(true), byReference | typeOfFlag);
    EXPECT_EQ(typeOf(*base::DateTime::parse("2002-03-05")), byReference | typeOfDate);
}

TEST_F(ComAutomation, PassesAVariableWithoutATypeInAVariant) {
    EXPECT_EQ(typeOf({}), byReference | typeOfVariant);
    EXPECT_EQ(typeOf(base::Null{}), byReference | typeOfVariant);
}

TEST_F(ComAutomation, PassesArgumentsByValueWhenAskedTo) {
    const Variant text("title");
    EXPECT_EQ(probe().callByValue("TypeOf", {&text, 1}), Variant(typeOfText));
    const Variant empty;
    EXPECT_EQ(probe().callByValue("TypeOf", {&empty, 1}), Variant(std::int32_t{0}));
}

TEST_F(ComAutomation, PassesArgumentsInTheirOrder) {
    std::array<Variant, 3> arguments = {std::int16_t{1}, std::int32_t{2}, std::int16_t{3}};
    EXPECT_EQ(probe().call("Join", arguments).toText(), "1 2 3");
}

TEST_F(ComAutomation, GivesBackWhatTheObjectLeavesInAVariable) {
    EXPECT_EQ(changed(std::int16_t{7}), Variant(std::int16_t{8}));
    EXPECT_EQ(changed(std::int32_t{70000}), Variant(std::int32_t{70001}));
    EXPECT_EQ(changed(7.5), Variant(3.75));
    EXPECT_EQ(changed(true), Variant(false));
    EXPECT_EQ(changed("short").toText(), "short and more, so that it needs a new place");
    EXPECT_EQ(changed(*base::DateTime::parse("2002-03-05 09:07:04")),
              Variant(*base::DateTime::parse("2002-03-06 09:07:04")));
    EXPECT_EQ(changed({}), Variant("filled"));
}

TEST_F(ComAutomation, GivesResultsOfEveryPlainType) {
    EXPECT_EQ(given("EMPTY"), Variant());
    EXPECT_EQ(given("NULL"), Variant(base::Null{}));
    EXPECT_EQ(given("BOOL"), Variant(true));
    EXPECT_EQ(given("I1"), Variant(std::int16_t{-7}));
    EXPECT_EQ(given("UI1"), Variant(std::int16_t{200}));
    EXPECT_EQ(given("I2"), Variant(std::int16_t{-300}));
    EXPECT_EQ(given("UI2"), Variant(std::int32_t{60000}));
    EXPECT_EQ(given("I4"), Variant(std::int32_t{-70000}));
    EXPECT_EQ(given("INT"), Variant(std::int32_t{12}));
    EXPECT_EQ(given("R4"), Variant(0.5));
    EXPECT_EQ(given("R8"), Variant(2.25));
    EXPECT_EQ(given("BSTR").toText(), "na\xC3\xAFve \xF0\x9F\x8C\x8A");
    EXPECT_EQ(given("BYREF"), Variant(std::int32_t{31}));
}

TEST_F(ComAutomation, GivesWideAndExactNumbersAsTheNearestTheServiceHas) {
    EXPECT_EQ(given("UI4"), Variant(4e9));
    EXPECT_EQ(given("I8"), Variant(-5e9));
    EXPECT_EQ(given("SmallI8"), Variant(std::int32_t{-42}));
    EXPECT_EQ(given("UI8"), Variant(18e18));
    EXPECT_EQ(given("CY"), Variant(12.3456));
    EXPECT_EQ(given("DECIMAL"), Variant(123456789.5));
}

/// Half a surrogate pair is no character, but file names may hold it.
TEST_F(ComAutomation, KeepsHalfAPairInATextBothWays) {
    const std::string text = given("HALVES").toText();
    EXPECT_EQ(text,
              "a\xED\xA0\xBC"
              "b\xED\xB3\xA9");
    EXPECT_EQ(changed(text).toText(), text + " and more, so that it needs a new place");
    const Variant name(text);
    const Variant units = probe().callByValue("CountUnits", {&name, 1});
    EXPECT_EQ(units, Variant(std::int32_t{4}));
}

TEST_F(ComAutomation, ReadsADateBeforeTheZeroDateAwayFromZero) {
    EXPECT_EQ(given("DATE"), Variant(*base::DateTime::parse("1899-12-29 06:00:00")));
}

TEST_F(ComAutomation, RefusesAnObjectAsAResult) {
    EXPECT_THROW(given("OBJECT"), base::RuntimeError);
}

TEST_F(ComAutomation, ReadsAPropertyLikeAMethod) {
    EXPECT_EQ(probe().call("Weight"), Variant(std::int32_t{81}));
}

TEST_F(ComAutomation, FindsMethodsWithoutRegardToCase) {
    EXPECT_EQ(probe().call("weight"), Variant(std::int32_t{81}));
}

TEST_F(ComAutomation, RaisesTheObjectsErrorWithItsDescriptionAndLivesOn) {
    const base::RuntimeError error = errorOf("FailAsControl");
    EXPECT_EQ(error.description(), "The probe is clos\xC3\xA9");
    EXPECT_EQ(error.number(), 3704);
    EXPECT_EQ(probe().call("Weight"), Variant(std::int32_t{81}));
}

TEST_F(ComAutomation, NumbersErrorsAsBasicDoes) {
    EXPECT_EQ(errorOf("FailWide").number(), static_cast<int>(0x80040E14));
    const base::RuntimeError numbered = errorOf("FailNumbered");
    EXPECT_EQ(numbered.number(), 1004);
    EXPECT_EQ(numbered.description(), "The probe counts");
}

TEST_F(ComAutomation, AsksForADescriptionThatIsToldLate) {
    EXPECT_EQ(errorOf("FailLate").description(), "The probe was asked");
}

TEST_F(ComAutomation, NamesTheMethodAndTheCodeOfAnErrorWithoutADescription) {
    const base::RuntimeError silent = errorOf("FailSilently");
    EXPECT_NE(silent.description().find("TyTest.Probe.FailSilently"), std::string::npos);
    EXPECT_NE(silent.description().find("0x80070005"), std::string::npos) << silent.description();
    const base::RuntimeError refused = errorOf("Refuse");
    EXPECT_NE(refused.description().find("0x8007000E"), std::string::npos) << refused.description();
}

TEST_F(ComAutomation, RaisesForAMethodThatIsNotThere) {
    const base::RuntimeError error = errorOf("NoSuchMethod");
    EXPECT_NE(error.description().find("TyTest.Probe.NoSuchMethod"), std::string::npos);
    EXPECT_EQ(error.number(), static_cast<int>(0x80020006));
}

TEST_F(ComAutomation, RaisesForArgumentsThatTheObjectRefuses) {
    Variant number(std::int32_t{1});
    EXPECT_THROW(probe().call("Weight", {&number, 1}), base::RuntimeError);
    EXPECT_THROW(probe().call("Give", {&number, 1}), base::RuntimeError);
    EXPECT_THROW(probe().call("TypeOf"), base::RuntimeError);
}

TEST_F(ComAutomation, OfAnUnknownProgIdCannotBeCreated) {
    try {
        factory_.create("TyTest.Nothing");
        FAIL() << "no error";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), static_cast<int>(base::ErrorNumber::cannotCreateObject));
        EXPECT_NE(error.description().find("TyTest.Nothing"), std::string::npos);
        EXPECT_NE(error.description().find("0x800401F3"), std::string::npos) << error.description();
    }
}

TEST_F(ComAutomation, OutlivesNoApartmentButMayBeMadeInAnInnerOne) {
    const platform::windows::ComApartment inner;
    EXPECT_EQ(probe().call("Weight"), Variant(std::int32_t{81}));
}

TEST_F(ComAutomation, KeepsAPathWithEveryCharacter) {
    const fakes::TemporaryFolder folder;
    Variant path(folder.path() + "\\no such \xE6\x96\x87\xE6\x9B\xB8.txt");
    const auto plugin = factory_.create("TyTest.Text");
    EXPECT_FALSE(plugin->call("SetDocumentID", {&path, 1}).toBool());
    EXPECT_EQ(plugin->call("GetLastErrorNumber"), Variant(std::int32_t{53}));
    EXPECT_EQ(plugin->call("GetLastErrorString").toText(), "File not found: " + path.toText());
}

TEST_F(ComAutomation, OfAPluginRaisesForAnIndexThatIsNoVariable) {
    const auto plugin = factory_.create("TyTest.Text");
    const Variant index(std::int16_t{1});
    EXPECT_THROW(plugin->callByValue("GetSentenceText", {&index, 1}), base::RuntimeError);
}

}  // namespace
