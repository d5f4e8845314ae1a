// The window toolkit as the control window needs it: one form, six kinds of control, message box and file
// dialog. The composition root owns the toolkit; the toolkit owns the form and its controls, which live as
// long as it does.
//
// Everything happens on one thread. A change handler fires for the operator's and for the program's changes
// alike, before the call that made the change returns, and only when the content differs from before.
// Handlers may change their own control again, stop or start timers and close the form. An error in a handler
// that the program called through a change rises out of that change; an error in a handler that an event
// called ends run().
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

/// Position and size in twips; 15 twips are one pixel at 96 dots per inch.
struct Bounds {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

enum class WindowState { normal = 0, minimised = 1, maximised = 2 };

using Handler = std::function<void()>;

class Control {
  public:
    Control() = default;
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    virtual ~Control() = default;

    [[nodiscard]] virtual std::string name() const = 0;
};

class Label : public Control {
  public:
    [[nodiscard]] virtual std::string caption() const = 0;
};

class TextBox : public Control {
  public:
    [[nodiscard]] virtual std::string text() const = 0;
    virtual void setText(std::string_view text) = 0;
    virtual void onChange(Handler handler) = 0;
};

/// Values: 0 cleared, 1 checked, 2 greyed.
class CheckBox : public Control {
  public:
    [[nodiscard]] virtual int value() const = 0;
    /// Raises error 380, "Invalid property value", for anything but 0, 1 and 2.
    virtual void setValue(int value) = 0;
    virtual void onChange(Handler handler) = 0;
};

class Button : public Control {
  public:
    /// With "&" before the mnemonic.
    [[nodiscard]] virtual std::string caption() const = 0;
    virtual void setCaption(std::string_view caption) = 0;
    virtual void onClick(Handler handler) = 0;
};

class ListBox : public Control {
  public:
    /// Index 0 is the top. Both raise error 5 for an index outside the list.
    virtual void insert(std::size_t index, std::string_view line) = 0;
    virtual void remove(std::size_t index) = 0;
    [[nodiscard]] virtual std::size_t count() const = 0;
    [[nodiscard]] virtual std::string line(std::size_t index) const = 0;
};

/// Ticks every `interval` while it is enabled; an interval of 0 never ticks. Setting the interval or enabling
/// starts the wait anew.
class Timer : public Control {
  public:
    static constexpr int longestInterval = 65535;

    [[nodiscard]] virtual int interval() const = 0;
    /// Milliseconds. Raises error 380 outside 0..65535.
    virtual void setInterval(int milliseconds) = 0;
    [[nodiscard]] virtual bool enabled() const = 0;
    virtual void setEnabled(bool enabled) = 0;
    virtual void onTick(Handler handler) = 0;
};

/// What every control is made with. `tabIndex` is its place in the tab order.
struct Layout {
    std::string_view name;
    Bounds bounds;
    int tabIndex = 0;
};

class Form : public Control {
  public:
    virtual Label& addLabel(const Layout& layout, std::string_view caption) = 0;
    virtual TextBox& addTextBox(const Layout& layout, std::string_view text) = 0;
    virtual CheckBox& addCheckBox(const Layout& layout, std::string_view caption) = 0;
    virtual Button& addButton(const Layout& layout, std::string_view caption) = 0;
    virtual ListBox& addListBox(const Layout& layout) = 0;
    /// Starts disabled.
    virtual Timer& addTimer(std::string_view name, int milliseconds) = 0;

    [[nodiscard]] virtual WindowState windowState() const = 0;
    [[nodiscard]] virtual bool visible() const = 0;
    /// A window that closes stays hidden.
    virtual void show() = 0;
    virtual void hide() = 0;

    /// Fires when the operator resizes, minimises, maximises or restores the window.
    virtual void onResize(Handler handler) = 0;

    /// Hides the window at once. When no handler of an event is at work, the close handler runs now and run()
    /// returns; otherwise both happen when the outermost handler has returned, and no event is handled until
    /// then.
    virtual void close() = 0;
    [[nodiscard]] virtual bool closing() const = 0;
    virtual void onClose(Handler handler) = 0;
};

/// A line of a file dialog's list of file kinds, such as {"Log Files (*.log)", "*.log"}.
struct FileFilter {
    std::string_view description;
    std::string_view pattern;
};

class Toolkit {
  public:
    Toolkit() = default;
    Toolkit(const Toolkit&) = delete;
    Toolkit& operator=(const Toolkit&) = delete;
    virtual ~Toolkit() = default;

    /// The one form, hidden until it is shown. `width` and `height` are those of its inside, in twips.
    virtual Form& createForm(std::string_view name, std::string_view caption, int width, int height) = 0;

    /// Handles the events that wait, and returns.
    virtual void processEvents() = 0;

    /// Handles events until the form has been closed. What a handler of an event throws rises out of it.
    virtual void run() = 0;

    /// Shows a text with an OK button and waits for it; a toolkit without a screen prints it and goes on.
    virtual void messageBox(std::string_view text) = 0;

    /// Asks for a file to write to: its full path, or nothing when the operator cancels.
    virtual std::optional<std::string> saveFileDialog(std::span<const FileFilter> filters,
                                                      std::string_view defaultExtension) = 0;
};

}  // namespace platform
