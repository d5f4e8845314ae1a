#include "platform/win32/events.h"

#include <utility>

#include "platform/headless/headless_toolkit.h"

namespace platform::win32 {

void Events::take(Handler event) {
    if (over()) {
        return;
    }
    if (open_) {
        handle(event);
    } else {
        deferred_.push_back(std::move(event));
    }
}

void Events::handleDeferred() {
    while (!over() && !deferred_.empty()) {
        const Handler event = std::move(deferred_.front());
        deferred_.pop_front();
        handle(event);
    }
}

void Events::handle(const Handler& event) {
    const Gate closed(*this, false);
    ++handlersAtWork_;
    try {
        event();
    } catch (const headless::HandlerFailed& nested) {
        fail(nested.error);
    } catch (...) {
        fail(std::current_exception());
    }
    --handlersAtWork_;
    if (closing_ && failure_ == nullptr && handlersAtWork_ == 0) {
        try {
            finishClosing();
        } catch (...) {
            fail(std::current_exception());
        }
    }
}

void Events::startClosing() {
    closing_ = true;
    if (handlersAtWork_ == 0) {
        finishClosing();
    }
}

void Events::finishClosing() {
    closed_ = true;
    deferred_.clear();
    closeHandler_();
}

void Events::fail(std::exception_ptr error) {
    // The first error is the one that ends the program; what follows from it would only hide it.
    if (failure_ == nullptr) {
        failure_ = std::move(error);
    }
}

void Events::rethrow() {
    if (failure_ == nullptr) {
        return;
    }
    std::exception_ptr error = std::exchange(failure_, nullptr);
    if (handlerAtWork()) {
        throw headless::HandlerFailed{std::move(error)};
    }
    std::rethrow_exception(error);
}

}  // namespace platform::win32
