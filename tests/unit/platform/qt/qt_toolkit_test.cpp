// What only the Qt toolkit has: widgets that are seen, reached by keys and found by assistive tools.
#include "platform/qt/qt_toolkit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <array>
#include <clocale>
#include <string>
#include <vector>

#include "base/runtime_error.h"
#include "fakes/manual_waiter.h"
#include "fakes/qt_driver.h"
#include "fakes/temporary_folder.h"
#include "platform/qt/placing.h"

namespace {

using testing::ElementsAre;

/// Calls something from inside Qt's event loop.
template <class Action>
void later(Action action) {
    QTimer::singleShot(0, qApp, action);
}

class Qt6Window : public testing::Test {
  protected:
    void build() {
        form.addLabel({"lbl", {120, 240, 1695, 255}, 5}, "Poll Index Queue every");
        box.onChange([this] { seen.push_back(box.text()); });
        check.onChange([this] { seen.push_back(std::to_string(check.value())); });
        start.onClick([this] { seen.emplace_back("start"); });
        leave.onClick([this] { seen.emplace_back("exit"); });
        form.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
    }

    QWidget& window() { return toolkit.form().widget(); }
    template <class Kind>
    Kind* child(const char* name) {
        return window().findChild<Kind*>(name);
    }
    std::string focus() {
        return window().focusWidget() == nullptr ? "" : window().focusWidget()->objectName().toStdString();
    }

    // Made before the toolkit, which needs it.
    struct Connected {
        Connected() { connectToScreenInMemory(); }
    } connected;
    fakes::ManualWaiter waiter;
    platform::qt::QtToolkit toolkit{waiter};
    platform::Form& form = toolkit.createForm("Main", "orlentbar indexer", 5775, 3255);
    platform::Button& leave = form.addButton({"cmdExit", {4320, 2760, 1095, 375}, 2}, "E&xit");
    platform::TextBox& box = form.addTextBox({"txt", {1920, 210, 735, 285}, 6}, "1");
    platform::ListBox& list = form.addListBox({"lst", {120, 720, 5535, 1230}, 1});
    platform::CheckBox& check = form.addCheckBox({"chk", {120, 2160, 855, 255}, 3}, "Log it");
    platform::Button& start = form.addButton({"cmdStartStop", {360, 2760, 1095, 375}, 0}, "S&top");
    std::vector<std::string> seen;
};

TEST_F(Qt6Window, AssistiveToolsFindEveryControlByItsName) {
    build();
    for (const char* name : {"lbl", "txt", "lst", "chk", "cmdStartStop", "cmdExit"}) {
        const auto* const control = child<QWidget>(name);
        ASSERT_NE(control, nullptr) << name;
        EXPECT_EQ(control->accessibleName(), name);
    }
    EXPECT_EQ(child<QWidget>("cmdExit")->accessibleDescription(), "Exit");
    start.setCaption("S&tart");
    EXPECT_EQ(child<QWidget>("cmdStartStop")->accessibleDescription(), "Start");
}

TEST_F(Qt6Window, FifteenTwipsAreOnePixel) {
    build();
    EXPECT_EQ(window().size(), QSize(385, 217));
    EXPECT_EQ(child<QWidget>("cmdExit")->geometry(), QRect(288, 184, 73, 25));
}

TEST_F(Qt6Window, EdgesThatMeetInTwipsMeetInPixels) {
    for (int left = 0; left < 45; ++left) {
        const QRect first = platform::qt::toPixels({left, 0, 100, 15}, window());
        const QRect second = platform::qt::toPixels({left + 100, 0, 100, 15}, window());
        EXPECT_EQ(first.right() + 1, second.left()) << left;
    }
}

TEST_F(Qt6Window, NoCaptionIsCutOff) {
    QFont large = QApplication::font();
    large.setPointSizeF(24);
    QApplication::setFont(large);
    build();
    QApplication::setFont(QFont());
    const auto* const label = child<QLabel>("lbl");
    EXPECT_LE(QFontMetrics(label->font()).horizontalAdvance(label->text()), label->width());
    const auto* const button = child<QPushButton>("cmdStartStop");
    EXPECT_LE(QFontMetrics(button->font()).height(), button->height());
    EXPECT_LE(child<QCheckBox>("chk")->sizeHint().width(), child<QCheckBox>("chk")->width());
    EXPECT_LE(QFontMetrics(child<QLineEdit>("txt")->font()).height() + 4, child<QLineEdit>("txt")->height());
}

TEST_F(Qt6Window, TheTabKeyFollowsTheTabIndexes) {
    build();
    std::vector<std::string> order{focus()};
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(window().focusWidget(), Qt::Key_Tab);
        order.push_back(focus());
    }
    EXPECT_THAT(order, ElementsAre("cmdStartStop", "lst", "cmdExit", "chk", "txt"));
}

TEST_F(Qt6Window, MnemonicsFollowTheCaption) {
    build();
    // The button is seen going down before it is clicked.
    const auto pressWithAlt = [this](Qt::Key key, std::size_t clicks) {
        QTest::keyClick(&window(), key, Qt::AltModifier);
        return QTest::qWaitFor([&] { return seen.size() == clicks; });
    };
    EXPECT_TRUE(pressWithAlt(Qt::Key_T, 1));
    EXPECT_TRUE(pressWithAlt(Qt::Key_X, 2));
    start.setCaption("Ha&lt");
    QTest::keyClick(&window(), Qt::Key_T, Qt::AltModifier);
    EXPECT_TRUE(pressWithAlt(Qt::Key_L, 3));
    EXPECT_THAT(seen, ElementsAre("start", "exit", "start"));
}

TEST_F(Qt6Window, SpaceAndEnterPressTheButtonThatHasTheFocus) {
    build();
    QTest::keyClick(window().focusWidget(), Qt::Key_Space);
    QTest::keyClick(window().focusWidget(), Qt::Key_Return);
    EXPECT_THAT(seen, ElementsAre("start", "start"));
}

TEST_F(Qt6Window, EachKeyIsAChange) {
    build();
    QTest::keyClicks(child<QLineEdit>("txt"), "25");
    EXPECT_THAT(seen, ElementsAre("12", "125"));
}

TEST_F(Qt6Window, AssistiveToolsSwitchACheckBox) {
    build();
    child<QCheckBox>("chk")->toggle();
    EXPECT_THAT(seen, ElementsAre("1"));
}

TEST_F(Qt6Window, TheNewestLineIsTheOneThatIsSeen) {
    build();
    for (int i = 0; i < 50; ++i) {
        list.insert(0, std::to_string(i));
    }
    const auto* const shown = child<QListWidget>("lst");
    EXPECT_EQ(shown->indexAt(QPoint(5, 5)).row(), 0);
}

TEST_F(Qt6Window, TheListShowsWholeLinesOnly) {
    build();
    for (int i = 0; i < 50; ++i) {
        list.insert(0, std::to_string(i));
    }
    const auto* const shown = child<QListWidget>("lst");
    const int bottom = shown->viewport()->height() - 1;
    const QListWidgetItem* const last = shown->itemAt(QPoint(5, bottom));
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(shown->visualItemRect(last).bottom(), bottom);
}

TEST_F(Qt6Window, TextsOfAnyScriptComeThroughWhole) {
    box.setText("/srv/Prüfung/日本.log");
    list.insert(0, "naïve – ✓");
    EXPECT_EQ(child<QLineEdit>("txt")->text().toStdString(), box.text());
    EXPECT_EQ(list.line(0), "naïve – ✓");
}

TEST_F(Qt6Window, AMessageBoxWaitsForItsButtonWhileTimersTick) {
    build();
    platform::Timer& timer = form.addTimer("Timer1", 10);
    timer.onTick([this] {
        seen.push_back(QApplication::activeModalWidget() != nullptr ? "tick under the box" : "tick");
        QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Return);
    });
    timer.setEnabled(true);
    waiter.moment += std::chrono::milliseconds(10);
    toolkit.messageBox("Logging cannot be enabled\r\nuntil you choose a log file.");
    EXPECT_THAT(seen, ElementsAre("tick under the box"));
}

TEST_F(Qt6Window, AWindowThatIsToldToCloseTakesItsMessageBoxAlong) {
    build();
    form.onClose([this] { seen.emplace_back("closed"); });
    start.onClick([this] {
        toolkit.messageBox("Logging cannot be enabled until you choose a log file.");
        seen.emplace_back("answered");
    });
    later([this] { QTest::keyClick(window().focusWidget(), Qt::Key_Space); });
    later([this] {
        later([this] {
            waiter.close = true;
            toolkit.processEvents();
        });
    });
    toolkit.run();
    EXPECT_THAT(seen, ElementsAre("answered", "closed"));
}

TEST_F(Qt6Window, AnErrorUnderAMessageBoxEndsRunPastTheTraps) {
    build();
    start.onClick([this] {
        try {
            later([this] { child<QLineEdit>("txt")->setText("soon"); });
            toolkit.messageBox("wait");
            seen.emplace_back("went on");
        } catch (const std::exception&) {
            seen.emplace_back("trapped");
        }
    });
    box.onChange([] { throw base::RuntimeError(13, "Type mismatch"); });
    later([this] { QTest::keyClick(window().focusWidget(), Qt::Key_Space); });
    EXPECT_THROW(toolkit.run(), base::RuntimeError);
    EXPECT_TRUE(seen.empty());
}

TEST_F(Qt6Window, WhatAJobSaysWhenTheWindowHasGoneIsPrinted) {
    build();
    start.onClick([this] {
        form.close();
        testing::internal::CaptureStderr();
        toolkit.messageBox("Unable to connect\r\nto the library");
        seen.push_back(testing::internal::GetCapturedStderr());
        EXPECT_EQ(toolkit.saveFileDialog({}, ".log"), std::nullopt);
    });
    later([this] { QTest::keyClick(window().focusWidget(), Qt::Key_Space); });
    toolkit.run();
    EXPECT_THAT(seen, ElementsAre("Unable to connect\nto the library\n"));
}

TEST_F(Qt6Window, TheFileDialogOffersTheKindsAndAddsTheExtension) {
    build();
    const std::array<platform::FileFilter, 2> filters{
        {{"Log Files (*.log)", "*.log"}, {"All Files (*.*)", "*.*"}}};
    QStringList kinds;
    later([&kinds] {
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        kinds = dialog->nameFilters();
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText("/nowhere-at-all");
        dialog->setDirectory("/");
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    EXPECT_EQ(toolkit.saveFileDialog(filters, ".log"), "/nowhere-at-all.log");
    EXPECT_EQ(kinds, (QStringList{"Log Files (*.log) (*.log)", "All Files (*.*) (*)"}));
}

TEST_F(Qt6Window, ATimerWakesTheEventLoopUp) {
    class RunningClock final : public platform::Waiter {
      public:
        Milliseconds now() override {
            return std::chrono::duration_cast<Milliseconds>(
                std::chrono::steady_clock::now().time_since_epoch());
        }
        void wait(std::optional<Milliseconds> /*until*/) override {}
        bool closeRequested() override { return false; }
    } clock;
    platform::qt::QtToolkit real(clock);
    platform::Form& ticking = real.createForm("Main", "ticking", 100, 100);
    platform::Timer& timer = ticking.addTimer("Timer1", 5);
    timer.onTick([&] {
        seen.emplace_back("tick");
        if (seen.size() == 3) {
            ticking.close();
        }
    });
    timer.setEnabled(true);
    real.run();
    EXPECT_EQ(seen.size(), 3U);
}

TEST_F(Qt6Window, ASignalWakesTheEventLoopUp) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    {
        platform::qt::QtToolkit told(waiter, ends[0]);
        told.createForm("Main", "told", 100, 100).onClose([this] { seen.emplace_back("closed"); });
        later([this, &ends] {
            waiter.close = true;
            ASSERT_EQ(write(ends[1], "x", 1), 1);
        });
        told.run();
    }
    close(ends[0]);
    close(ends[1]);
    EXPECT_THAT(seen, ElementsAre("closed"));
}

TEST_F(Qt6Window, NumbersKeepTheirDecimalPoint) {
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}

TEST_F(Qt6Window, RunWithoutAWindowIsAnError) {
    platform::qt::QtToolkit empty(waiter);
    EXPECT_THROW(empty.run(), base::RuntimeError);
}

/// A window that is told to close, by a signal, while something stands open over it.
class ToldToClose : public Qt6Window {
  protected:
    void SetUp() override {
        build();
        form.onClose([this] { seen.emplace_back("closed"); });
    }
    void tell() {
        waiter.close = true;
        toolkit.processEvents();
    }
    /// The operator presses the button whose handler is the job.
    void runWith(platform::Handler job) {
        start.onClick(std::move(job));
        later([this] { QTest::keyClick(window().focusWidget(), Qt::Key_Space); });
        toolkit.run();
    }
    /// Browses, and once the file dialog is there, does what is said with it.
    template <class Action>
    void runBrowsing(Action action) {
        runWith([this, action] {
            later([action] {
                auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
                ASSERT_NE(dialog, nullptr);
                action(*dialog);
            });
            seen.emplace_back(toolkit.saveFileDialog({}, ".log") ? "path" : "no path");
        });
    }
    static void askForMenu(QWidget& widget) {
        QContextMenuEvent asked(QContextMenuEvent::Keyboard, QPoint(2, 2), widget.mapToGlobal(QPoint(2, 2)));
        QApplication::sendEvent(&widget, &asked);
    }
    static QWidget* menu() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }
};

TEST_F(ToldToClose, InAJobTakesTheMenuOfATextBoxAlong) {
    runWith([this] {
        askForMenu(*child<QLineEdit>("txt"));
        EXPECT_NE(menu(), nullptr);
        tell();
        seen.emplace_back(QApplication::activePopupWidget() == nullptr ? "menu is gone" : "menu is open");
    });
    EXPECT_THAT(seen, ElementsAre("menu is gone", "closed"));
}

TEST_F(ToldToClose, InAJobTakesAMenuAlongThatRefusesToClose) {
    class Stubborn final : public QWidget {
      public:
        Stubborn() : QWidget(nullptr, Qt::Popup) {}

      protected:
        void closeEvent(QCloseEvent* event) override { event->ignore(); }
    } stubborn;
    runWith([this, &stubborn] {
        stubborn.show();
        EXPECT_EQ(QApplication::activePopupWidget(), &stubborn);
        tell();
    });
    EXPECT_FALSE(stubborn.isVisible());
    EXPECT_THAT(seen, ElementsAre("closed"));
}

TEST_F(ToldToClose, WithoutAJobTakesTheMenuOfATextBoxAlong) {
    later([this] {
        askForMenu(*child<QLineEdit>("txt"));
        EXPECT_NE(menu(), nullptr);
        tell();
    });
    toolkit.run();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_THAT(seen, ElementsAre("closed"));
}

TEST_F(ToldToClose, TakesTheFileDialogAlong) {
    runBrowsing([this](QFileDialog& /*dialog*/) { tell(); });
    EXPECT_THAT(seen, ElementsAre("no path", "closed"));
}

TEST_F(ToldToClose, TakesTheFileDialogAlongWithItsMenu) {
    runBrowsing([this](QFileDialog& dialog) {
        later([this] {
            EXPECT_NE(menu(), nullptr);
            tell();
        });
        askForMenu(*dialog.findChild<QListView*>("listView")->viewport());
    });
    EXPECT_THAT(seen, ElementsAre("no path", "closed"));
}

TEST_F(ToldToClose, AnswersTheQuestionOfTheFileDialogWithNo) {
    const fakes::TemporaryFolder folder;
    folder.write("kept.log", "a line");
    const QString path = QString::fromStdString(folder / "kept.log");
    runBrowsing([&](QFileDialog& dialog) {
        dialog.setDirectory(QString::fromStdString(folder / ""));
        auto* const files = dialog.findChild<QListView*>("listView");
        const auto shown = [files] { return files->model()->rowCount(files->rootIndex()) == 1; };
        ASSERT_TRUE(QTest::qWaitFor(shown));
        files->setCurrentIndex(files->model()->index(0, 0, files->rootIndex()));
        later([this] {
            EXPECT_NE(qobject_cast<QMessageBox*>(QApplication::activeModalWidget()), nullptr);
            tell();
        });
        auto* const remove = dialog.findChild<QAction*>("qt_delete_action");
        remove->setEnabled(true);
        remove->trigger();
    });
    EXPECT_THAT(seen, ElementsAre("no path", "closed"));
    EXPECT_EQ(folder.read("kept.log"), "a line");
}

TEST_F(ToldToClose, UnderAMessageBoxOfTheStartUpTakesItAlong) {
    later([this] { tell(); });
    toolkit.messageBox("Unable to connect");
    EXPECT_TRUE(seen.empty());
    toolkit.run();
    EXPECT_THAT(seen, ElementsAre("closed"));
}

TEST_F(Qt6Window, AnOrderToQuitClosesTheWindow) {
    build();
    form.onClose([this] { seen.emplace_back("closed"); });
    later([] { QCoreApplication::exit(); });
    toolkit.run();
    EXPECT_THAT(seen, ElementsAre("closed"));
    // Qt forgets the order at the end of the program's own loop.
    later([] { QCoreApplication::exit(); });
    QApplication::exec();
}

}  // namespace
