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
    WindowHandle parent;
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
    virtual void notified(unsigned code) = 0;

    /// The control behind a window; null for one that tells nothing.
    [[nodiscard]] static Notifier* behind(WindowHandle window);

  protected:
    void attachTo(WindowHandle window);
};

class Win32Label final : public Label {
  public:
    Win32Label(const Place& place, std::string_view caption);
    [[nodiscard]] std::string name() const override { return window_.name(); }
    [[nodiscard]] std::string caption() const override { return window_.text(); }
    [[nodiscard]] WindowHandle handle() const { return window_.handle(); }

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
    void notified(unsigned code) override;
    [[nodiscard]] WindowHandle handle() const { return window_.handle(); }

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
    void notified(unsigned code) override;
    [[nodiscard]] WindowHandle handle() const { return window_.handle(); }

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
    void notified(unsigned code) override;
    [[nodiscard]] WindowHandle handle() const { return window_.handle(); }

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
    [[nodiscard]] WindowHandle handle() const { return window_.handle(); }

  private:
    void fitScrollBar();

    Window window_;
    std::vector<int> widths_;  // of the lines, in pixels
};

}  // namespace platform::win32
