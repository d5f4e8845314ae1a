// The form and the controls of a window that nobody sees: they keep what is put into them and call their
// handlers. HeadlessToolkit owns the form, the form owns its controls.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ui.h"
#include "platform/waiter.h"

namespace platform::headless {

using Milliseconds = Waiter::Milliseconds;

class HeadlessToolkit;

/// What is the same for every control: its name, its place, and that a handler may be missing.
template <class Kind>
class Named : public Kind {
  public:
    Named(std::string_view name, const Bounds& bounds, int tabIndex)
        : name_(name), bounds_(bounds), tabIndex_(tabIndex) {}
    [[nodiscard]] std::string name() const override { return name_; }
    [[nodiscard]] const Bounds& bounds() const { return bounds_; }
    [[nodiscard]] int tabIndex() const { return tabIndex_; }

  protected:
    static void call(const Handler& handler) {
        if (handler) {
            handler();
        }
    }

  private:
    std::string name_;
    Bounds bounds_;
    int tabIndex_;
};

class HeadlessLabel final : public Named<Label> {
  public:
    HeadlessLabel(const Layout& layout, std::string_view caption)
        : Named(layout.name, layout.bounds, layout.tabIndex), caption_(caption) {}
    [[nodiscard]] std::string caption() const override { return caption_; }

  private:
    std::string caption_;
};

class HeadlessTextBox final : public Named<TextBox> {
  public:
    HeadlessTextBox(const Layout& layout, std::string_view text)
        : Named(layout.name, layout.bounds, layout.tabIndex), text_(text) {}
    [[nodiscard]] std::string text() const override { return text_; }
    void setText(std::string_view text) override;
    void onChange(Handler handler) override { changed_ = std::move(handler); }

  private:
    std::string text_;
    Handler changed_;
};

class HeadlessCheckBox final : public Named<CheckBox> {
  public:
    HeadlessCheckBox(const Layout& layout, std::string_view caption)
        : Named(layout.name, layout.bounds, layout.tabIndex), caption_(caption) {}
    [[nodiscard]] int value() const override { return value_; }
    void setValue(int value) override;
    void onChange(Handler handler) override { changed_ = std::move(handler); }

    [[nodiscard]] const std::string& caption() const { return caption_; }

  private:
    std::string caption_;
    int value_ = 0;
    Handler changed_;
};

class HeadlessButton final : public Named<Button> {
  public:
    HeadlessButton(const Layout& layout, std::string_view caption)
        : Named(layout.name, layout.bounds, layout.tabIndex), caption_(caption) {}
    [[nodiscard]] std::string caption() const override { return caption_; }
    void setCaption(std::string_view caption) override { caption_ = caption; }
    void onClick(Handler handler) override { clicked_ = std::move(handler); }
    void click() const { call(clicked_); }

  private:
    std::string caption_;
    Handler clicked_;
};

class HeadlessListBox final : public Named<ListBox> {
  public:
    explicit HeadlessListBox(const Layout& layout) : Named(layout.name, layout.bounds, layout.tabIndex) {}
    void insert(std::size_t index, std::string_view line) override;
    void remove(std::size_t index) override;
    [[nodiscard]] std::size_t count() const override { return lines_.size(); }
    [[nodiscard]] std::string line(std::size_t index) const override;

  private:
    std::vector<std::string> lines_;
};

class HeadlessTimer final : public Named<Timer> {
  public:
    HeadlessTimer(std::string_view name, int milliseconds, Waiter& waiter)
        : Named(name, {}, 0), waiter_(waiter), interval_(milliseconds) {}
    [[nodiscard]] int interval() const override { return interval_; }
    void setInterval(int milliseconds) override;
    [[nodiscard]] bool enabled() const override { return enabled_; }
    void setEnabled(bool enabled) override;
    void onTick(Handler handler) override { ticked_ = std::move(handler); }

    /// The moment of the next tick; nothing while the timer is off.
    [[nodiscard]] std::optional<Milliseconds> due() const;
    void tick();

  private:
    void restart() { due_ = waiter_.now() + Milliseconds(interval_); }

    Waiter& waiter_;
    int interval_;
    bool enabled_ = false;
    Milliseconds due_{0};
    Handler ticked_;
};

/// The moment of the next tick of any of the timers; nothing when all are off.
[[nodiscard]] std::optional<Milliseconds> nextTickOf(const std::vector<HeadlessTimer*>& timers);

/// The timer that has waited longest for its tick at that moment; none when none is due.
[[nodiscard]] HeadlessTimer* dueAt(Milliseconds moment, const std::vector<HeadlessTimer*>& timers);

class HeadlessForm final : public Named<Form> {
  public:
    HeadlessForm(HeadlessToolkit& toolkit, Waiter& waiter, std::string_view name, std::string_view caption,
                 const Bounds& inside)
        : Named(name, inside, 0), caption_(caption), toolkit_(toolkit), waiter_(waiter) {}

    Label& addLabel(const Layout& layout, std::string_view caption) override;
    TextBox& addTextBox(const Layout& layout, std::string_view text) override;
    CheckBox& addCheckBox(const Layout& layout, std::string_view caption) override;
    Button& addButton(const Layout& layout, std::string_view caption) override;
    ListBox& addListBox(const Layout& layout) override;
    Timer& addTimer(std::string_view name, int milliseconds) override;

    [[nodiscard]] WindowState windowState() const override { return state_; }
    [[nodiscard]] bool visible() const override { return visible_; }
    void show() override { visible_ = !closing_; }
    void hide() override { visible_ = false; }
    void onResize(Handler handler) override { resized_ = std::move(handler); }
    void close() override;
    [[nodiscard]] bool closing() const override { return closing_; }
    void onClose(Handler handler) override { closed_ = std::move(handler); }

    /// The control of that name. Raises error 5 when there is none of that kind.
    template <class Kind>
    [[nodiscard]] Kind& find(std::string_view name) const {
        const auto found = controls_.find(name);
        auto* const control = found == controls_.end() ? nullptr : dynamic_cast<Kind*>(found->second.get());
        if (control == nullptr) {
            raiseNoSuchControl(name);
        }
        return *control;
    }

    void resizeTo(WindowState state);
    void runCloseHandler() const { call(closed_); }
    [[nodiscard]] const std::vector<HeadlessTimer*>& timers() const { return timers_; }

    [[nodiscard]] const std::string& caption() const { return caption_; }

  private:
    template <class Kind>
    Kind& keep(std::unique_ptr<Kind> control);
    [[noreturn]] static void raiseNoSuchControl(std::string_view name);

    std::string caption_;
    HeadlessToolkit& toolkit_;
    Waiter& waiter_;
    std::map<std::string, std::unique_ptr<Control>, std::less<>> controls_;
    std::vector<HeadlessTimer*> timers_;
    WindowState state_ = WindowState::normal;
    bool visible_ = false;
    bool closing_ = false;
    Handler resized_;
    Handler closed_;
};

}  // namespace platform::headless
