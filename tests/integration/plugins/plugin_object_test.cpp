#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "integration/plugins/plugin_fixture.h"

namespace {

using plugin_test::PluginTest;
using testing::ElementsAre;
using testing::HasSubstr;

/// Waits for a child of this process to be stopped by a signal.
void waitUntilItHalts(pid_t process) {
    siginfo_t info{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(process), &info, WSTOPPED | WEXITED | WNOWAIT), 0);
    ASSERT_EQ(info.si_code, CLD_STOPPED);
}

class PluginObject : public PluginTest {};

TEST_F(PluginObject, LivesInTheProcessOfTheOneBefore) {
    auto first = open("a.plugin", "1");
    const auto process = call(*first, "GetProcessID");
    first.reset();
    auto next = open("a.plugin", "3");
    EXPECT_EQ(call(*next, "GetProcessID"), process);
    EXPECT_EQ(asked("a.plugin", "release").size(), 1U);
}

TEST_F(PluginObject, SharesItsProcessWithNoLivingOne) {
    auto outer = open("a.plugin", "1");
    auto nested = open("a.plugin", "2");
    const auto process = call(*nested, "GetProcessID");
    EXPECT_NE(call(*outer, "GetProcessID"), process);
    EXPECT_EQ(call(*nested, "GetNumberofMetaTags"), base::Variant(2));
    EXPECT_EQ(call(*outer, "GetNumberofMetaTags"), base::Variant(1));
    nested.reset();
    EXPECT_EQ(call(*open("a.plugin", "1"), "GetProcessID"), process);
}

TEST_F(PluginObject, LeavesOneProcessOfItsProgIdWaiting) {
    auto outer = open("a.plugin", "1");
    auto nested = open("a.plugin", "2");
    const pid_t first = call(*nested, "GetProcessID").toInt32();
    const pid_t second = call(*outer, "GetProcessID").toInt32();
    nested.reset();
    outer.reset();
    EXPECT_EQ(kill(first, 0), 0);
    EXPECT_EQ(kill(second, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST_F(PluginObject, IsAskedForAsSoonAsTheOneBeforeIsReleased) {
    auto object = create("quits.create2");  // ends as soon as it has answered
    const pid_t process = call(*object, "GetProcessID").toInt32();
    object.reset();
    ASSERT_TRUE(ends(process)) << "it was not asked";
    EXPECT_THAT(asked("quits.create2", ""),
                ElementsAre("create", "call \"GetProcessID\"", "release", "create"));
}

TEST_F(PluginObject, WaitsForNothingWhenItLiesReady) {
    auto object = open("halts.create2", "1");  // stands still as soon as it has answered
    const pid_t process = call(*object, "GetProcessID").toInt32();
    object.reset();
    waitUntilItHalts(process);
    shortLimits_ = 1;
    auto next = create("halts.create2");
    kill(process, SIGCONT);
    EXPECT_EQ(call(*next, "GetProcessID"), base::Variant(process));
}

TEST_F(PluginObject, IsNotAskedForInAProcessThatHasOneOrThatEnds) {
    auto outer = open("a.plugin", "1");
    open("a.plugin", "2").reset();
    auto nested = open("a.plugin", "3");
    outer.reset();
    nested.reset();  // ends its process, because the other one waits
    auto next = open("a.plugin", "4");
    EXPECT_EQ(asked("a.plugin", "release").size(), 3U);
    EXPECT_EQ(asked("a.plugin", "create").size(), 4U) << "one of each process at first, one after";
}

TEST_F(PluginObject, ThatIsRefusedAheadIsAskedForOnceMoreWhenItIsNeeded) {
    auto object = open("refuses.create2", "1");
    const auto process = call(*object, "GetProcessID");
    object.reset();
    auto next = open("refuses.create2", "1");
    EXPECT_EQ(call(*next, "GetProcessID"), process);
    EXPECT_EQ(asked("refuses.create2", "create").size(), 3U);
}

TEST_F(PluginObject, ThatIsRefusedForGoodIsAnErrorOfTheCreationThatNeedsIt) {
    open("refuses.createlater", "1").reset();
    for (const std::size_t asked_so_far : {3U, 4U}) {
        const auto error = errorOf([&] { create("refuses.createlater"); });
        EXPECT_EQ(error.number(), 1234);
        EXPECT_EQ(error.description(), "refuses.createlater: create: it went wrong");
        EXPECT_EQ(asked("refuses.createlater", "create").size(), asked_so_far);
    }
}

TEST_F(PluginObject, ThatIsRefusedAheadCostsTheOneInUseNothing) {
    auto outer = open("refuses.createlater", "1");
    open("refuses.createlater", "2").reset();
    EXPECT_EQ(item(*outer, "GetMetaTagText", 1), "GetMetaTagText1");
    EXPECT_EQ(errorOf([&] { create("refuses.createlater"); }).number(), 1234);
    EXPECT_EQ(item(*outer, "GetMetaTagText", 1), "GetMetaTagText1");
}

TEST_F(PluginObject, OfAnotherProgIdLivesInAnotherProcess) {
    EXPECT_NE(call(*open("a.plugin", "1"), "GetProcessID"), call(*open("b.plugin", "1"), "GetProcessID"));
}

TEST_F(PluginObject, GivesBackEveryKindOfValue) {
    using namespace std::string_literals;
    auto object = create("a.plugin");
    const auto moment = *base::DateTime::fromCivil({2024, 2, 29, 23, 59, 58});
    for (const base::Variant& value :
         {base::Variant(), base::Variant(true), base::Variant(std::int32_t{-2147483647}), base::Variant(0.5),
          base::Variant(1e300), base::Variant(moment), base::Variant(""),
          base::Variant("nul \0, line\n, quote \" and \xF0\x9F\xA6\x8A \xEF\xBF\xBF"s)}) {
        EXPECT_EQ(call(*object, "Echo", value), value);
    }
}

TEST_F(PluginObject, WidensAndNarrowsNumbersByTheirValue) {
    auto object = create("a.plugin");
    EXPECT_EQ(call(*object, "Echo", std::int16_t{7}), base::Variant(std::int32_t{7}));
    EXPECT_EQ(call(*object, "Number", "3.0"), base::Variant(std::int32_t{3}));
    EXPECT_EQ(call(*object, "Number", "2147483648"), base::Variant(2147483648.0));
}

TEST_F(PluginObject, TakesANullForAnEmptyValue) {
    auto object = create("a.plugin");
    EXPECT_TRUE(call(*object, "Echo", base::Null()).isEmpty());
}

TEST_F(PluginObject, ReplacesBytesThatAreNoText) {
    auto object = create("a.plugin");
    EXPECT_EQ(call(*object, "Echo", "caf\xE9.txt"), base::Variant("caf\xEF\xBF\xBD.txt"));
}

TEST_F(PluginObject, ChangesArgumentsThatGoByReference) {
    auto object = create("a.plugin");
    std::array<base::Variant, 2> arguments{base::Variant("left"), base::Variant(std::int32_t{2})};
    object->call("Swap", arguments);
    EXPECT_THAT(arguments, ElementsAre(base::Variant(std::int32_t{2}), base::Variant("left")));
}

TEST_F(PluginObject, RaisesTheErrorOfAMethodAndLivesOn) {
    auto object = open("a.plugin", "1");
    const auto error = errorOf([&] { call(*object, "Fail"); });
    EXPECT_EQ(error.number(), 1234);
    EXPECT_EQ(error.description(), "a.plugin: Fail: it went wrong");
    EXPECT_EQ(item(*object, "GetMetaTagText", 1), "GetMetaTagText1");
}

TEST_F(PluginObject, CarriesLargeTextsBothWaysAtOnce) {
    auto object = open("a.plugin", "3 big");
    call(*object, "GetNumberOfSentences");
    EXPECT_EQ(item(*object, "GetSentenceText", 1).size(), 2097152U + 16U);
    // Whichever side waits for the other to read first, both would wait for ever.
    const std::string text(5UL * 1024 * 1024, 'y');
    EXPECT_EQ(call(*object, "Echo", text), base::Variant(text));
    EXPECT_EQ(item(*object, "GetSentenceText", 3).size(), 2097152U + 16U);
}

TEST_F(PluginObject, SurvivesAnIgnoredOrDefaultSigpipe) {
    // The default is to kill the service when it writes to a plug-in that is gone.
    const auto before = std::signal(SIGPIPE, SIG_DFL);
    auto object = open("dies.Echo", "1");
    auto sibling = open("dies.Echo", "1");
    EXPECT_NE(errorOf([&] { call(*object, "Echo", std::string(5UL * 1024 * 1024, 'y')); }).number(), 0);
    EXPECT_NE(errorOf([&] { call(*sibling, "Echo", "text"); }).number(), 0);
    std::signal(SIGPIPE, before);
}

TEST_F(PluginObject, OfAnUnknownProgIdCannotBeCreated) {
    const auto error = errorOf([&] { factory_.create("Tessaly.Nothing"); });
    EXPECT_EQ(error.number(), 429);
    EXPECT_EQ(error.description(),
              "Cannot create the plug-in \"Tessaly.Nothing\": there is no such file in " + folder_.path());
}

TEST_F(PluginObject, IsNotLookedForOutsideTheFolders) {
    folder_.write("x/inner", "");
    using namespace std::string_literals;
    for (const std::string& progId : {""s, "."s, ".."s, "x/inner"s, "../x"s, "/bin/cat"s, "a\0b"s}) {
        const auto error = errorOf([&] { factory_.create(progId); });
        EXPECT_EQ(error.number(), 429) << progId;
        EXPECT_THAT(error.description(), HasSubstr("that is no name of a plug-in"));
    }
}

TEST_F(PluginObject, OfAFileThatCannotRunCannotBeCreated) {
    folder_.write("Plain.Text", "not a program");
    EXPECT_THAT(errorOf([&] { factory_.create("Plain.Text"); }).description(),
                HasSubstr("is not executable"));

    const std::string file = folder_.write("No.Interpreter", "#!/nowhere/interpreter\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    const auto error = errorOf([&] { factory_.create("No.Interpreter"); });
    EXPECT_EQ(error.number(), 429);
    EXPECT_THAT(error.description(), HasSubstr("No.Interpreter: No such file or directory"));
}

TEST_F(PluginObject, ComesFromTheFirstFolderThatHasIt) {
    std::filesystem::create_directory(folder_ / "second");
    std::filesystem::create_symlink(FAULTY_PLUGIN, folder_ / "second/a.plugin");
    platform::posix::PluginFactory factory({folder_ / "first", folder_ / "second"}, nullptr);
    auto object = factory.create("a.plugin");
    EXPECT_EQ(call(*object, "Echo", "text"), base::Variant("text"));
}

TEST(PluginFolders, AreThoseOfTheEnvironmentThenTheInstalledOne) {
    const char* before = std::getenv("TYINDEXER_PLUGINS");
    const std::string kept = before == nullptr ? "" : before;
    setenv("TYINDEXER_PLUGINS", "/one::/two", 1);
    EXPECT_THAT(platform::posix::pluginFolders("/opt/bin"),
                ElementsAre("/one", "/two", "/opt/bin/../lib/tyindexer/plugins"));
    unsetenv("TYINDEXER_PLUGINS");
    EXPECT_THAT(platform::posix::pluginFolders("/opt/bin"), ElementsAre("/opt/bin/../lib/tyindexer/plugins"));
    if (before != nullptr) {
        setenv("TYINDEXER_PLUGINS", kept.c_str(), 1);
    }
}

}  // namespace
