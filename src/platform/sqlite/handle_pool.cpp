#include "platform/sqlite/handle_pool.h"

#include <algorithm>
#include <utility>

#include "base/runtime_error.h"

namespace platform::sqlite {
namespace {

// The service never has more than two connections open at once.
constexpr std::size_t mostWarm = 4;

}  // namespace

std::unique_ptr<Handle> HandlePool::takeLast(const std::string& path) {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(warm_.rbegin(), warm_.rend(),
                                    [&path](const auto& handle) { return handle->path() == path; });
    if (found == warm_.rend()) {
        return nullptr;
    }
    std::unique_ptr<Handle> handle = std::move(*found);
    warm_.erase(std::next(found).base());
    return handle;
}

std::unique_ptr<Handle> HandlePool::takeWarm(const std::string& path) {
    while (std::unique_ptr<Handle> handle = takeLast(path)) {
        try {
            handle->refresh();
            return handle;
        } catch (const base::RuntimeError&) {
            // The file is no longer what it was: opening it anew tells what it is now.
            continue;
        }
    }
    return nullptr;
}

Checkpointer& HandlePool::checkpointerOf(const std::string& path) {
    const std::lock_guard lock(mutex_);
    return checkpointers_[path];
}

std::unique_ptr<Handle> HandlePool::take(const std::string& path) {
    std::unique_ptr<Handle> warm = takeWarm(path);
    return warm != nullptr ? std::move(warm)
                           : std::make_unique<Handle>(path, options_, prepared_, checkpointerOf(path));
}

void HandlePool::giveBack(std::unique_ptr<Handle> handle) noexcept {
    const std::lock_guard lock(mutex_);
    if (warm_.capacity() < mostWarm) {
        warm_.reserve(mostWarm);
    }
    if (warm_.size() < mostWarm && handle->isSound()) {
        warm_.push_back(std::move(handle));
    }
}

void HandlePool::clear() {
    const std::lock_guard lock(mutex_);
    warm_.clear();
}

}  // namespace platform::sqlite
