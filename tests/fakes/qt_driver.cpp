#include "fakes/qt_driver.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QWidget>
#include <functional>
#include <stdexcept>

#include "platform/qt/display.h"
#include "platform/qt/qt_text.h"
#include "platform/qt/qt_toolkit.h"

using platform::qt::fromQt;
using platform::qt::toQt;

namespace {

/// Plays the operator by posting what the operator does, so that it happens when events are handled.
class QtDriver final : public WindowDriver, private QObject {
  public:
    QtDriver() { qApp->installEventFilter(this); }

    platform::qt::QtToolkit& toolkit() override { return toolkit_; }
    [[nodiscard]] platform::qt::QtForm& form() override { return toolkit_.form(); }

    /// As pasted over what the box holds, so that the text arrives in one piece.
    void typeText(std::string_view textBox, std::string_view text) override {
        post([this, name = toQt(textBox), content = toQt(text)] {
            auto* const box = child<QWidget>(name);
            QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
            if (content.isEmpty()) {
                QTest::keyClick(box, Qt::Key_Delete);
            } else {
                QApplication::clipboard()->setText(content);
                QTest::keyClick(box, Qt::Key_V, Qt::ControlModifier);
            }
        });
    }
    void click(std::string_view button) override {
        post([this, name = toQt(button)] { QTest::mouseClick(child<QWidget>(name), Qt::LeftButton); });
    }
    void press(std::string_view checkBox) override {
        post([this, name = toQt(checkBox)] {
            auto* const box = child<QWidget>(name);
            QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(8, box->height() / 2));
        });
    }
    void minimise() override { enter(Qt::WindowMinimized); }
    void maximise() override { enter(Qt::WindowMaximized); }
    void restore() override { enter(Qt::WindowNoState); }
    void resize() override {
        post([this] { form().widget().resize(form().widget().size() + QSize(30, 30)); });
    }
    void closeWindow() override {
        post([this] { form().widget().close(); });
    }
    void letTimePass(std::chrono::milliseconds time) override { waiter.advance(toolkit_, time); }

  protected:
    [[nodiscard]] platform::Control& control(std::string_view name) override {
        platform::Control* const found = form().find(name);
        if (found == nullptr) {
            throw std::logic_error("no such control: " + std::string(name));
        }
        return *found;
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show) {
            if (auto* const box = qobject_cast<QMessageBox*>(watched)) {
                boxes.push_back(fromQt(box->text()));
                post([box] { QTest::keyClick(box, Qt::Key_Return); });
            } else if (auto* const dialog = qobject_cast<QFileDialog*>(watched)) {
                post([this, dialog] { answer(*dialog); });
            }
        }
        return QObject::eventFilter(watched, event);
    }

  private:
    /// Forgotten when the driver goes.
    void post(std::function<void()> action) {
        QMetaObject::invokeMethod(this, std::move(action), Qt::QueuedConnection);
    }

    void enter(Qt::WindowState state) {
        post([this, state] { form().widget().setWindowState(state); });
    }

    template <class Kind>
    Kind* child(const QString& name) {
        auto* const found = form().widget().findChild<Kind*>(name);
        if (found == nullptr) {
            throw std::logic_error("no such widget: " + fromQt(name));
        }
        return found;
    }

    void answer(QFileDialog& dialog) {
        if (fileChosen()) {
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(toQt(*fileChosen()));
            QTest::keyClick(&dialog, Qt::Key_Return);
        } else {
            QTest::keyClick(&dialog, Qt::Key_Escape);
        }
    }

    platform::qt::QtToolkit toolkit_{waiter};
};

}  // namespace

void connectToScreenInMemory() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const platform::qt::Display display("tests");
}

std::unique_ptr<WindowDriver> makeQtDriver() {
    connectToScreenInMemory();
    return std::make_unique<QtDriver>();
}
