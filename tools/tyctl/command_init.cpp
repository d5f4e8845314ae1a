#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>

#include "infra/tysRegistry.h"
#include "platform/sqlite/library_schema.h"
#include "platform/sqlite/sqlite_engine.h"
#include "tyctl/arguments.h"
#include "tyctl/commands.h"
#include "tyctl/console.h"
#include "tyctl/failure.h"
#include "tyctl/settings.h"

namespace tyctl {
namespace {

namespace fs = std::filesystem;

struct Options {
    std::string library;
    std::string log;
    bool keep = false;
};

std::string environment(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): one thread
    return value == nullptr ? std::string() : value;
}

fs::path defaultLibrary() {
    if (const std::string data = environment("XDG_DATA_HOME"); !data.empty()) {
        return fs::path(data) / "tessaly" / "library.db";
    }
    const std::string home = environment("HOME");
    if (home.empty()) {
        throw Failure("neither XDG_DATA_HOME nor HOME is set; name the library file: tyctl init LIBRARY");
    }
    return fs::path(home) / ".local" / "share" / "tessaly" / "library.db";
}

void requireLibrary(const fs::path& file) {
    try {
        platform::SqliteEngine engine;
        platform::ConnectionSettings source;
        source.dataSource = file.string();
        engine.open(source)->close();
    } catch (const std::exception& error) {
        throw Failure("cannot keep " + file.string() + ": " + error.what() +
                      "; name a library, or leave --keep away and give a path where none is yet");
    }
}

/// True when a library was made.
bool prepareLibrary(const fs::path& library, bool keep) {
    std::error_code error;
    const bool exists = fs::exists(fs::symlink_status(library, error));
    if (exists && !keep) {
        throw Failure(library.string() +
                      " exists; give another path, or --keep to write only the settings for it");
    }
    if (exists) {
        requireLibrary(library);
        return false;
    }
    if (keep) {
        throw Failure(library.string() + " does not exist; leave --keep away to make it");
    }
    fs::create_directories(library.parent_path(), error);
    if (error) {
        throw Failure("cannot make the folder " + library.parent_path().string() + ": " + error.message());
    }
    platform::createLibrary(library.string());
    return true;
}

void writeSettings(Settings& settings, const fs::path& library, const std::string& log) {
    const std::string types(infra::dataTypesKey);
    settings.putText({std::string(infra::serviceKey), "DataBasePath"}, library.string());
    for (const std::string_view textType : {"txt", "md", "Default"}) {
        settings.putText({types + std::string(textType), "IndexPlugin"}, "Tessaly.TextExtractor");
    }
    settings.putText({types + "eml", "IndexPlugin"}, "Tessaly.MailExtractor");
    if (!log.empty()) {
        const std::string indexer(infra::indexerKey);
        settings.putText({indexer, "LogFilePath"}, fs::absolute(log).lexically_normal().string());
        settings.putNumber({indexer, "LoggingOn"}, 1);
    }
}

int init(const Options& options) {
    const fs::path library = options.library.empty() ? defaultLibrary() : fs::path(options.library);
    const fs::path whole = fs::absolute(library).lexically_normal();
    const bool made = prepareLibrary(whole, options.keep);
    Settings settings;
    writeSettings(settings, whole, options.log);
    std::cout << (made ? "Made the library " : "Kept the library ") << printablePath(whole.string()) << '\n'
              << "Wrote the settings to " << printablePath(settings.path()) << '\n'
              << "Next: tyctl add FOLDER, then tyctl supervise -- tyindexerd\n";
    return succeeded;
}

}  // namespace

void addInitCommand(CLI::App& program, int& status) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("init", "Make a library and the settings for it");
    command
        ->add_option("LIBRARY", options->library,
                     "The library file (default: tessaly/library.db in the user's data folder)")
        ->check(notEmpty());
    command->add_option("--log", options->log, "Let the service write a log to this file")->check(notEmpty());
    command->add_flag("--keep", options->keep, "Use a library that exists and write only the settings");
    command->callback([options, &status] { status = init(*options); });
}

}  // namespace tyctl
