#include "platform/posix/plugins/plugin_factory.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "base/runtime_error.h"
#include "base/text.h"
#include "platform/posix/plugins/plugin_object.h"
#include "platform/posix/plugins/plugin_process.h"

namespace platform::posix {
namespace {

[[noreturn]] void cannotCreate(const std::string& progId, const std::string& why) {
    const std::string readable = base::replaceAll(progId, std::string_view("\0", 1), "\\0");
    throw base::RuntimeError(base::ErrorNumber::cannotCreateObject,
                             "Cannot create the plug-in \"" + readable + "\": " + why);
}

/// A ProgID becomes a file name, so it must not lead out of the folder.
bool isFileName(const std::string& progId) {
    return !progId.empty() && progId != "." && progId != ".." && progId.find('/') == std::string::npos &&
           progId.find('\0') == std::string::npos;
}

}  // namespace

std::vector<std::string> pluginFolders(std::string_view programDirectory) {
    std::vector<std::string> folders;
    if (const char* listed = std::getenv("TYINDEXER_PLUGINS")) {  // NOLINT(concurrency-mt-unsafe)
        for (const std::string_view folder : base::split(listed, ':')) {
            if (!folder.empty()) {
                folders.emplace_back(folder);
            }
        }
    }
    folders.push_back(std::string(programDirectory) + "/../lib/tyindexer/plugins");
    return folders;
}

/// The processes of one ProgID.
struct PluginFactory::Pool {
    std::shared_ptr<PluginProcess> warm;  // the one without an object; none when every process has one
    std::vector<std::weak_ptr<PluginProcess>> all;

    void add(const std::shared_ptr<PluginProcess>& process) {
        std::erase_if(all, [](const auto& known) { return known.expired(); });
        all.push_back(process);
    }
};

PluginFactory::PluginFactory(std::vector<std::string> folders, CallLimit callLimit, std::size_t mostBytes)
    : folders_(std::move(folders)), callLimit_(std::move(callLimit)), mostBytes_(mostBytes) {}

PluginFactory::~PluginFactory() = default;

std::unique_ptr<AutomationObject> PluginFactory::create(std::string_view progId) {
    const std::string name(progId);
    if (!isFileName(name)) {
        cannotCreate(name, "that is no name of a plug-in");
    }
    std::shared_ptr<Pool>& pool = pools_[name];
    if (pool == nullptr) {
        pool = std::make_shared<Pool>();
    }
    if (pool->warm != nullptr && pool->warm->isGood()) {
        try {
            return createInWarm(pool);
        } catch (const base::RuntimeError&) {
            // A process that broke between two documents is nobody's error: the document gets a fresh one.
            if (!pool->warm->isGone()) {
                throw;
            }
        }
    }
    pool->warm = std::make_shared<PluginProcess>(name, findFile(name), mostBytes_);
    pool->add(pool->warm);
    return createInWarm(pool);
}

void PluginFactory::expectReading(const std::string& path) noexcept {
    for (const auto& [progId, pool] : pools_) {
        if (pool->warm != nullptr && pool.get() != latest_) {
            pool->warm->fetchElsewhere();
        }
    }
    if (latest_ != nullptr && latest_->warm != nullptr && latest_->warm->isGood()) {
        latest_->warm->fetch(path);
    }
}

/// An object in the process that waits. Where it is refused, the process waits on.
std::unique_ptr<AutomationObject> PluginFactory::createInWarm(const std::shared_ptr<Pool>& pool) {
    const auto limit = callLimit();
    const auto object = pool->warm->createObject(limit);
    return std::make_unique<PluginObject>(lendWarm(pool), object, limit);
}

/// Lends the process that waits to one object. When the object is gone, the process waits for the next one;
/// where another waits already, it ends.
std::shared_ptr<PluginProcess> PluginFactory::lendWarm(const std::shared_ptr<Pool>& pool) {
    auto process = std::exchange(pool->warm, nullptr);
    PluginProcess* const lent = process.get();
    return {lent,
            [this, waiting = std::weak_ptr<Pool>(pool), owner = std::move(process)](PluginProcess*) mutable {
                const auto home = waiting.lock();  // while it is there, so is the factory
                if (home != nullptr && !owner->isGone() && (home->warm == nullptr || !home->warm->isGood())) {
                    owner->createAhead();
                    home->warm.swap(owner);
                    latest_ = home.get();
                } else {
                    owner->sendPending();
                }
                owner.reset();
            }};
}

void PluginFactory::killProcesses() noexcept {
    for (const auto& [progId, pool] : pools_) {
        for (const auto& known : pool->all) {
            if (const auto process = known.lock()) {
                process->killAtEnd();
            }
        }
    }
}

std::string PluginFactory::findFile(const std::string& progId) const {
    std::string searched;
    for (const std::string& folder : folders_) {
        std::string file = folder;
        file.append("/").append(progId);
        std::error_code ignored;
        if (std::filesystem::is_regular_file(file, ignored)) {
            if (access(file.c_str(), X_OK) != 0) {
                cannotCreate(progId, file + " is not executable");
            }
            return file;
        }
        searched.append(searched.empty() ? "" : ", ").append(folder);
    }
    cannotCreate(progId, "there is no such file in " +
                             (searched.empty() ? std::string("any folder: none is set") : searched));
}

std::chrono::milliseconds PluginFactory::callLimit() const {
    const auto limit = callLimit_ ? callLimit_() : defaultCallLimit;
    return limit.count() > 0 ? limit : defaultCallLimit;
}

}  // namespace platform::posix
