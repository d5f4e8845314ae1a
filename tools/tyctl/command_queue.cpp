#include <CLI/CLI.hpp>
#include <iostream>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tyctl/arguments.h"
#include "tyctl/commands.h"
#include "tyctl/console.h"
#include "tyctl/failure.h"
#include "tyctl/library.h"

namespace tyctl {
namespace {

struct Options {
    int limit = 50;
    bool json = false;
};

std::string textOf(const base::Variant& value) {
    return value.isNull() ? std::string() : value.toText();
}

int kindOf(const base::Variant& value) {
    return value.isNull() ? 0 : value.toInt32();
}

std::string kindName(int kind) {
    switch (kind) {
        case 1:
            return "index as new";
        case 3:
            return "moved";
        default:
            return "index";
    }
}

void printRow(platform::Recordset& row) {
    const bool claimed = row.field("flag_dirty").toBool();
    std::cout << row.field("id").toInt32() << "  " << (claimed ? "claimed" : "waiting") << "  "
              << kindName(kindOf(row.field("index_type"))) << "  " << textOf(row.field("date_time")) << "  "
              << printablePath(textOf(row.field("doc_path"))) << '\n';
}

nlohmann::json asJson(platform::Recordset& row) {
    return {{"id", row.field("id").toInt32()},
            {"claimed", row.field("flag_dirty").toBool()},
            {"index_type", kindOf(row.field("index_type"))},
            {"date_time", textOf(row.field("date_time"))},
            {"data_type", textOf(row.field("data_type"))},
            {"doc_path", textOf(row.field("doc_path"))}};
}

int listQueue(const Options& options) {
    Settings settings;
    Library library(settings);
    const auto rows = library.query(
        "SELECT id, doc_path, index_type, date_time, data_type, flag_dirty FROM file_index_queue ORDER BY id "
        "ASC");
    nlohmann::json entries = nlohmann::json::array();
    std::int64_t printed = 0;
    while (!rows->eof() && (options.limit == 0 || printed < options.limit)) {
        if (options.json) {
            entries.push_back(asJson(*rows));
        } else {
            printRow(*rows);
        }
        ++printed;
        rows->moveNext();
    }
    if (options.json) {
        std::cout << entries.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
        return succeeded;
    }
    const std::int64_t all = library.count("SELECT COUNT(id) AS counted FROM file_index_queue");
    if (all == 0) {
        std::cout << "The queue is empty.\n";
    } else if (all > printed) {
        std::cout << "... and " << all - printed << " more; --limit 0 shows all\n";
    }
    return succeeded;
}

}  // namespace

void addQueueCommand(CLI::App& program, int& status) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("queue", "Show the documents that wait");
    command->add_option("--limit", options->limit, "Entries to show; 0 shows all")
        ->check(wholeNumber(0, std::numeric_limits<std::int32_t>::max()))
        ->capture_default_str();
    command->add_flag("--json", options->json, "Print JSON");
    command->callback([options, &status] { status = listQueue(*options); });
}

}  // namespace tyctl
