// A plug-in folder of a test's own, with programs under the ProgIDs that the test gives them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "base/runtime_error.h"
#include "fakes/temporary_folder.h"
#include "platform/posix/plugins/plugin_factory.h"

namespace plugin_test {

class PluginTest : public testing::Test {
  protected:
    std::unique_ptr<platform::AutomationObject> create(const std::string& progId,
                                                       const std::string& program = FAULTY_PLUGIN) {
        const std::filesystem::path file = folder_ / progId;
        if (!exists(file)) {
            create_symlink(program, file);
        }
        return factory_.create(progId);
    }

    /// An object whose document is open.
    std::unique_ptr<platform::AutomationObject> open(const std::string& progId, const std::string& document) {
        auto object = create(progId);
        EXPECT_EQ(call(*object, "SetDocumentID", document), base::Variant(true));
        return object;
    }

    static base::Variant call(platform::AutomationObject& object, const std::string& method) {
        return object.call(method);
    }
    static base::Variant call(platform::AutomationObject& object, const std::string& method,
                              const base::Variant& argument) {
        base::Variant copy = argument;
        return object.call(method, {&copy, 1});
    }
    static std::string item(platform::AutomationObject& object, const std::string& method, int index) {
        return call(object, method, static_cast<std::int16_t>(index)).toText();
    }

    /// The error that an action raises; number 0 when it raises none.
    template <class Action>
    static base::RuntimeError errorOf(const Action& action) {
        try {
            action();
        } catch (const base::RuntimeError& error) {
            return error;
        }
        return {0, "no error was raised"};
    }

    /// Waits for the end of a process, which stays to be taken notice of if it is a child.
    static bool ends(pid_t process) {
        const auto handle = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
        if (handle < 0) {
            return errno == ESRCH;
        }
        constexpr int patience = 60'000;
        pollfd ended{handle, POLLIN, 0};
        const bool hasEnded = poll(&ended, 1, patience) == 1;
        close(handle);
        return hasEnded;
    }

    /// What the faulty plug-in was asked, leaving out the other requests.
    std::vector<std::string> asked(const std::string& progId, const std::string& request) const {
        std::vector<std::string> found;
        std::istringstream lines(folder_.read(progId + ".log"));
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with(request)) {
                found.push_back(line);
            }
        }
        return found;
    }

    fakes::TemporaryFolder folder_;
    std::chrono::milliseconds limit_{60'000};
    int shortLimits_ = 0;  // how many objects get a short limit first
    platform::posix::PluginFactory factory_{
        {folder_.path()},
        [this] { return shortLimits_-- > 0 ? std::chrono::milliseconds(200) : limit_; },
        std::size_t{16} * 1024 * 1024};
};

}  // namespace plugin_test
