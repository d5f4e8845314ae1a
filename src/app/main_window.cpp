// tyindexer: the indexing service with its control window on the screen.
#include <optional>

#include "app/main_service.h"
#include "base/runtime_error.h"
#include "platform/posix/signal_waiter.h"
#include "platform/qt/display.h"
#include "platform/qt/qt_toolkit.h"

namespace {

constexpr const char* programName = "tyindexer";

void requireDisplay() {
    if (const std::optional<std::string> trouble = platform::qt::displayTrouble()) {
        throw base::RuntimeError(
            base::ErrorNumber::cannotCreateObject,
            "The window cannot be shown: " + *trouble + "; run tyindexerd, the service without a window");
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::optional<platform::qt::Display> display;
    return app::runService(
        argc, argv,
        {programName,
         "Indexes the documents that the queue of a document library names, with a control window.",
         [&display](platform::posix::SignalWaiter& waiter) {
             requireDisplay();
             display.emplace(programName);
             return std::make_unique<platform::qt::QtToolkit>(waiter, waiter.descriptor());
         }});
}
