// tyindexer-memory: what the service's memory grows by, told as JSON.
//   tyindexer-memory words [N]      loads the caches of a library that knows N words (1,000,000)
//   tyindexer-memory documents [N]  indexes N small documents (10,000) through the text plug-in, and tells
//                                   heap and resident memory on the way
// Library and settings lie in a temporary folder. The plug-in is looked for as the service looks for it.
#include <malloc.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "indexer/Indexer.h"
#include "infra/Services.h"
#include "infra/tysDataBase.h"
#include "platform/headless/headless_toolkit.h"
#include "platform/posix/no_drives.h"
#include "platform/posix/plugins/plugin_factory.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/posix_process.h"
#include "platform/posix/settings_file.h"
#include "platform/posix/signal_waiter.h"
#include "platform/posix/system_clock.h"
#include "platform/sqlite/library_schema.h"
#include "platform/sqlite/sqlite_engine.h"

namespace {

namespace fs = std::filesystem;

constexpr int wordsOfDocument = 400;
constexpr std::uint32_t vocabulary = 20000;

/// Wall and processor seconds since it was made; on a busy machine the two differ.
class Watch {
  public:
    [[nodiscard]] nlohmann::json seconds() const {
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - wall_;
        return {{"wall", wall.count()},
                {"processor", static_cast<double>(std::clock() - processor_) / CLOCKS_PER_SEC}};
    }

  private:
    std::chrono::steady_clock::time_point wall_ = std::chrono::steady_clock::now();
    std::clock_t processor_ = std::clock();
};

/// Bytes that the program has asked for and not given back.
std::int64_t heapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<std::int64_t>(info.uordblks + info.hblkhd);
}

std::int64_t residentBytes() {
    std::ifstream statm("/proc/self/statm");
    std::int64_t size = 0;
    std::int64_t resident = 0;
    statm >> size >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

/// The minimal standard generator: the same words in every run.
class Draw {
  public:
    std::uint32_t below(std::uint32_t limit) {
        state_ = state_ * 48271 % 2147483647;
        return static_cast<std::uint32_t>(state_ % limit);
    }

  private:
    std::uint64_t state_ = 20021105;
};

std::string word(std::uint32_t number) {
    std::string text;
    do {
        text += "bdfgklmnprstvz"[number % 14];
        text += "aeiou"[number / 14 % 5];
        number /= 70;
    } while (number > 0);
    return text + "n";
}

class Folder {
  public:
    Folder() : path_(fs::temp_directory_path() / ("tyindexer-memory-" + std::to_string(::getpid()))) {
        fs::create_directory(path_);
        platform::createLibrary(library());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    [[nodiscard]] std::string library() const { return file("library.db"); }
    [[nodiscard]] std::string file(const std::string& name) const { return (path_ / name).string(); }

  private:
    fs::path path_;
};

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};

/// Another program's hand on the library.
class Hand {
  public:
    explicit Hand(const std::string& library) {
        sqlite3* opened = nullptr;
        const int status = sqlite3_open(library.c_str(), &opened);
        database_.reset(opened);
        check(status);
        run("PRAGMA synchronous = OFF");
    }

    void run(const std::string& sql) {
        check(sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr));
    }

  private:
    void check(int status) {
        if (status != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(database_.get()));
        }
    }

    std::unique_ptr<sqlite3, CloseDatabase> database_;
};

/// The service without its window, on a folder of its own.
class Service {
  public:
    explicit Service(const Folder& folder) : settings_(folder.file("settings.db")) {
        toolkit_.createForm("Main", "memory", 0, 0);
        save(infra::serviceKey, "DataBasePath", folder.library());
        save(infra::indexerKey, "LogFilePath", folder.file("service.log"));
        save(std::string(infra::dataTypesKey) + "txt", "IndexPlugin", "Tessaly.TextExtractor");
    }

    infra::Services& services() { return services_; }
    indexer::Indexer& indexer() { return indexer_; }

  private:
    void save(std::string_view key, std::string_view name, std::string_view text) {
        services_.registry.SaveSettingString(platform::RootKey::currentUser, key, name, text);
    }

    platform::posix::SettingsFile settings_;
    platform::posix::PosixProcess process_;
    platform::posix::PosixFiles files_;
    platform::posix::NoDrives drives_;
    platform::posix::SystemClock clock_;
    platform::SqliteEngine engine_;
    platform::posix::PluginFactory plugins_{platform::posix::pluginFolders(process_.programDirectory()), {}};
    platform::posix::SignalWaiter waiter_;
    platform::headless::HeadlessToolkit toolkit_{waiter_};
    infra::Services services_{
        platform::System{settings_, engine_, plugins_, toolkit_, files_, process_, drives_, clock_}};
    indexer::Indexer indexer_{services_};
};

nlohmann::json measureWords(std::uint32_t words) {
    const Folder folder;
    Hand hand(folder.library());
    hand.run("BEGIN");
    for (std::uint32_t i = 1; i <= words; ++i) {
        const std::string id = std::to_string(i);
        hand.run("INSERT INTO root_word (id, word) VALUES (" + id + ", '" + word(i) + "')");
        hand.run(
            "INSERT INTO word_index (id_document_object, hit_count, comp_type, type, id_root_word, "
            "first_matching_sentence) VALUES (" +
            std::to_string(i / 1000) + ", 1, 2, 1, " + id + ", 1)");
    }
    hand.run("COMMIT");
    Service service(folder);
    infra::tysDataBase database(service.services());
    database.initialise();
    const Watch purgeWatch;
    database.getConnection()->execute(
        "DELETE * FROM root_word WHERE NOT EXISTS (SELECT id_root_word FROM word_index WHERE id_root_word = "
        "root_word.id)");
    const nlohmann::json purge = purgeWatch.seconds();
    const std::int64_t heap = heapBytes();
    const std::int64_t resident = residentBytes();
    const Watch loadWatch;
    service.indexer().LoadCaches(database);
    const nlohmann::json load = loadWatch.seconds();
    nlohmann::json result = {
        {"words", words},
        {"seconds of the load", load},
        {"of these for the purge of words without rows", purge},
        {"heap bytes per word", static_cast<double>(heapBytes() - heap) / words},
        {"resident bytes per word", static_cast<double>(residentBytes() - resident) / words}};
    const Watch secondWatch;
    service.indexer().LoadCaches(database);
    result["seconds of a second load"] = secondWatch.seconds();
    return result;
}

void writeDocument(const std::string& path, Draw& draw) {
    std::ofstream file(path);
    for (int i = 1; i <= wordsOfDocument; ++i) {
        file << word(draw.below(vocabulary)) << (i % 12 == 0 ? ".\n" : " ");
    }
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

nlohmann::json measureDocuments(std::uint32_t documents) {
    const Folder folder;
    Hand hand(folder.library());
    Service service(folder);
    Draw draw;
    nlohmann::json marks = nlohmann::json::array();
    for (std::uint32_t i = 1; i <= documents; ++i) {
        const std::string path = folder.file(std::to_string(i) + ".txt");
        writeDocument(path, draw);
        hand.run(
            "INSERT INTO file_index_queue (id, doc_path, index_type, data_type, user_id, flag_dirty) VALUES "
            "(" +
            std::to_string(i) + ", '" + path + "', 1, 'txt', 7, 1)");
        if (!service.indexer().DoIndex(static_cast<std::int32_t>(i))) {
            throw std::runtime_error("indexing " + path + " failed");
        }
        fs::remove(path);
        if (i % std::max(documents / 10, 1U) == 0) {
            marks.push_back(
                {{"documents", i}, {"heap kB", heapBytes() / 1024}, {"resident kB", residentBytes() / 1024}});
        }
    }
    return {{"documents", documents}, {"marks", marks}};
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        const std::string what = arguments.empty() ? std::string() : arguments[0];
        if (what != "words" && what != "documents") {
            std::cerr << "usage: tyindexer-memory words|documents [N]\n";
            return 2;
        }
        const bool isWords = what == "words";
        const unsigned long count =
            arguments.size() > 1 ? std::stoul(arguments[1]) : (isWords ? 1000000UL : 10000UL);
        const auto number = static_cast<std::uint32_t>(count);
        std::cout << (isWords ? measureWords(number) : measureDocuments(number)).dump(2) << '\n';
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "tyindexer-memory: " << error.what() << '\n';
        return 1;
    }
}
