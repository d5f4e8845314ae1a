#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

#include "base/variant.h"
#include "platform/posix/reg_format.h"
#include "tyctl/arguments.h"
#include "tyctl/commands.h"
#include "tyctl/console.h"
#include "tyctl/failure.h"
#include "tyctl/known_settings.h"
#include "tyctl/settings.h"

namespace tyctl {
namespace {

using platform::ValueType;

struct Options {
    std::string name;
    std::string value;
    std::string file;
    bool number = false;
    bool text = false;
    bool expand = false;
};

std::string typeName(ValueType type) {
    switch (type) {
        case ValueType::text:
            return "text";
        case ValueType::expandableText:
            return "expand";
        case ValueType::binary:
            return "binary";
        case ValueType::number:
            return "number";
        default:
            return "type " + std::to_string(static_cast<std::uint32_t>(type));
    }
}

std::string nameOf(const SettingName& setting) {
    return shortKey(setting.key) + "\\" + setting.value;
}

/// The setting of a name on the command line. An empty one is most often a variable of a script that is not
/// set; it would name the unnamed value of the service's key, or no key at all.
SettingName named(const std::string& text) {
    SettingName name = parseSettingName(text);
    if (text.empty() || name.key.empty()) {
        throw WrongUse("\"" + text +
                       "\" names no setting; name it key\\value, such as Indexer\\PollInterval");
    }
    return name;
}

void refuse(const SettingName& name, const std::string& objection) {
    if (!objection.empty()) {
        throw WrongUse("\"" + nameOf(name) + "\" " + objection);
    }
}

int get(const Options& options) {
    Settings settings;
    const SettingName name = named(options.name);
    const auto found = settings.find(name);
    if (!found) {
        throw Failure("there is no setting \"" + nameOf(name) + "\" in " + settings.path() +
                      "; tyctl settings list shows what is there");
    }
    std::cout << shown(*found) << '\n';
    return succeeded;
}

bool readsAsNumber(const std::string& text, std::int32_t& number) {
    const base::Variant written(text);
    if (!written.isNumeric()) {
        return false;
    }
    const double value = written.toDouble();
    constexpr double lowest = -2147483648.0;
    constexpr double highest = 2147483647.0;
    if (value < lowest || value > highest) {
        return false;
    }
    number = static_cast<std::int32_t>(value);
    return value == static_cast<double>(number);
}

/// What was asked for; else what the service reads; else what is stored there already; else text.
ValueType typeFor(const Options& options, const SettingName& name, Settings& settings) {
    if (options.number) {
        return ValueType::number;
    }
    if (options.expand) {
        return ValueType::expandableText;
    }
    if (options.text) {
        return ValueType::text;
    }
    const auto stored = settings.find(name);
    if (const auto known = knownTypeOf(name)) {
        const bool keepExpandable =
            *known == ValueType::text && stored && stored->type == ValueType::expandableText;
        return keepExpandable ? ValueType::expandableText : *known;
    }
    return stored ? stored->type : ValueType::text;
}

int set(const Options& options) {
    Settings settings;
    const SettingName name = named(options.name);
    const ValueType type = typeFor(options, name, settings);
    std::int32_t number = 0;
    switch (type) {
        case ValueType::number:
            if (!readsAsNumber(options.value, number)) {
                refuse(name, "takes a whole number of 32 bits, not \"" + options.value + "\"");
            }
            refuse(name, objectionToNumber(name, number));
            settings.putNumber(name, number);
            return succeeded;
        case ValueType::text:
        case ValueType::expandableText:
            refuse(name, objectionToText(name, options.value));
            settings.putText(name, options.value, type);
            return succeeded;
        default:
            throw Failure("\"" + nameOf(name) + "\" holds a value of kind " + typeName(type) +
                          "; say --text or --number to replace it, or use tyctl settings import");
    }
}

int remove(const Options& options) {
    Settings settings;
    const SettingName name = named(options.name);
    if (!settings.remove(name)) {
        throw Failure("there is no setting \"" + nameOf(name) + "\" in " + settings.path());
    }
    return succeeded;
}

void listKey(Settings& settings, const std::string& key) {
    // The root holds keys alone.
    std::vector<StoredValue> values;
    if (!key.empty()) {
        settings.require(settings.store().values(key, values), "list", {key, {}});
    }
    for (const StoredValue& value : values) {
        std::cout << nameOf({key, value.name}) << " = " << printablePath(shown(value)) << "  ("
                  << typeName(value.type) << ")\n";
    }
    std::vector<std::string> below;
    const auto status = settings.store().subKeys(key, below);
    if (!key.empty() || status != platform::SettingsStatus::notFound) {
        settings.require(status, "list", {key, {}});
    }
    const std::string prefix = key.empty() ? std::string() : key + "\\";
    for (const std::string& name : below) {
        std::string path = prefix;
        listKey(settings, path.append(name));
    }
}

int list(const Options& options) {
    Settings settings;
    const std::string key = expandKey(options.name);
    std::vector<StoredValue> values;
    if (!key.empty() && settings.store().values(key, values) == platform::SettingsStatus::notFound) {
        throw Failure("there is no key \"" + shortKey(key) + "\" in " + settings.path());
    }
    listKey(settings, key);
    return succeeded;
}

int exportAll(const Options& options) {
    Settings settings;
    const std::string text = platform::posix::exportRegistryText(settings.store(), expandKey(options.name));
    if (options.file.empty()) {
        std::cout << text << std::flush;
        return std::cout ? succeeded : failed;
    }
    std::ofstream file(options.file, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw Failure("cannot write " + options.file);
    }
    return succeeded;
}

int importAll(const Options& options) {
    Settings settings;
    std::string text;
    if (options.file == "-") {
        text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    } else {
        std::ifstream file(options.file, std::ios::binary);
        if (!file) {
            throw Failure("cannot read " + options.file);
        }
        text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    platform::posix::importRegistryText(settings.store(), text);
    return succeeded;
}

CLI::App* addPart(CLI::App& settings, const std::string& name, const std::string& description,
                  const std::shared_ptr<Options>& options, int (*run)(const Options&), int& status) {
    CLI::App* part = settings.add_subcommand(name, description);
    part->callback([options, run, &status] { status = run(*options); });
    return part;
}

}  // namespace

void addSettingsCommand(CLI::App& program, int& status) {
    const auto options = std::make_shared<Options>();
    CLI::App* settings = program.add_subcommand("settings", "Read and change the service's settings");
    settings->require_subcommand(1);
    settings->footer(
        "A setting is named key\\value, such as Indexer\\PollInterval, DataTypes\\txt\\IndexPlugin or\n"
        "service\\DataBasePath; \"/\" separates as \"\\\" does, and full key paths are taken as well.");

    CLI::App* part = addPart(*settings, "get", "Print a value", options, get, status);
    part->add_option("NAME", options->name, "The setting")->required();

    part = addPart(*settings, "set", "Store a value", options, set, status);
    part->add_option("NAME", options->name, "The setting")->required();
    part->add_option("VALUE", options->value, "What it becomes")->required();
    CLI::Option* number = part->add_flag("--number", options->number, "Store a number");
    CLI::Option* text = part->add_flag("--text", options->text, "Store a text");
    CLI::Option* expand = part->add_flag("--expand", options->expand, "Store an expandable text");
    number->excludes(text)->excludes(expand);
    text->excludes(expand);

    part = addPart(*settings, "delete", "Remove a value", options, remove, status);
    part->add_option("NAME", options->name, "The setting")->required();

    part = addPart(*settings, "list", "Print all values of a key and below it", options, list, status);
    part->add_option("KEY", options->name, "The key (default: all)");

    part = addPart(*settings, "export", "Print settings as .reg text", options, exportAll, status);
    part->add_option("KEY", options->name, "The key (default: all)");
    part->add_option("-o,--output", options->file, "The file to write instead of standard output")
        ->check(notEmpty());

    part = addPart(*settings, "import", "Take settings from .reg text", options, importAll, status);
    part->add_option("FILE", options->file, "The file to read; - is standard input")
        ->required()
        ->check(notEmpty());
}

}  // namespace tyctl
