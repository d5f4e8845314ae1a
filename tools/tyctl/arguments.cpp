#include "tyctl/arguments.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <system_error>
#include <vector>

namespace tyctl {

CLI::Validator wholeNumber(std::int64_t lowest, std::int64_t highest) {
    const std::string range = std::to_string(lowest) + " to " + std::to_string(highest);
    return {[lowest, highest, range](std::string& text) {
                std::int64_t number = 0;
                const char* end = text.data() + text.size();
                const auto read = std::from_chars(text.data(), end, number);
                if (read.ec != std::errc() || read.ptr != end || number < lowest || number > highest) {
                    return "\"" + text + "\" is no whole number from " + range;
                }
                text = std::to_string(number);  // "010" is ten, not eight
                return std::string();
            },
            ""};
}

CLI::Validator notEmpty() {
    return {[](const std::string& text) { return std::string(text.empty() ? "must not be empty" : ""); }, ""};
}

std::string complaint(const CLI::App& program, const CLI::ParseError& error) {
    const CLI::App* command = &program;
    std::string path = program.get_name();
    for (auto below = command->get_subcommands(); !below.empty(); below = command->get_subcommands()) {
        command = below.front();
        path += " " + command->get_name();
    }
    const std::string help = "; see " + path + " --help";
    const bool isCommand = command->get_require_subcommand_min() > 0;
    std::vector<std::string> rest = command->remaining();
    std::erase(rest, "--");
    if (!rest.empty() && (isCommand || dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr)) {
        const bool isOption = rest.front().starts_with('-');
        return path + ": no " +
               (isOption    ? "option"
                : isCommand ? "command"
                            : "further argument") +
               " \"" + rest.front() + "\"" + help;
    }
    std::string what = error.what();
    if (const std::size_t missing = what.find(": 1 required "); missing != std::string::npos) {
        what = what.substr(0, missing) + " needs a value";
    }
    return path + ": " + what + help;
}

}  // namespace tyctl
