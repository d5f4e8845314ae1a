// A PluginFactory gives automation objects that live in plug-in processes: an executable file named by the
// ProgID in one of the plug-in folders. The composition root owns it. A process is started on first use and
// kept for the documents after; after a fault the next object gets a fresh one. A process that waits for its
// next document is asked for the object already, so that the document need not wait. No two documents share a
// process: a crash over an attachment must not cost the document around it.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/automation.h"

namespace platform::posix {

class PluginProcess;

/// The folders of $TYINDEXER_PLUGINS (separated by colons), then the one that the product is installed with,
/// ../lib/tyindexer/plugins as seen from the program's folder.
std::vector<std::string> pluginFolders(std::string_view programDirectory);

class PluginFactory : public AutomationFactory {
  public:
    /// How long a call may take; asked for each object, so that a changed setting holds from the next
    /// document on. An answer that is not positive means the default.
    using CallLimit = std::function<std::chrono::milliseconds()>;

    static constexpr std::chrono::milliseconds defaultCallLimit{50'000};
    static constexpr std::size_t largestAnswer = 256UL * 1024 * 1024;

    /// A single answer of more than `mostBytes` bytes is a fault of the plug-in.
    PluginFactory(std::vector<std::string> folders, CallLimit callLimit,
                  std::size_t mostBytes = largestAnswer);
    ~PluginFactory() override;

    std::unique_ptr<AutomationObject> create(std::string_view progId) override;

    /// Has the process that has waited for the shortest time fetch the document, whichever plug-in will open
    /// it. Where none waits, nothing happens.
    void expectReading(const std::string& path) noexcept override;

    /// Kills every process with everything that it has started. For the end of the service without clean-up:
    /// nothing else may be asked of the factory and its objects after it.
    void killProcesses() noexcept;

  private:
    struct Pool;

    [[nodiscard]] std::unique_ptr<AutomationObject> createInWarm(const std::shared_ptr<Pool>& pool);
    std::shared_ptr<PluginProcess> lendWarm(const std::shared_ptr<Pool>& pool);
    [[nodiscard]] std::string findFile(const std::string& progId) const;
    [[nodiscard]] std::chrono::milliseconds callLimit() const;

    std::vector<std::string> folders_;
    CallLimit callLimit_;
    std::size_t mostBytes_;
    std::map<std::string, std::shared_ptr<Pool>> pools_;  // by ProgID
    const Pool* latest_ = nullptr;                        // the one that got its process back last
};

}  // namespace platform::posix
