// tyindexer-stages: runs the queued documents through the indexer, as the service does with everything but
// its window, and prints as JSON how long each part of the work took. Settings and plug-ins come from the
// same places as the service's.
#include <chrono>
#include <cstdint>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>

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
    return {{"calls", stage.calls}, {"seconds", stage.seconds()}};
}

class StagedService {
  public:
    StagedService() { toolkit_.createForm("Main", "stages", 0, 0); }

    nlohmann::json run() {
        bench::Stage all;
        std::uint32_t documents = 0;
        {
            const bench::Timing timing(all);
            infra::tysDataBase window(services_);
            window.initialise();
            while (const auto id = claim(window)) {
                if (!indexer_.DoIndex(*id)) {
                    throw std::runtime_error("queue entry " + std::to_string(*id) + " failed");
                }
                ++documents;
            }
            window.finalise();
        }
        return report(documents, all);
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

    nlohmann::json report(std::uint32_t documents, const bench::Stage& all) const {
        bench::Stage statements;
        nlohmann::json kinds;
        databaseStages_.forEachKind([&](const std::string& name, const bench::Stage& stage) {
            kinds[name] = described(stage);
            statements.calls += stage.calls;
            statements.time += stage.time;
        });
        bench::Stage rest = all;
        for (const bench::Stage& stage : {plugin_, settingsStage_, log_, statements, databaseStages_.begin,
                                          databaseStages_.commit, databaseStages_.openAndClose}) {
            rest.time -= stage.time;
        }
        rest.calls = documents;
        return {{"documents", documents},
                {"seconds", all.seconds()},
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
    platform::posix::PluginFactory plugins_{platform::posix::pluginFolders(process_.programDirectory()), {}};
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

int main() {
    try {
        std::cout << StagedService().run().dump(2) << '\n';
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "tyindexer-stages: " << error.what() << '\n';
        return 1;
    }
}
