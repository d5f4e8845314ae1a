#include "fakes/qt_driver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QWidget>
#include <functional>
#include <stdexcept>

#include "platform/qt/display.h"
#include "platform/qt/placing.h"
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
    void click(std::string_view button) override { pressMouse(button); }
    void press(std::string_view checkBox) override { pressMouse(checkBox); }
    void clickTwice(std::string_view button) override { pressMouseTwice(button); }
    void pressTwice(std::string_view checkBox) override { pressMouseTwice(checkBox); }
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

    /// Fifteen twips are a pixel on a screen of 96 dots per inch, which the one in memory is.
    [[nodiscard]] Seen see(std::string_view name) override {
        auto* const widget = child<QWidget>(toQt(name));
        const QRect place = widget->geometry();
        Seen seen{{place.left() * 15, place.top() * 15, place.width() * 15, place.height() * 15},
                  widget->property(platform::qt::tabIndexProperty).toInt(),
                  {}};
        if (const auto* label = qobject_cast<QLabel*>(widget)) {
            seen.caption = fromQt(label->text());
        } else if (const auto* button = qobject_cast<QAbstractButton*>(widget)) {
            seen.caption = fromQt(button->text());
        }
        return seen;
    }
    [[nodiscard]] std::string title() override { return fromQt(form().widget().windowTitle()); }

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
                beforeAnswer();
                post([box = QPointer(box)] {
                    if (box != nullptr && box->isVisible()) {
                        QTest::keyClick(box, Qt::Key_Return);
                    }
                });
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

    /// Where the square of a check box is, beside which a press does nothing.
    static QPoint spot(const QWidget& widget) { return {8, widget.height() / 2}; }

    void pressMouse(std::string_view name) {
        post([this, name = toQt(name)] {
            auto* const widget = child<QWidget>(name);
            QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, spot(*widget));
        });
    }
    void pressMouseTwice(std::string_view name) {
        pressMouse(name);
        post([this, name = toQt(name)] {
            auto* const widget = child<QWidget>(name);
            QTest::mouseDClick(widget, Qt::LeftButton, Qt::NoModifier, spot(*widget));
            QTest::mouseRelease(widget, Qt::LeftButton, Qt::NoModifier, spot(*widget));
        });
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
        for (const QString& kind : dialog.nameFilters()) {
            const qsizetype pattern = kind.lastIndexOf('(');
            offered.push_back(fromQt(kind.first(pattern - 1) + '|' + kind.sliced(pattern + 1).chopped(1)));
        }
        offered.push_back('.' + fromQt(dialog.defaultSuffix()));
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
    // Never taken down: at the end of the program parts of Qt that it needs are gone.
    static const auto* const display = new platform::qt::Display("tests");
    static_cast<void>(display);
}

std::unique_ptr<WindowDriver> makeQtDriver() {
    connectToScreenInMemory();
    return std::make_unique<QtDriver>();
}
