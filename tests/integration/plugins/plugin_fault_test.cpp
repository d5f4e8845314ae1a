#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "integration/plugins/plugin_fixture.h"
#include "platform/posix/posix_process.h"

namespace {

using namespace std::string_literals;
using plugin_test::PluginTest;
using testing::HasSubstr;
using testing::StartsWith;

bool noChildIsLeft() {
    return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

/// A way to misbehave and how the error tells it.
struct Fault {
    std::string name;
    std::string cause;
};

void PrintTo(const Fault& fault, std::ostream* stream) {
    *stream << fault.name;
}

class PluginFault : public PluginTest, public testing::WithParamInterface<Fault> {};

TEST_P(PluginFault, IsAnErrorOfTheCallThatNamesProgIdMethodAndCause) {
    const std::string progId = GetParam().name + ".GetImportantTextText";
    auto object = open(progId, "1");
    const auto error = errorOf([&] { item(*object, "GetImportantTextText", 1); });
    EXPECT_NE(error.number(), 0);
    EXPECT_THAT(error.description(), StartsWith(progId + ": GetImportantTextText: "));
    EXPECT_THAT(error.description(), HasSubstr(GetParam().cause));
}

TEST_P(PluginFault, EndsTheObjectAndLeavesNoProcess) {
    auto object = open(GetParam().name + ".GetImportantTextText", "1");
    errorOf([&] { item(*object, "GetImportantTextText", 1); });
    EXPECT_TRUE(noChildIsLeft());

    const auto later = errorOf([&] { call(*object, "GetLastErrorString"); });
    EXPECT_THAT(later.description(), HasSubstr("GetLastErrorString: the plug-in process is gone"));
    EXPECT_THAT(later.description(), HasSubstr(GetParam().cause));
}

TEST_P(PluginFault, LeavesTheNextDocumentAFreshProcess) {
    const std::string progId = GetParam().name + ".GetImportantTextText";
    auto object = open(progId, "1");
    const auto first = call(*object, "GetProcessID");
    errorOf([&] { item(*object, "GetImportantTextText", 1); });

    auto next = open(progId, "1");
    EXPECT_NE(call(*next, "GetProcessID"), first);
    EXPECT_EQ(item(*next, "GetMetaTagText", 1), "GetMetaTagText1");
}

INSTANTIATE_TEST_SUITE_P(
    Every, PluginFault,
    testing::Values(Fault{"dies", "the plug-in process ended (signal 9)"},
                    Fault{"exits", "the plug-in process ended (exit status 3)"},
                    Fault{"closes", "the plug-in process closed its output"},
                    Fault{"mumbles", "answered something that is not JSON-RPC: \"Segmentation fault \xFF?\""},
                    Fault{"breaksoff", "ended (exit status 0) in the middle of the answer \"{"},
                    Fault{"bloats", "the plug-in answered more than 16777216 bytes"},
                    Fault{"floods", "the plug-in answered a request that was not made"},
                    Fault{"misnumbers", "the plug-in answered a request that was not made"},
                    Fault{"evades", "the plug-in answered something that is not JSON-RPC"},
                    Fault{"lists", "the plug-in answered with something that is not a value"},
                    Fault{"understates", "the plug-in answered without a result"}),
    [](const auto& fault) { return fault.param.name; });

class PluginFaults : public PluginTest {};

TEST_F(PluginFaults, AHangIsAnErrorAfterTheLimit) {
    create("hangs.Echo").reset();  // starting may take its time
    limit_ = std::chrono::milliseconds(1500);
    auto object = create("hangs.Echo");
    const auto error = errorOf([&] { call(*object, "Echo", "text"); });
    EXPECT_EQ(error.description(), "hangs.Echo: Echo: the plug-in did not answer within 1.5 seconds");
    EXPECT_TRUE(noChildIsLeft());
}

TEST_F(PluginFaults, ALargeRequestToAPluginThatDoesNotReadIsAnErrorAfterTheLimit) {
    limit_ = std::chrono::milliseconds(3000);
    auto object = create("dozes.create");  // from here on it reads nothing more
    const std::string large(5UL * 1024 * 1024, 'y');
    EXPECT_THAT(errorOf([&] { call(*object, "Echo", large); }).description(),
                HasSubstr("Echo: the plug-in did not answer within 3 seconds"));
}

TEST_F(PluginFaults, AProcessThatHangsBetweenDocumentsCostsNoDocument) {
    auto object = open("hangs.release", "1");
    const auto first = call(*object, "GetProcessID");
    object.reset();
    shortLimits_ = 1;  // the time that the process that hangs gets
    auto next = open("hangs.release", "1");
    EXPECT_NE(call(*next, "GetProcessID"), first);
}

TEST_F(PluginFaults, AProcessThatHangsOverTheNextObjectIsKilledWhenADocumentHasWaitedForIt) {
    auto object = open("hangs.create2", "1");
    const pid_t first = call(*object, "GetProcessID").toInt32();
    object.reset();
    shortLimits_ = 1;
    auto next = open("hangs.create2", "1");
    EXPECT_NE(call(*next, "GetProcessID"), base::Variant(first));
    EXPECT_EQ(kill(first, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST_F(PluginFaults, AProcessThatEndsAfterItHasMadeTheNextObjectIsReplacedWithoutAnError) {
    auto object = open("quits.create2", "1");
    const pid_t first = call(*object, "GetProcessID").toInt32();
    object.reset();
    ASSERT_TRUE(ends(first));
    auto next = open("quits.create2", "1");
    EXPECT_NE(call(*next, "GetProcessID"), base::Variant(first));
    EXPECT_EQ(item(*next, "GetMetaTagText", 1), "GetMetaTagText1");
}

TEST_F(PluginFaults, AProcessThatMakesNoProperNextObjectIsReplacedWithoutAnError) {
    for (const std::string& progId : {"understates.create2"s, "mumbles.create2"s, "dies.create2"s}) {
        auto object = open(progId, "1");
        const auto first = call(*object, "GetProcessID");
        object.reset();
        auto next = open(progId, "1");
        EXPECT_NE(call(*next, "GetProcessID"), first) << progId;
    }
}

TEST_F(PluginFaults, AFirstObjectWithoutANumberIsAnErrorOfTheCreation) {
    EXPECT_EQ(errorOf([&] { create("understates.create"); }).description(),
              "understates.create: create: the plug-in answered without the number of an object");
}

TEST_F(PluginFaults, AProcessThatHangsOverAnObjectThatNobodyNeedsEndsWithTheFactory) {
    {
        platform::posix::PluginFactory factory({folder_.path()}, nullptr);
        std::filesystem::create_symlink(FAULTY_PLUGIN, folder_ / "hangs.create2");
        factory.create("hangs.create2");
    }
    EXPECT_TRUE(noChildIsLeft());
}

TEST_F(PluginFaults, OverAnAttachmentCostTheDocumentAroundItNothing) {
    auto parent = open("dies.Echo", "3");
    auto child = open("dies.Echo", "1");
    errorOf([&] { call(*child, "Echo", "text"); });
    child.reset();
    EXPECT_EQ(item(*parent, "GetSubDocumentTempPath", 2), "GetSubDocumentTempPath2");
    auto nextChild = open("dies.Echo", "1");
    EXPECT_EQ(item(*nextChild, "GetMetaTagText", 1), "GetMetaTagText1");
}

TEST_F(PluginFaults, APluginThatDoesNotReadHoldsUpNobodyForever) {
    limit_ = std::chrono::milliseconds(200);
    const auto error = errorOf([&] { create("hangs.start"); });
    EXPECT_EQ(error.description(), "hangs.start: create: the plug-in did not answer within 0.2 seconds");
}

TEST_F(PluginFaults, AnExitAtStartIsAnErrorOfTheCreation) {
    const auto error = errorOf([&] { create("exits.start"); });
    EXPECT_EQ(error.description(), "exits.start: create: the plug-in process ended (exit status 3)");
    EXPECT_TRUE(noChildIsLeft());
}

TEST_F(PluginFaults, ALineThatNobodyAskedForIsAnErrorOfTheNextCall) {
    auto object = create("chatters.call");
    const auto error = errorOf([&] {
        call(*object, "Echo", "text");
        call(*object, "Echo", "text");
    });
    EXPECT_THAT(error.description(), HasSubstr("not JSON-RPC: \"by the way\""));
}

TEST_F(PluginFaults, AProcessThatDiesBetweenDocumentsIsReplacedWithoutAnError) {
    auto object = open("dies.release", "1");
    const auto first = call(*object, "GetProcessID");
    object.reset();
    auto next = open("dies.release", "1");
    EXPECT_NE(call(*next, "GetProcessID"), first);
}

TEST_F(PluginFaults, AProcessThatChattersBetweenDocumentsIsReplacedWithoutAnError) {
    open("chatters.release", "1").reset();
    auto next = open("chatters.release", "1");
    EXPECT_EQ(item(*next, "GetMetaTagText", 1), "GetMetaTagText1");
}

TEST_F(PluginFaults, ARangeOrWhileAnswerWithTooManyOrNoItemsIsAFault) {
    auto many = open("overdoes.range", "3");
    call(*many, "GetNumberOfSentences");
    EXPECT_THAT(errorOf([&] { item(*many, "GetSentenceText", 1); }).description(),
                HasSubstr("GetSentenceText: the plug-in answered more items than it was asked for"));
    auto none = open("withholds.range", "3");
    call(*none, "GetNumberOfSentences");
    EXPECT_THAT(errorOf([&] { item(*none, "GetSentenceText", 1); }).description(),
                HasSubstr("GetSentenceText: the plug-in answered a range without a whole item"));
}

TEST_F(PluginFaults, NoProcessIsLeftWhenTheFactoryIsGone) {
    {
        platform::posix::PluginFactory factory({folder_.path()}, nullptr);
        std::filesystem::create_symlink(FAULTY_PLUGIN, folder_ / "well.behaved");
        factory.create("well.behaved");
    }
    EXPECT_TRUE(noChildIsLeft());
}

/// Holds a process so that its end stays unnoticed by its parent: the end goes to the holder first.
class Holder {
  public:
    explicit Holder(pid_t process) {
        std::array<int, 2> tell{};
        EXPECT_EQ(pipe(tell.data()), 0);
        id_ = fork();
        if (id_ == 0) {
            const char holds = ptrace(PTRACE_SEIZE, process, nullptr, nullptr) == 0 ? 'y' : 'n';
            const bool told = write(tell[1], &holds, 1) == 1;
            for (; told;) {
                pause();
            }
            _exit(1);
        }
        close(tell[1]);
        char holds = 'n';
        EXPECT_EQ(read(tell[0], &holds, 1), 1);
        close(tell[0]);
        holds_ = holds == 'y';
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() {
        kill(id_, SIGKILL);
        waitpid(id_, nullptr, 0);
    }

    [[nodiscard]] bool holds() const { return holds_; }

  private:
    pid_t id_ = -1;
    bool holds_ = false;
};

TEST_F(PluginFaults, AProcessThatDoesNotEndWhenItIsKilledHoldsUpNobodyForever) {
    auto object = create("mumbles.Echo");
    const pid_t plugin = call(*object, "GetProcessID").toInt32();
    {
        const Holder holder(plugin);
        if (!holder.holds()) {
            GTEST_SKIP() << "the system lets nobody trace a process";
        }
        EXPECT_THAT(errorOf([&] { call(*object, "Echo", "text"); }).description(), HasSubstr("not JSON-RPC"));
        EXPECT_EQ(waitpid(plugin, nullptr, WNOHANG), 0) << "it was not held";
    }
    create("a.plugin");  // takes notice of what has ended since
    EXPECT_EQ(waitpid(plugin, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

/// Runs the service's part of a test, which ends its process; gives the number that it told before.
template <class Service>
pid_t runService(const Service& service) {
    std::array<int, 2> tell{};
    EXPECT_EQ(pipe(tell.data()), 0);
    const pid_t id = fork();
    if (id == 0) {
        service([&](pid_t told) {
            if (write(tell[1], &told, sizeof told) != sizeof told) {
                _exit(1);
            }
        });
        _exit(0);
    }
    close(tell[1]);
    pid_t told = 0;
    EXPECT_EQ(read(tell[0], &told, sizeof told), static_cast<ssize_t>(sizeof told));
    close(tell[0]);
    waitpid(id, nullptr, 0);
    return told;
}

TEST_F(PluginFaults, APluginDiesWithTheService) {
    const pid_t plugin = runService([this](const auto& tell) {
        // The service ends without any clean-up, while the plug-in hangs and reads nothing more.
        auto object = create("hangs.release");
        const pid_t id = call(*object, "GetProcessID").toInt32();
        object.reset();
        tell(id);
        _exit(0);
    });
    EXPECT_TRUE(ends(plugin)) << "the plug-in has outlived the service";
}

TEST_F(PluginFaults, WhatAPluginHasStartedDiesWithAServiceThatEndsItself) {
    for (const bool isInUse : {true, false}) {
        const pid_t helper = runService([&](const auto& tell) {
            auto object = create("a.plugin");
            tell(call(*object, "StartHelper").toInt32());
            if (!isInUse) {
                object.reset();
            }
            platform::posix::PosixProcess process([this] { factory_.killProcesses(); });
            process.endProcess(platform::ExitStatus::failed);
        });
        EXPECT_TRUE(ends(helper)) << "the helper has outlived the service";
    }
}

}  // namespace
