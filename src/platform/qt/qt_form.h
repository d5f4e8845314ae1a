// QtForm is the control window as a Qt window. QtToolkit owns it, it owns its controls.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/headless/headless_form.h"
#include "platform/qt/qt_controls.h"
#include "platform/ui.h"
#include "platform/waiter.h"

class QWidget;

namespace platform::qt {

class QtForm final : public Named<Form> {
  public:
    QtForm(QtToolkit& toolkit, Waiter& waiter, std::string_view name, std::string_view caption,
           const Bounds& inside);
    ~QtForm() override;

    Label& addLabel(const Layout& layout, std::string_view caption) override;
    TextBox& addTextBox(const Layout& layout, std::string_view text) override;
    CheckBox& addCheckBox(const Layout& layout, std::string_view caption) override;
    Button& addButton(const Layout& layout, std::string_view caption) override;
    ListBox& addListBox(const Layout& layout) override;
    Timer& addTimer(std::string_view name, int milliseconds) override;

    [[nodiscard]] WindowState windowState() const override;
    [[nodiscard]] bool visible() const override;
    void show() override;
    void hide() override;
    void onResize(Handler handler) override { resized_ = std::move(handler); }
    void close() override;
    [[nodiscard]] bool closing() const override { return closing_; }
    void onClose(Handler handler) override { closed_ = std::move(handler); }

    void runCloseHandler() const { call(closed_); }

    /// The timers are those of the headless window: they tell when they are due, the toolkit has them tick.
    [[nodiscard]] const std::vector<headless::HeadlessTimer*>& timers() const { return timers_; }

    [[nodiscard]] QWidget& widget() const { return *widget_; }

    /// The control of that name, or nothing.
    [[nodiscard]] Control* find(std::string_view name) const;

  private:
    template <class Kind>
    Kind& keep(std::unique_ptr<Kind> control);
    void prepare();

    QtToolkit& toolkit_;
    Waiter& waiter_;
    std::unique_ptr<QWidget> widget_;
    std::map<std::string, std::unique_ptr<Control>, std::less<>> controls_;
    std::vector<headless::HeadlessTimer*> timers_;
    bool prepared_ = false;
    bool closing_ = false;
    Handler resized_;
    Handler closed_;
};

}  // namespace platform::qt
