// The command line of the programs that run the service, the same on every system.
#pragma once

#include <optional>
#include <string>

#include "platform/process.h"

namespace app {

struct ServiceOptions {
    bool untilIdle = false;
    std::string pollInterval;  // empty: as the settings say
    std::string traceFile;     // empty: no trace
};

struct ProgramDescription {
    std::string name;
    std::string purpose;  // a sentence
    std::string notes;    // where settings and plug-ins come from, how the program is ended
};

/// What a program has to tell instead of running: its help, its version, or what is wrong with the options.
struct CommandLineAnswer {
    platform::ExitStatus status;
    std::string text;
};

/// Reads the options. An answer means that the program is not to run.
[[nodiscard]] std::optional<CommandLineAnswer> readCommandLine(int argc, char** argv,
                                                               const ProgramDescription& description,
                                                               ServiceOptions& options);

}  // namespace app
