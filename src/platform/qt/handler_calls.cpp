#include "platform/qt/handler_calls.h"

#include <utility>

#include "platform/headless/headless_toolkit.h"

namespace platform::qt {

void HandlerCalls::call(const Handler& handler) {
    ++depth_;
    try {
        handler();
    } catch (const headless::HandlerFailed& failure) {
        error_ = failure.error;
    } catch (...) {
        error_ = std::current_exception();
    }
    --depth_;
}

void HandlerCalls::rethrow() {
    if (error_ == nullptr) {
        return;
    }
    const std::exception_ptr error = std::exchange(error_, nullptr);
    if (atWork()) {
        throw headless::HandlerFailed{error};
    }
    std::rethrow_exception(error);
}

}  // namespace platform::qt
