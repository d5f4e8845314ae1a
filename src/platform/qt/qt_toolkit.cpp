#include "platform/qt/qt_toolkit.h"

#include <QApplication>
#include <QEventLoop>
#include <QFileDialog>
#include <QMessageBox>
#include <QScreen>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>

#include "base/runtime_error.h"
#include "platform/headless/headless_toolkit.h"
#include "platform/qt/qt_text.h"

namespace platform::qt {

using Milliseconds = Waiter::Milliseconds;

namespace {

/// How long events that keep coming may keep a job from its work.
constexpr int longestInterruption = 50;

/// The rest is for the frame that the window manager draws.
constexpr double mostOfTheScreen = 0.9;

/// "All files" has another pattern where files need no extension.
QString nameFilter(const FileFilter& filter) {
    const std::string_view pattern = filter.pattern == "*.*" ? "*" : filter.pattern;
    return toQt(filter.description) + " (" + toQt(pattern) + ")";
}

/// Dismisses what stands open, the topmost first. Closing is how the operator would do it: a question that a
/// dialog asks, such as whether to delete a file, is answered with No.
void dismiss(QWidget* (*topmost)()) {
    for (QWidget* open = topmost(); open != nullptr; open = topmost()) {
        if (!open->close()) {
            open->hide();
        }
        if (topmost() == open) {
            return;
        }
    }
}

}  // namespace

QtToolkit::QtToolkit(Waiter& waiter, std::optional<int> wakeUpDescriptor)
    : waiter_(waiter), wakeUp_(std::make_unique<QTimer>()) {
    wakeUp_->setSingleShot(true);
    wakeUp_->setTimerType(Qt::PreciseTimer);
    QObject::connect(wakeUp_.get(), &QTimer::timeout, wakeUp_.get(), [this] { wakeUp(); });
    if (wakeUpDescriptor) {
        auto* const told = new QSocketNotifier(*wakeUpDescriptor, QSocketNotifier::Read, wakeUp_.get());
        QObject::connect(told, &QSocketNotifier::activated, told, [this] { wakeUp(); });
    }
}

QtToolkit::~QtToolkit() = default;

Form& QtToolkit::createForm(std::string_view name, std::string_view caption, int width, int height) {
    form_ = std::make_unique<QtForm>(*this, waiter_, name, caption, Bounds{0, 0, width, height});
    return *form_;
}

QtForm& QtToolkit::form() const {
    if (form_ == nullptr) {
        throw base::RuntimeError(base::ErrorNumber::objectNotSet, "The window has not been created");
    }
    return *form_;
}

void QtToolkit::processEvents() {
    if (closing()) {
        return;
    }
    QCoreApplication::processEvents(QEventLoop::AllEvents, longestInterruption);
    wakeUp();
    handlers_.rethrow();
}

void QtToolkit::run() {
    static_cast<void>(form());
    processEvents();
    if (!closing()) {
        QEventLoop loop;
        running_ = &loop;
        wakeUpAtNextTick();
        loop.exec();
        running_ = nullptr;
        handlers_.rethrow();
    }
    // Whoever else ends the loop wants the program to end.
    form_->close();
    // A window that was closed under a dialog of the start-up has waited for this.
    if (!closed_) {
        finishClosing();
    }
}

void QtToolkit::messageBox(std::string_view text) {
    if (closing()) {
        headless::HeadlessToolkit::printToStandardError(text);
        return;
    }
    QWidget* const window = form_ != nullptr && form_->visible() ? &form_->widget() : nullptr;
    QMessageBox box(QMessageBox::NoIcon, form_ != nullptr ? form_->widget().windowTitle() : QString(),
                    toQt(text).remove('\r'), QMessageBox::Ok, window);
    box.setTextFormat(Qt::PlainText);
    ask(box);
}

std::optional<std::string> QtToolkit::saveFileDialog(std::span<const FileFilter> filters,
                                                     std::string_view defaultExtension) {
    if (closing()) {
        return std::nullopt;
    }
    QFileDialog dialog(&form().widget());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    // A log file is written on, not over. The descriptions name the patterns already.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    QStringList kinds;
    for (const FileFilter& filter : filters) {
        kinds.append(nameFilter(filter));
    }
    dialog.setNameFilters(kinds);
    dialog.setDefaultSuffix(toQt(defaultExtension.substr(defaultExtension.starts_with('.') ? 1 : 0)));
    // A small screen of large letters has less room than the dialog likes to take.
    dialog.resize(dialog.sizeHint().boundedTo(form().widget().screen()->availableSize() * mostOfTheScreen));
    if (!ask(dialog) || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return fromQt(dialog.selectedFiles().first());
}

/// Shows the dialog until it is answered or the window closes under it. True when the operator agreed.
/// Whoever asks, be it the start-up, is at work as a handler is: the close handler waits for it.
bool QtToolkit::ask(QDialog& dialog) {
    dialogs_.push_back(&dialog);
    wakeUpAtNextTick();
    int answer = QDialog::Rejected;
    handlers_.call([&] { answer = dialog.exec(); });
    dialogs_.pop_back();
    handlers_.rethrow();
    return answer != QDialog::Rejected;
}

std::optional<Milliseconds> QtToolkit::nextTick() const {
    return headless::nextTickOf(form().timers());
}

headless::HeadlessTimer* QtToolkit::timerDueAt(Milliseconds moment) const {
    return form_ == nullptr || closing() || handlers_.failed() ? nullptr
                                                               : headless::dueAt(moment, form_->timers());
}

/// Looks whether the window is to close and which timers are due. The moment is taken once: each timer ticks
/// at most once, however long the handlers take.
void QtToolkit::wakeUp() {
    if (form_ == nullptr || closing()) {
        return;
    }
    if (waiter_.closeRequested()) {
        handle([this] { form_->close(); });
    }
    const Milliseconds moment = waiter_.now();
    for (headless::HeadlessTimer* timer = timerDueAt(moment); timer != nullptr; timer = timerDueAt(moment)) {
        handle([timer] { timer->tick(); });
    }
    wakeUpAtNextTick();
}

void QtToolkit::wakeUpAtNextTick() {
    const std::optional<Milliseconds> next = form_ != nullptr && !closing() ? nextTick() : std::nullopt;
    if (next) {
        wakeUp_->start(std::max(Milliseconds(0), *next - waiter_.now()));
    } else {
        wakeUp_->stop();
    }
}

void QtToolkit::handle(const Handler& event) {
    if (closing() || handlers_.failed()) {
        return;
    }
    handlers_.call(event);
    if (closing() && !handlers_.atWork() && !handlers_.failed()) {
        handlers_.call([this] { finishClosing(); });
    }
    if (closed_ || handlers_.failed()) {
        leaveLoops();
    } else {
        wakeUpAtNextTick();
    }
}

void QtToolkit::formIsClosing() {
    dismissDialogs();
    if (!handlers_.atWork()) {
        finishClosing();
    }
}

void QtToolkit::finishClosing() {
    closed_ = true;
    form_->runCloseHandler();
}

/// Takes away all that stands over the window, also what Qt itself has opened: the menus of text boxes, the
/// questions of the file dialog. Nobody could answer them any more, and each may hold a loop of its own.
void QtToolkit::dismissDialogs() {
    dismiss(&QApplication::activePopupWidget);
    dismiss(&QApplication::activeModalWidget);
    for (QDialog* dialog : dialogs_) {
        // An event that is still on its way must not open another menu.
        dialog->setEnabled(false);
        dialog->reject();
    }
}

void QtToolkit::leaveLoops() {
    dismissDialogs();
    if (running_ != nullptr) {
        running_->quit();
    }
}

}  // namespace platform::qt
