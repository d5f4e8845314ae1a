// tyindexer-stages: runs the queued documents through the indexer, as the service does with everything but
// its window, and prints as JSON how long each part of the work took. Settings and plug-ins come from the
// same places as the service's. With --in-process the text plug-in's code runs in this
// process, so that every run over the same documents takes the same instructions.
#include <chrono>
#include <cstdint>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bench/in_process_plugins.h"
#include "bench/stopwatch.h"
#include "bench/timed_database.h"
#include "bench/timed_parts.h"
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
#include "platform/sqlite/sqlite_engine.h"

namespace {

using platform::CursorType;
using platform::LockType;

nlohmann::json described(const bench::Stage& stage) {
    return {{"calls", stage.calls},
            {"seconds", stage.seconds()},
            {"longest", std::chrono::duration<double>(stage.longest).count()}};
}

class StagedService {
  public:
    explicit StagedService(platform::AutomationFactory& plugins) : plugins_(plugins) {
        toolkit_.createForm("Main", "stages", 0, 0);
    }

    nlohmann::json run() {
        bench::Stage all;
        {
            const bench::Timing timing(all);
            infra::tysDataBase window(services_);
            window.initialise();
            while (const auto id = claim(window)) {
                const bench::Timing document(documents_);
                if (!indexer_.DoIndex(*id)) {
                    throw std::runtime_error("queue entry " + std::to_string(*id) + " failed");
                }
            }
            window.finalise();
        }
        return report(all);
    }

  private:
    /// The next entry of the queue, claimed as the window claims it.
    std::optional<std::int32_t> claim(infra::tysDataBase& window) {
        const auto entry = window.openRecordset("SELECT id FROM file_index_queue WHERE flag_dirty = false",
                                                CursorType::forwardOnly, LockType::readOnly);
        if (entry->eof()) {
            return std::nullopt;
        }
        const std::int32_t id = entry->field("id").toInt32();
        window.getConnection()->execute("UPDATE file_index_queue SET flag_dirty = true WHERE id = " +
                                        std::to_string(id));
        entry->close();
        return id;
    }

    nlohmann::json report(const bench::Stage& all) const {
        bench::Stage statements;
        nlohmann::json kinds;
        databaseStages_.forEachKind([&](const std::string& name, const bench::Stage& stage) {
            kinds[name] = described(stage);
            statements.calls += stage.calls;
            statements.time += stage.time;
            statements.longest = std::max(statements.longest, stage.longest);
        });
        bench::Stage rest = all;
        for (const bench::Stage& stage : {plugin_, settingsStage_, log_, statements, databaseStages_.begin,
                                          databaseStages_.commit, databaseStages_.openAndClose}) {
            rest.time -= stage.time;
        }
        rest.calls = documents_.calls;
        rest.longest = {};  // what is left over is no call
        return {{"documents", documents_.calls},
                {"seconds", all.seconds()},
                {"document", described(documents_)},
                {"stages",
                 {{"plug-in", described(plugin_)},
                  {"words and engine", described(rest)},
                  {"SQL statements", described(statements)},
                  {"SQL begin", described(databaseStages_.begin)},
                  {"SQL commit", described(databaseStages_.commit)},
                  {"SQL connections", described(databaseStages_.openAndClose)},
                  {"settings", described(settingsStage_)},
                  {"log", described(log_)}}},
                {"statements", kinds}};
    }

    bench::Stage documents_;
    bench::Stage plugin_;
    bench::Stage settingsStage_;
    bench::Stage log_;
    bench::DatabaseStages databaseStages_;

    platform::posix::SettingsFile settingsFile_{platform::posix::settingsPath()};
    platform::posix::PosixProcess process_;
    platform::posix::PosixFiles files_;
    platform::posix::NoDrives drives_;
    platform::posix::SystemClock clock_;
    platform::SqliteEngine engine_;
    platform::AutomationFactory& plugins_;
    platform::posix::SignalWaiter waiter_;
    platform::headless::HeadlessToolkit toolkit_{waiter_};

    bench::TimedSettings settings_{settingsFile_, settingsStage_};
    bench::TimedFiles timedFiles_{files_, log_};
    bench::TimedEngine database_{engine_, databaseStages_};
    bench::TimedFactory automation_{plugins_, plugin_};
    infra::Services services_{platform::System{settings_, database_, automation_, toolkit_, timedFiles_,
                                               process_, drives_, clock_}};
    indexer::Indexer indexer_{services_};
};

}  // namespace

int main(int argc, char** argv) {
    const std::string_view option = argc > 1 ? argv[1] : "";
    if (argc > 2 || (argc == 2 && option != "--in-process")) {
        std::cerr << "usage: tyindexer-stages [--in-process]\n";
        return 2;
    }
    try {
        bench::InProcessPlugins inProcess;
        platform::posix::PluginFactory processes(
            platform::posix::pluginFolders(platform::posix::PosixProcess().programDirectory()), {});
        platform::AutomationFactory* plugins = &processes;
        if (argc == 2) {
            plugins = &inProcess;
        }
        std::cout << StagedService(*plugins).run().dump(2) << '\n';
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "tyindexer-stages: " << error.what() << '\n';
        return 1;
    }
}
