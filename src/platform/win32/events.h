// Events decides when the handler of an event may run, keeps what a handler throws, and knows how far the
// window has come with closing. It knows nothing of the window system. The toolkit owns the one there is.
//
// Windows calls window procedures from many places: the toolkit's own loop, a message box, but also from the
// inside of a call to an automation object, which lets messages through while it waits. Only in the first two
// places the program expects an event. What arrives elsewhere waits until the toolkit handles events again.
#pragma once

#include <deque>
#include <exception>
#include <functional>

#include "platform/ui.h"

namespace platform::win32 {

class Events {
  public:
    /// While one exists, events are handled as they arrive. A handler at work closes the gate again.
    class Gate {
      public:
        explicit Gate(Events& events, bool open = true) : events_(events), before_(events.open_) {
            events_.open_ = open;
        }
        Gate(const Gate&) = delete;
        Gate& operator=(const Gate&) = delete;
        ~Gate() { events_.open_ = before_; }

      private:
        Events& events_;
        bool before_;
    };

    /// `closeHandler` runs once, when the window has been closed and no handler is at work any more.
    explicit Events(Handler closeHandler) : closeHandler_(std::move(closeHandler)) {}

    /// Handles the event now, or as soon as events are handled again. Raises nothing: what the handler throws
    /// is kept for rethrow(). After such an error, and once the window closes, events are dropped.
    void take(Handler event);

    /// Handles what had to wait. The gate must be open.
    void handleDeferred();

    /// The window closes: now when no handler is at work, else when the outermost one has returned.
    void startClosing();

    /// Keeps an error that must not travel through a window procedure.
    void fail(std::exception_ptr error);

    /// Raises the error that was kept, if there is one: to a handler at work as a headless::HandlerFailed,
    /// which passes the traps of its job, and as itself to whoever runs the outermost loop.
    void rethrow();

    [[nodiscard]] bool closing() const { return closing_; }
    [[nodiscard]] bool closed() const { return closed_; }
    [[nodiscard]] bool handlerAtWork() const { return handlersAtWork_ > 0; }
    /// True when an event that arrives is handled at once.
    [[nodiscard]] bool open() const { return open_; }
    /// True when no event will be handled any more.
    [[nodiscard]] bool over() const { return closing_ || failure_ != nullptr; }

  private:
    void handle(const Handler& event);
    void finishClosing();

    Handler closeHandler_;
    std::deque<Handler> deferred_;
    std::exception_ptr failure_;
    int handlersAtWork_ = 0;
    bool open_ = false;
    bool closing_ = false;
    bool closed_ = false;
};

}  // namespace platform::win32
