// What the library's operations ask of a system and a command has no use for: windows, plug-ins and the end
// of the service.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/runtime_error.h"
#include "platform/automation.h"
#include "platform/posix/posix_process.h"
#include "platform/ui.h"
#include "tyctl/console.h"
#include "tyctl/failure.h"

namespace tyctl {

class BareAutomation : public platform::AutomationFactory {
  public:
    std::unique_ptr<platform::AutomationObject> create(std::string_view progId) override {
        throw base::RuntimeError(base::ErrorNumber::cannotCreateObject,
                                 "tyctl starts no plug-ins: " + std::string(progId));
    }
};

class BareToolkit : public platform::Toolkit {
  public:
    platform::Form& createForm(std::string_view name, std::string_view /*caption*/, int /*width*/,
                               int /*height*/) override {
        throw base::RuntimeError(base::ErrorNumber::invalidProcedureCall,
                                 "tyctl has no windows: " + std::string(name));
    }
    void processEvents() override {}
    void run() override {}
    void messageBox(std::string_view text) override { note(onOneLine(text)); }
    std::optional<std::string> saveFileDialog(std::span<const platform::FileFilter> /*filters*/,
                                              std::string_view /*defaultExtension*/) override {
        return std::nullopt;
    }
};

/// The service's operations end the process where they cannot go on; a command ends with a failure instead.
class BareProcess : public platform::posix::PosixProcess {
  public:
    [[noreturn]] void endProcess(platform::ExitStatus /*status*/) override {
        throw Failure("the library could not be opened");
    }
};

}  // namespace tyctl
