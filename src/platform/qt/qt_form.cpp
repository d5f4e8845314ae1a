#include "platform/qt/qt_form.h"

#include <QCloseEvent>
#include <QResizeEvent>
#include <QWidget>
#include <functional>

#include "platform/qt/placing.h"
#include "platform/qt/qt_text.h"
#include "platform/qt/qt_toolkit.h"

namespace platform::qt {

namespace {

WindowState stateOf(const QWidget& window) {
    if (window.isMinimized()) {
        return WindowState::minimised;
    }
    return window.isMaximized() || window.isFullScreen() ? WindowState::maximised : WindowState::normal;
}

/// The window itself. It tells of what the operator does to it and leaves the rest to the form.
class FormWindow final : public QWidget {
  public:
    using Told = std::function<void()>;

    FormWindow(Told resized, Told closed) : resized_(std::move(resized)), closed_(std::move(closed)) {}

  protected:
    void changeEvent(QEvent* event) override {
        QWidget::changeEvent(event);
        // Some window managers tell a state more than once.
        if (event->type() == QEvent::WindowStateChange && stateOf(*this) != toldState_) {
            toldState_ = stateOf(*this);
            resized_();
        }
    }

    void resizeEvent(QResizeEvent* event) override {
        QWidget::resizeEvent(event);
        // What the window manager makes of a window that is just coming up, or has gone, is not the
        // operator's.
        if (isVisible() && event->oldSize().isValid() && event->oldSize() != event->size()) {
            resized_();
        }
    }

    void closeEvent(QCloseEvent* event) override {
        // The window goes at once, as a desktop that ends its session expects; the rest waits for the job.
        event->accept();
        closed_();
    }

  private:
    Told resized_;
    Told closed_;
    WindowState toldState_ = WindowState::normal;
};

}  // namespace

QtForm::QtForm(QtToolkit& toolkit, Waiter& waiter, std::string_view name, std::string_view caption,
               const Bounds& inside)
    : Named(name),
      toolkit_(toolkit),
      waiter_(waiter),
      widget_(std::make_unique<FormWindow>([this] { toolkit_.handle([this] { call(resized_); }); },
                                           [this] { toolkit_.handle([this] { close(); }); })) {
    widget_->setObjectName(toQt(name));
    widget_->setWindowTitle(toQt(caption));
    widget_->resize(toPixels(inside, *widget_).size());
}

QtForm::~QtForm() = default;

template <class Kind>
Kind& QtForm::keep(std::unique_ptr<Kind> control) {
    Kind& kept = *control;
    controls_.insert_or_assign(kept.name(), std::move(control));
    return kept;
}

Label& QtForm::addLabel(const Layout& layout, std::string_view caption) {
    return keep(std::make_unique<QtLabel>(*widget_, layout, caption));
}

TextBox& QtForm::addTextBox(const Layout& layout, std::string_view text) {
    return keep(std::make_unique<QtTextBox>(toolkit_, *widget_, layout, text));
}

CheckBox& QtForm::addCheckBox(const Layout& layout, std::string_view caption) {
    return keep(std::make_unique<QtCheckBox>(toolkit_, *widget_, layout, caption));
}

Button& QtForm::addButton(const Layout& layout, std::string_view caption) {
    return keep(std::make_unique<QtButton>(toolkit_, *widget_, layout, caption));
}

ListBox& QtForm::addListBox(const Layout& layout) {
    return keep(std::make_unique<QtListBox>(*widget_, layout));
}

Timer& QtForm::addTimer(std::string_view name, int milliseconds) {
    headless::HeadlessTimer& timer = keep(std::make_unique<headless::HeadlessTimer>(name, 0, waiter_));
    timer.setInterval(milliseconds);
    timers_.push_back(&timer);
    return timer;
}

WindowState QtForm::windowState() const {
    return stateOf(*widget_);
}

bool QtForm::visible() const {
    return widget_->isVisible();
}

void QtForm::show() {
    if (closing_) {
        return;
    }
    prepare();
    widget_->show();
}

void QtForm::hide() {
    widget_->hide();
}

void QtForm::close() {
    if (closing_) {
        return;
    }
    closing_ = true;
    widget_->setEnabled(false);
    widget_->hide();
    toolkit_.formIsClosing();
}

Control* QtForm::find(std::string_view name) const {
    const auto found = controls_.find(name);
    return found == controls_.end() ? nullptr : found->second.get();
}

/// What can be done only when all controls are there.
void QtForm::prepare() {
    if (!std::exchange(prepared_, true)) {
        orderTabs(*widget_);
        fitCaptions(*widget_);
    }
}

}  // namespace platform::qt
