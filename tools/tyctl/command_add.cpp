#include <CLI/CLI.hpp>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/text.h"
#include "base/variant.h"
#include "tyctl/arguments.h"
#include "tyctl/commands.h"
#include "tyctl/console.h"
#include "tyctl/document_walker.h"
#include "tyctl/failure.h"
#include "tyctl/library.h"

namespace tyctl {
namespace {

/// Kinds of job: the first makes a new record beside the old one, the second refreshes the record that is
/// there.
constexpr int newRecord = 1;
constexpr int refreshedRecord = 2;

struct Options {
    std::vector<std::string> paths;
    std::int32_t user = 1;
    bool dryRun = false;
    bool hiddenToo = false;
    bool newRecords = false;
};

/// Queues documents in batches, each a transaction: quick, and never long in the way of the service.
class Queuer {
  public:
    Queuer(Library& library, const Options& options) : library_(library), options_(options) {}

    void take(const std::string& path) {
        ++found_;
        if (const std::string reason = reasonAgainst(path); !reason.empty()) {
            trouble(printablePath(path) + ": not queued: " + reason);
            return;
        }
        if (meetsAnother(path) || isWaiting(path)) {
            return;
        }
        if (!isValidText(path)) {
            remark(printablePath(path) +
                   ": the path is not valid UTF-8; queued as it is, but a plug-in may fail on it");
        }
        if (options_.dryRun) {
            std::cout << printablePath(path) << "  (" << typeName(path) << ")\n";
        } else {
            queue(path);
        }
        ++queued_;
        progress_.show(counted(queued_, "document") + " queued, at " + printablePath(path));
    }

    void trouble(const std::string& message) {
        remark(message);
        troubled_ = true;
    }

    int finish() {
        commit();
        progress_.clear();
        std::cout << (options_.dryRun ? "Would queue " : "Queued ") << counted(queued_, "document");
        if (waiting_ > 0) {
            std::cout << "; " << counted(waiting_, "document") << (waiting_ == 1 ? " was" : " were")
                      << " waiting already";
        }
        std::cout << '\n';
        if (found_ == 0 && !troubled_) {
            note("nothing to queue was found; files and folders that begin with a dot need --all");
        }
        return troubled_ ? failed : succeeded;
    }

  private:
    void remark(const std::string& message) {
        progress_.clear();
        note(message);
    }

    static std::string typeName(const std::string& path) {
        const std::string type = dataTypeOf(path);
        return type.empty() ? "no extension" : type;
    }

    /// The library finds paths without regard to letter case: of two that differ in nothing else, it would
    /// keep one document.
    bool meetsAnother(const std::string& path) {
        const auto [known, isNew] = seen_.emplace(base::fold(path), path);
        if (!isNew && known->second != path) {
            trouble(printablePath(path) + ": not queued: the library cannot tell it from " +
                    printablePath(known->second) + "; rename one of them");
        }
        return !isNew;
    }

    bool isWaiting(const std::string& path) {
        const auto rows =
            library_.query("SELECT doc_path FROM file_index_queue WHERE doc_path = " + library_.quoted(path) +
                           " AND flag_dirty = FALSE");
        if (rows->eof()) {
            return false;
        }
        if (const std::string other = rows->field("doc_path").toText(); other != path) {
            trouble(printablePath(path) + ": not queued: the library cannot tell it from " +
                    printablePath(other) + ", which is waiting; rename one of them");
        } else {
            ++waiting_;
        }
        return true;
    }

    void queue(const std::string& path) {
        constexpr int batch = 500;
        if (inBatch_ == 0) {
            library_.beginTransaction();
        }
        library_.execute(
            "INSERT INTO file_index_queue (doc_path, index_type, date_time, data_type, user_id, flag_dirty) "
            "VALUES (" +
            library_.quoted(path) + ", " + std::to_string(options_.newRecords ? newRecord : refreshedRecord) +
            ", " + library_.quotedNow() + ", " + library_.quoted(dataTypeOf(path)) + ", " +
            std::to_string(options_.user) + ", FALSE)");
        if (++inBatch_ == batch) {
            commit();
        }
    }

    void commit() {
        if (inBatch_ > 0) {
            library_.commitTransaction();
            inBatch_ = 0;
        }
    }

    Library& library_;
    const Options& options_;
    Progress progress_;
    std::unordered_map<std::string, std::string> seen_;
    std::int64_t found_ = 0;
    std::int64_t queued_ = 0;
    std::int64_t waiting_ = 0;
    int inBatch_ = 0;
    bool troubled_ = false;
};

int add(const Options& options) {
    Settings settings;
    Library library(settings);
    Queuer queuer(library, options);
    DocumentWalker walker(
        options.hiddenToo, [&](const std::string& path) { queuer.take(path); },
        [&](const std::string& message) { queuer.trouble(printablePath(message)); });
    for (const std::string& path : options.paths) {
        walker.walk(path);
    }
    return queuer.finish();
}

}  // namespace

void addAddCommand(CLI::App& program, int& status) {
    using Ids = std::numeric_limits<std::int32_t>;
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("add", "Queue documents for indexing");
    command->footer("Folders are taken with everything below them. The data type is the file's extension.");
    command->add_option("PATH", options->paths, "Files and folders")->required();
    command->add_option("--user", options->user, "The user who owns the documents")
        ->check(wholeNumber(Ids::min(), Ids::max()))
        ->capture_default_str();
    command->add_flag("--dry-run", options->dryRun, "Only tell what would be queued");
    command->add_flag("--all", options->hiddenToo, "Also take files and folders that begin with a dot");
    command->add_flag("--new", options->newRecords,
                      "Make new records instead of refreshing those that exist");
    command->callback([options, &status] { status = add(*options); });
}

}  // namespace tyctl
