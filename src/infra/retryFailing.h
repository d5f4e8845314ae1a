// retryFailing repeats a statement until it succeeds, as the library's long-running operations do.
#pragma once

#include <chrono>
#include <concepts>
#include <exception>
#include <string>

#include "infra/Services.h"
#include "platform/clock.h"

namespace infra {

/// The wait before a failed statement runs again, so that a fault that persists does not burn a core.
inline constexpr std::chrono::milliseconds retryPause{50};

/// Runs the statement and gives its result. Each failure is logged at level 3 as the label, or what a label
/// that is a function gives, and the error's description, and the statement runs again, without limit.
/// Nothing refreshes the heartbeat meanwhile, so that a supervisor notices a job that hangs here.
template <class Label, class Statement>
auto retryFailing(Services& services, const Label& label, Statement statement) {
    const auto describe = [&label](const std::exception& error) {
        if constexpr (std::invocable<const Label&>) {
            return std::string(label()) + error.what();
        } else {
            return std::string(label) + error.what();
        }
    };
    for (;;) {
        try {
            return statement();
        } catch (const std::exception& error) {
            services.support.WriteLog(describe(error), LogLevel::errorReport);
        }
        services.system.clock.pause(retryPause);
    }
}

}  // namespace infra
