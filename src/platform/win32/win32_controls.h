// The controls of the window, each a control of the system and what the program knows of it. Win32Form owns
// them and passes on what they tell their parent window. Private to this folder.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/win32/events.h"
#include "platform/win32/window.h"

namespace platform::win32 {

/// What a control is made with: where it goes, and who takes its events.
struct Place {
    HWND parent;
    const Layout& layout;
    Events& events;
};

/// A control that tells its parent window what the operator does with it.
class Notifier {
  public:
    Notifier() = default;
    Notifier(const Notifier&) = delete;
    Notifier& operator=(const Notifier&) = delete;
    virtual ~Notifier() = default;

    /// `code` is that of the WM_COMMAND message, such as EN_CHANGE.
    virtual void notified(WORD code) = 0;

    /// The control behind a window; null for one that tells nothing.
    [[nodiscard]] static Notifier* behind(HWND window);

  protected:
    void attachTo(HWND window);
};

class Win32Label final : public Label {
  public:
    Win32Label(const Place& place, std::string_view caption);
    [[nodiscard]] std::string name() const override { return window_.name(); }
    [[nodiscard]] std::string caption() const override { return window_.text(); }
    [[nodiscard]] HWND handle() const { return window_.handle(); }

  private:
    Window window_;
};

class Win32TextBox final : public TextBox, public Notifier {
  public:
    Win32TextBox(const Place& place, std::string_view text);
    [[nodiscard]] std::string name() const override { return window_.name(); }
    [[nodiscard]] std::string text() const override { return text_; }
    void setText(std::string_view text) override;
    void onChange(Handler handler) override { changed_ = std::move(handler); }
    void notified(WORD code) override;
    [[nodiscard]] HWND handle() const { return window_.handle(); }

  private:
    void takeOver();

    Window window_;
    Events& events_;
    std::string text_;
    bool changedByProgram_ = false;
    Handler changed_;
};

class Win32CheckBox final : public CheckBox, public Notifier {
  public:
    Win32CheckBox(const Place& place, std::string_view caption);
    [[nodiscard]] std::string name() const override { return window_.name(); }
    [[nodiscard]] int value() const override;
    void setValue(int value) override;
    void onChange(Handler handler) override { changed_ = std::move(handler); }
    void notified(WORD code) override;
    [[nodiscard]] HWND handle() const { return window_.handle(); }

  private:
    Window window_;
    Events& events_;
    Handler changed_;
};

class Win32Button final : public Button, public Notifier {
  public:
    Win32Button(const Place& place, std::string_view caption);
    [[nodiscard]] std::string name() const override { return window_.name(); }
    [[nodiscard]] std::string caption() const override { return window_.text(); }
    void setCaption(std::string_view caption) override { window_.setText(caption); }
    void onClick(Handler handler) override { clicked_ = std::move(handler); }
    void notified(WORD code) override;
    [[nodiscard]] HWND handle() const { return window_.handle(); }

  private:
    void beDefault(bool isDefault);

    Window window_;
    Events& events_;
    Handler clicked_;
};

class Win32ListBox final : public ListBox {
  public:
    explicit Win32ListBox(const Place& place);
    [[nodiscard]] std::string name() const override { return window_.name(); }
    void insert(std::size_t index, std::string_view line) override;
    void remove(std::size_t index) override;
    [[nodiscard]] std::size_t count() const override;
    [[nodiscard]] std::string line(std::size_t index) const override;
    [[nodiscard]] HWND handle() const { return window_.handle(); }

  private:
    void fitScrollBar();

    Window window_;
    std::vector<int> widths_;  // of the lines, in pixels
};

/// Ticks through the form's window, which passes WM_TIMER on. The form destroys it before that window.
class Win32Timer final : public Timer {
  public:
    Win32Timer(HWND form, std::string_view name) : form_(form), name_(name) {}
    Win32Timer(const Win32Timer&) = delete;
    Win32Timer& operator=(const Win32Timer&) = delete;
    ~Win32Timer() override { stop(); }
    [[nodiscard]] std::string name() const override { return name_; }
    [[nodiscard]] int interval() const override { return interval_; }
    void setInterval(int milliseconds) override;
    [[nodiscard]] bool enabled() const override { return enabled_; }
    void setEnabled(bool enabled) override;
    void onTick(Handler handler) override { ticked_ = std::move(handler); }

    /// True of the id of the wait that is under way. A tick of an earlier wait may still be on its way.
    [[nodiscard]] bool waitsUnder(UINT_PTR id) const { return id != 0 && id == id_; }
    void tick() const;

  private:
    void restart();
    void stop();

    HWND form_;
    std::string name_;
    int interval_ = 0;
    bool enabled_ = false;
    UINT_PTR id_ = 0;  // 0 while no wait is under way
    Handler ticked_;
};

}  // namespace platform::win32
