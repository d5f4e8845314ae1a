// The service's life, once a program has picked its parts: the same on every system.
#pragma once

#include <functional>
#include <string_view>

#include "app/main_options.h"

namespace infra {
class Services;
}

namespace app {

using ErrorReport = std::function<void(std::string_view text)>;

/// Shows the window, starts the service and runs it until the window is closed. `report` is told why a start
/// fails, before the process ends. An error that ends the program rises out of it.
void runUntilClosed(infra::Services& services, const ServiceOptions& options, const ErrorReport& report);

}  // namespace app
