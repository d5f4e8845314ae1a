#include "app/main_run.h"

#include <string>

#include "app/Main.h"
#include "indexer/Indexer.h"
#include "infra/Services.h"
#include "platform/ui.h"

namespace app {

void runUntilClosed(infra::Services& services, const ServiceOptions& options, const ErrorReport& report) {
    indexer::Indexer indexer(services);
    Main window(services, [&indexer](std::int32_t id) { return indexer.DoIndex(id); });
    window.onStartUpError(
        [&report](std::string_view error) { report("The service could not start: " + std::string(error)); });
    if (options.untilIdle) {
        window.onCycleEnd([&window](CycleOutcome outcome) {
            if (outcome == CycleOutcome::nothingToDo) {
                window.close();
            }
        });
    }
    window.start();
    if (!options.pollInterval.empty()) {
        window.takePollInterval(options.pollInterval);
    }
    services.system.toolkit.run();
}

}  // namespace app
