// The commands of tyctl, one source file each. Every function adds its command to the program; the command
// runs when its name stands on the command line and leaves its exit status in `status`.
#pragma once

namespace CLI {
class App;
}

namespace tyctl {

void addInitCommand(CLI::App& program, int& status);
void addAddCommand(CLI::App& program, int& status);
void addQueueCommand(CLI::App& program, int& status);
void addStatusCommand(CLI::App& program, int& status);
void addSearchCommand(CLI::App& program, int& status);
void addSettingsCommand(CLI::App& program, int& status);
void addSuperviseCommand(CLI::App& program, int& status);

}  // namespace tyctl
