#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/date_time.h"
#include "infra/tysRegistry.h"
#include "platform/posix/system_clock.h"
#include "tyctl/commands.h"
#include "tyctl/console.h"
#include "tyctl/failure.h"
#include "tyctl/library.h"

namespace tyctl {
namespace {

struct Status {
    std::string library;
    std::string supervisor;
    Heartbeat heartbeat;
    std::optional<std::int64_t> silentSeconds;  // since the last sign of life
    std::string inWork;
    std::int64_t waiting = 0;
    std::int64_t claimed = 0;
    std::int64_t documents = 0;
    std::int64_t indexingFailed = 0;
    std::int64_t words = 0;
    std::int64_t sentences = 0;
    std::vector<std::pair<std::string, std::int64_t>> types;

    [[nodiscard]] bool stale() const {
        return heartbeat.queueNumber != 0 && silentSeconds.value_or(0) > heartbeat.deadMansSwitchSeconds;
    }
};

std::string documentInWork(Settings& settings, Library& library, std::int32_t queueNumber) {
    if (queueNumber == 0) {
        return {};
    }
    const auto row =
        library.query("SELECT doc_path FROM file_index_queue WHERE id = " + std::to_string(queueNumber));
    if (!row->eof() && !row->field("doc_path").isNull()) {
        return row->field("doc_path").toText();
    }
    // The entry is gone where its document was queued twice; what is left is the end of the path.
    return "..." + settings.text(infra::indexerKey, "IndexingKey");
}

void countLibrary(Status& status, Library& library) {
    const std::string live = " FROM document_object WHERE location_invalid = FALSE";
    status.waiting =
        library.count("SELECT COUNT(id) AS counted FROM file_index_queue WHERE flag_dirty = FALSE");
    status.claimed =
        library.count("SELECT COUNT(id) AS counted FROM file_index_queue WHERE flag_dirty = TRUE");
    status.documents = library.count("SELECT COUNT(id) AS counted" + live);
    status.indexingFailed =
        library.count("SELECT COUNT(id) AS counted" + live + " AND flag_indexing_failed = TRUE");
    status.words = library.count("SELECT COUNT(id) AS counted FROM root_word");
    status.sentences = library.count(
        "SELECT COUNT(id_document_object) AS counted FROM ascii_sentences WHERE num_sentence > 0");
    const auto types = library.query("SELECT data_type, COUNT(id) AS counted" + live +
                                     " GROUP BY data_type ORDER BY data_type ASC");
    for (; !types->eof(); types->moveNext()) {
        const auto type = types->field("data_type");
        status.types.emplace_back(type.isNull() ? std::string() : type.toText(),
                                  static_cast<std::int64_t>(types->field("counted").toDouble()));
    }
}

Status read() {
    Settings settings;
    Library library(settings);
    Status status;
    status.library = library.path();
    status.supervisor = settings.text(infra::masterKey, "");
    status.heartbeat = settings.heartbeat();
    if (const auto touched = base::DateTime::parse(status.heartbeat.lastTouch)) {
        status.silentSeconds = platform::posix::SystemClock().now().seconds() - touched->seconds();
    }
    status.inWork = documentInWork(settings, library, status.heartbeat.queueNumber);
    countLibrary(status, library);
    return status;
}

void printWork(const Status& status) {
    const std::string since = status.silentSeconds ? status.heartbeat.lastTouch + " (" +
                                                         std::to_string(*status.silentSeconds) + " s ago)"
                                                   : std::string();
    if (status.heartbeat.queueNumber != 0) {
        std::cout << "In work:     " << printablePath(status.inWork) << " (queue entry "
                  << status.heartbeat.queueNumber << "), since " << since
                  << (status.stale() ? "; it is overdue" : "") << '\n';
    } else if (since.empty()) {
        std::cout << "In work:     nothing yet\n";
    } else {
        std::cout << "In work:     nothing, last sign of life " << since << '\n';
    }
    std::cout << "Supervisor:  " << (status.supervisor.empty() ? "none" : onOneLine(status.supervisor))
              << '\n';
}

void print(const Status& status) {
    std::cout << "Library:     " << printablePath(status.library) << '\n';
    printWork(status);
    std::cout << "Queue:       " << status.waiting << " waiting, " << status.claimed << " claimed\n"
              << "Documents:   " << status.documents;
    std::string separator = " (";
    for (const auto& [type, count] : status.types) {
        std::cout << separator << (type.empty() ? "without type" : onOneLine(type)) << ": " << count;
        separator = ", ";
    }
    std::cout << (status.types.empty() ? "" : ")") << '\n';
    if (status.indexingFailed > 0) {
        std::cout << "             " << status.indexingFailed << " indexed by the default plug-in only\n";
    }
    std::cout << "Words:       " << status.words << '\n' << "Sentences:   " << status.sentences << '\n';
}

void printJson(const Status& status) {
    nlohmann::json types = nlohmann::json::object();
    for (const auto& [type, count] : status.types) {
        types[type] = count;
    }
    nlohmann::json work = nullptr;
    if (status.heartbeat.queueNumber != 0) {
        work = {{"queue_entry", status.heartbeat.queueNumber},
                {"doc_path", status.inWork},
                {"overdue", status.stale()}};
    }
    const nlohmann::json all = {{"library", status.library},
                                {"in_work", work},
                                {"last_touch", status.heartbeat.lastTouch},
                                {"supervisor", status.supervisor},
                                {"queue", {{"waiting", status.waiting}, {"claimed", status.claimed}}},
                                {"documents", status.documents},
                                {"documents_by_type", types},
                                {"indexing_failed", status.indexingFailed},
                                {"words", status.words},
                                {"sentences", status.sentences}};
    std::cout << all.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

}  // namespace

void addStatusCommand(CLI::App& program, int& status) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* command = program.add_subcommand("status", "Show what is in work and what the library holds");
    command->add_flag("--json", *json, "Print JSON");
    command->callback([json, &status] {
        const Status now = read();
        *json ? printJson(now) : print(now);
        status = succeeded;
    });
}

}  // namespace tyctl
