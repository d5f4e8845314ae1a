// HandlerCalls calls the handlers of events and keeps what they throw, because nothing may be thrown through
// Qt's event loop. QtToolkit owns the one there is and throws again outside of Qt.
#pragma once

#include <exception>

#include "platform/ui.h"

namespace platform::qt {

class HandlerCalls {
  public:
    /// Calls the handler and keeps its error. Throws nothing.
    void call(const Handler& handler);

    /// Throws the error that was kept, if there is one. Inside a handler it goes out as a HandlerFailed, past
    /// the traps of the job that has let events be handled.
    void rethrow();

    [[nodiscard]] bool atWork() const { return depth_ > 0; }
    [[nodiscard]] bool failed() const { return error_ != nullptr; }

  private:
    int depth_ = 0;
    std::exception_ptr error_;
};

}  // namespace platform::qt
