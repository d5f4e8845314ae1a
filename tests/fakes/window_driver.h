// A UiDriver for whole sessions: besides what every toolkit's contract needs, it lets time pass by hand,
// answers dialogs and finds controls by name.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fakes/manual_waiter.h"
#include "fakes/ui_driver.h"

class WindowDriver : public UiDriver {
  public:
    [[nodiscard]] virtual platform::Form& form() = 0;

    /// Raises std::bad_cast when there is no control of that name and kind.
    template <class Kind>
    [[nodiscard]] Kind& find(std::string_view name) {
        return dynamic_cast<Kind&>(control(name));
    }

    /// Answers the file dialogs from now on; without a path they are cancelled.
    void answerFileDialogs(std::optional<std::string> path) { fileChosen_ = std::move(path); }

    /// What is seen of a control: its place in twips, its place in the tab order, and its caption, with "&"
    /// before the mnemonic.
    struct Seen {
        platform::Bounds bounds;
        int tabIndex = 0;
        std::string caption;
    };
    [[nodiscard]] virtual Seen see(std::string_view name) = 0;
    [[nodiscard]] virtual std::string title() = 0;

    /// What the file dialogs offered: each kind of file as "description|pattern", then the default extension.
    std::vector<std::string> offered;

    /// The texts of the message boxes that were answered, without carriage returns.
    std::vector<std::string> boxes;

    fakes::ManualWaiter waiter;

  protected:
    [[nodiscard]] virtual platform::Control& control(std::string_view name) = 0;
    [[nodiscard]] const std::optional<std::string>& fileChosen() const { return fileChosen_; }

  private:
    std::optional<std::string> fileChosen_;
};

using WindowDriverMaker = std::unique_ptr<WindowDriver> (*)();
