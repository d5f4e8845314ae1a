// Time for a headless window that moves only when a test says so.
#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>

#include "platform/waiter.h"

namespace fakes {

class ManualWaiter : public platform::Waiter {
  public:
    [[nodiscard]] Milliseconds now() override { return moment; }

    /// Nothing would ever end the wait, so a test that gets here without onWait is wrong.
    void wait(std::optional<Milliseconds> until) override {
        if (!onWait) {
            throw std::logic_error("the window would wait for ever: no event is left");
        }
        onWait(until);
    }

    [[nodiscard]] bool closeRequested() override { return close; }

    /// Lets time pass; ticks and waiting events are handled in order, each at its own moment.
    template <class Toolkit>
    void advance(Toolkit& toolkit, Milliseconds time) {
        const Milliseconds target = moment + time;
        toolkit.processEvents();
        for (auto next = toolkit.nextTick(); next && *next <= target; next = toolkit.nextTick()) {
            moment = std::max(moment, *next);
            toolkit.processEvents();
            if (toolkit.form().closing()) {
                return;
            }
        }
        moment = target;
    }

    Milliseconds moment{0};
    bool close = false;
    std::function<void(std::optional<Milliseconds> until)> onWait;
};

}  // namespace fakes
