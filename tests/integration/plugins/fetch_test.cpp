#include <sys/wait.h>

#include <csignal>

#include "integration/plugins/plugin_fixture.h"

namespace {

using namespace std::string_literals;
using plugin_test::PluginTest;
using testing::ElementsAre;

class PluginFetch : public PluginTest {
  protected:
    /// Uses an object of the process and gives it back; the number of the process.
    base::Variant useOnce(const std::string& progId) {
        auto object = create(progId);
        return call(*object, "GetProcessID");
    }

    std::vector<std::string> fetched(const std::string& progId) const { return asked(progId, "fetch"); }
};

TEST_F(PluginFetch, ReachesTheWaitingProcessBeforeTheNextDocumentIsOpened) {
    const auto process = useOnce("a.plugin");
    factory_.expectReading("/docs/next.txt");
    auto next = create("a.plugin");
    EXPECT_EQ(call(*next, "SetDocumentID", "1 closed"), base::Variant(false));
    EXPECT_EQ(call(*next, "GetProcessID"), process);
    EXPECT_THAT(
        asked("a.plugin", ""),
        ElementsAre("create", "call \"GetProcessID\"", "release", "create", "fetch \"/docs/next.txt\"",
                    "call \"SetDocumentID\" [\"1 closed\"]", "call \"GetProcessID\""));
}

TEST_F(PluginFetch, IsAskedForEachDocumentAndEachGetsItsOwnAnswers) {
    const auto process = useOnce("a.plugin");
    for (const std::string& path : {"one"s, "two"s, "three"s, "four"s}) {
        factory_.expectReading(path);
        auto object = open("a.plugin", "3");
        EXPECT_EQ(call(*object, "Echo", path), base::Variant(path));
        EXPECT_EQ(item(*object, "GetMetaTagText", 2), "GetMetaTagText2");
        EXPECT_EQ(call(*object, "GetProcessID"), process);
    }
    EXPECT_THAT(fetched("a.plugin"),
                ElementsAre("fetch \"one\"", "fetch \"two\"", "fetch \"three\"", "fetch \"four\""));
}

TEST_F(PluginFetch, GoesToTheProcessThatWasGivenBackLastWhicheverPluginComes) {
    useOnce("a.plugin");
    useOnce("b.plugin");
    factory_.expectReading("one");
    useOnce("a.plugin");
    factory_.expectReading("two");
    useOnce("a.plugin");
    useOnce("b.plugin");
    EXPECT_THAT(fetched("b.plugin"), ElementsAre("fetch \"one\""));
    EXPECT_THAT(fetched("a.plugin"), ElementsAre("fetch \"two\""));
}

TEST_F(PluginFetch, ReplacesBytesOfThePathThatAreNoUtf8) {
    useOnce("a.plugin");
    factory_.expectReading("/docs/\xFF.txt");
    useOnce("a.plugin");
    EXPECT_THAT(fetched("a.plugin"), ElementsAre("fetch \"/docs/\xEF\xBF\xBD.txt\""));
}

TEST_F(PluginFetch, HappensNowhereWithoutAWaitingProcess) {
    factory_.expectReading("one");
    auto object = create("a.plugin");
    factory_.expectReading("two");
    const auto process = call(*object, "GetProcessID");
    object.reset();
    EXPECT_EQ(useOnce("a.plugin"), process);
    EXPECT_THAT(fetched("a.plugin"), ElementsAre());
}

TEST_F(PluginFetch, IsNotAskedAgainOfAPluginThatDoesNotKnowIt) {
    const auto process = useOnce("minimal.plugin");
    for (const std::string& path : {"one"s, "two"s, "three"s}) {
        factory_.expectReading(path);
        auto object = open("minimal.plugin", "3");
        EXPECT_EQ(call(*object, "GetProcessID"), process);
        EXPECT_EQ(item(*object, "GetMetaTagText", 2), "GetMetaTagText2");
    }
    EXPECT_THAT(fetched("minimal.plugin"), ElementsAre("fetch \"one\""));
}

TEST_F(PluginFetch, ThatIsRefusedIsNobodysError) {
    const auto process = useOnce("refuses.fetch");
    factory_.expectReading("one");
    EXPECT_EQ(useOnce("refuses.fetch"), process);
    factory_.expectReading("two");
    EXPECT_EQ(useOnce("refuses.fetch"), process);
    EXPECT_THAT(fetched("refuses.fetch"), ElementsAre("fetch \"one\"", "fetch \"two\""));
}

TEST_F(PluginFetch, AProcessThatBreaksOverItIsReplacedWithoutAnError) {
    for (const std::string& fault :
         {"dies"s, "exits"s, "closes"s, "mumbles"s, "breaksoff"s, "floods"s, "misnumbers"s, "evades"s}) {
        const std::string progId = fault + ".fetch";
        const auto process = useOnce(progId);
        factory_.expectReading("one");
        auto object = open(progId, "3");
        EXPECT_NE(call(*object, "GetProcessID"), process) << fault;
        EXPECT_EQ(item(*object, "GetMetaTagText", 2), "GetMetaTagText2") << fault;
    }
}

TEST_F(PluginFetch, AProcessThatHangsOverItIsReplacedWhenADocumentHasWaitedForIt) {
    const auto process = useOnce("hangs.fetch");
    factory_.expectReading("one");
    shortLimits_ = 1;
    EXPECT_NE(useOnce("hangs.fetch"), process);
}

TEST_F(PluginFetch, OfADocumentBeforeThatHoldsUpTheProcessIsNoErrorOfTheNext) {
    const auto process = useOnce("hangs.fetch2");
    factory_.expectReading("one");
    useOnce("hangs.fetch2");
    factory_.expectReading("of another plug-in");
    factory_.expectReading("three");
    shortLimits_ = 1;
    auto object = open("hangs.fetch2", "3");
    EXPECT_NE(call(*object, "GetProcessID"), process);
    EXPECT_EQ(item(*object, "GetMetaTagText", 2), "GetMetaTagText2");
}

TEST_F(PluginFetch, AProcessThatEndsOverTheFileOfADocumentBeforeIsReplacedWithoutAnError) {
    const pid_t process = useOnce("dies.fetch2").toInt32();
    factory_.expectReading("one");
    useOnce("dies.fetch2");
    factory_.expectReading("of another plug-in");
    ASSERT_TRUE(ends(process));
    factory_.expectReading("three");
    EXPECT_NE(useOnce("dies.fetch2"), base::Variant(process));
}

TEST_F(PluginFetch, DoesNotPileUpBeforeAProcessThatDoesNotRead) {
    const pid_t process = useOnce("halts.create2").toInt32();  // stands still as soon as it has answered
    siginfo_t info{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(process), &info, WSTOPPED | WEXITED | WNOWAIT), 0);
    ASSERT_EQ(info.si_code, CLD_STOPPED);
    factory_.expectReading("one");
    for (int i = 0; i < 1000; ++i) {
        factory_.expectReading(std::string(10'000, 'x'));
    }
    kill(process, SIGCONT);
    EXPECT_EQ(useOnce("halts.create2"), base::Variant(process));
    EXPECT_THAT(fetched("halts.create2"), ElementsAre("fetch \"one\""));
}

TEST_F(PluginFetch, BeforeARefusedObjectIsNoErrorOfTheNext) {
    const auto process = useOnce("refuses.create2");
    factory_.expectReading("one");
    EXPECT_EQ(useOnce("refuses.create2"), process);
}

TEST_F(PluginFetch, OverAnotherPluginsDocumentCostsNoDocumentAnything) {
    for (const std::string plugin : {"hangs.fetch2", "dies.fetch2"}) {
        useOnce(plugin);
        factory_.expectReading("one");
        useOnce(plugin);
        factory_.expectReading("of another plug-in");  // goes to this one, which waited last
        useOnce("b.plugin");
        factory_.expectReading("three");  // goes to the other one
        shortLimits_ = 1;
        auto object = create(plugin);
        EXPECT_EQ(errorOf([&] { call(*object, "SetDocumentID", "3"); }).number(), 0) << plugin;
        shortLimits_ = 0;
    }
}

}  // namespace
