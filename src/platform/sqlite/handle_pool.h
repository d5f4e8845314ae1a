// A HandlePool keeps the handles of closed connections warm for the next connection to the same library. The
// engine owns it together with its connections, which may outlive the engine.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sqlite/checkpointer.h"
#include "platform/sqlite/handle.h"

namespace platform::sqlite {

class HandlePool {
  public:
    explicit HandlePool(const HandleOptions& options) : options_(options) {}

    /// A warm handle when the file at the path is still the one that it has open, otherwise a fresh one.
    /// Raises a RuntimeError when there is no library at the path.
    std::unique_ptr<Handle> take(const std::string& path);

    /// The warm handle that was used last, when there is one and the file at the path is still the one that
    /// it has open.
    std::unique_ptr<Handle> takeWarm(const std::string& path);

    /// Keeps a handle that is sound and closes any other. It must be outside any transaction with no
    /// statement in use.
    void giveBack(std::unique_ptr<Handle> handle) noexcept;

    /// Closes all handles that no connection has.
    void clear();

    void setTrace(std::function<void(std::string_view)> trace) { trace_ = std::move(trace); }
    void trace(std::string_view statement) const {
        if (trace_) {
            trace_(statement);
        }
    }

    [[nodiscard]] std::size_t preparedStatements() const { return prepared_; }

  private:
    std::unique_ptr<Handle> takeLast(const std::string& path);
    Checkpointer& checkpointerOf(const std::string& path);

    HandleOptions options_;
    std::function<void(std::string_view)> trace_;
    std::atomic<std::size_t> prepared_ = 0;
    std::map<std::string, Checkpointer> checkpointers_;  // by path
    std::mutex mutex_;
    std::vector<std::unique_ptr<Handle>> warm_;
};

}  // namespace platform::sqlite
