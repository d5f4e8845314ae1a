// The controls of the window as Qt widgets. QtForm owns them; the widgets belong to the form's widget.
//
// A program's change is made with Qt's own signals off and calls the handler directly, so that an error in
// the handler reaches the program without passing through Qt. An operator's change comes as a signal and goes
// through QtToolkit::handle.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "platform/ui.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QWidget;

namespace platform::qt {

class QtToolkit;

/// What is the same for every control: the name, and that a handler may be missing.
template <class Kind>
class Named : public Kind {
  public:
    explicit Named(std::string_view name) : name_(name) {}
    [[nodiscard]] std::string name() const override { return name_; }

  protected:
    static void call(const Handler& handler) {
        if (handler) {
            handler();
        }
    }

  private:
    std::string name_;
};

class QtLabel final : public Named<Label> {
  public:
    QtLabel(QWidget& form, const Layout& layout, std::string_view caption);
    [[nodiscard]] std::string caption() const override { return caption_; }

  private:
    std::string caption_;
};

class QtTextBox final : public Named<TextBox> {
  public:
    QtTextBox(QtToolkit& toolkit, QWidget& form, const Layout& layout, std::string_view text);
    [[nodiscard]] std::string text() const override { return text_; }
    void setText(std::string_view text) override;
    void onChange(Handler handler) override { changed_ = std::move(handler); }

  private:
    QLineEdit* widget_;
    std::string text_;
    Handler changed_;
};

class QtCheckBox final : public Named<CheckBox> {
  public:
    QtCheckBox(QtToolkit& toolkit, QWidget& form, const Layout& layout, std::string_view caption);
    [[nodiscard]] int value() const override { return value_; }
    void setValue(int value) override;
    void onChange(Handler handler) override { changed_ = std::move(handler); }

  private:
    void takeOver();

    QtToolkit& toolkit_;
    QCheckBox* widget_;
    int value_ = 0;
    Handler changed_;
};

class QtButton final : public Named<Button> {
  public:
    QtButton(QtToolkit& toolkit, QWidget& form, const Layout& layout, std::string_view caption);
    [[nodiscard]] std::string caption() const override { return caption_; }
    void setCaption(std::string_view caption) override;
    void onClick(Handler handler) override { clicked_ = std::move(handler); }

  private:
    QPushButton* widget_;
    std::string caption_;
    Handler clicked_;
};

class QtListBox final : public Named<ListBox> {
  public:
    QtListBox(QWidget& form, const Layout& layout);
    void insert(std::size_t index, std::string_view line) override;
    void remove(std::size_t index) override;
    [[nodiscard]] std::size_t count() const override;
    [[nodiscard]] std::string line(std::size_t index) const override;

  private:
    QListWidget* widget_;
};

}  // namespace platform::qt
