#include "platform/qt/qt_controls.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyledItemDelegate>
#include <algorithm>
#include <memory>

#include "base/runtime_error.h"
#include "platform/qt/placing.h"
#include "platform/qt/qt_text.h"
#include "platform/qt/qt_toolkit.h"

namespace platform::qt {

using base::ErrorNumber;
using base::RuntimeError;

namespace {

/// Places the widget and gives it the name by which assistive tools and tests find it.
template <class Widget>
Widget* placed(Widget* widget, QWidget& form, const Layout& layout) {
    widget->setObjectName(toQt(layout.name));
    widget->setAccessibleName(toQt(layout.name));
    widget->setGeometry(toPixels(layout.bounds, form));
    widget->setProperty(tabIndexProperty, layout.tabIndex);
    if (form.isVisible()) {
        widget->show();
    }
    return widget;
}

/// An operator's press turns a box on or off; the third value is the program's alone.
class TwoWayCheckBox final : public QCheckBox {
  public:
    using QCheckBox::QCheckBox;

  protected:
    void nextCheckState() override {
        // clicked() follows and tells of the change, when this is over.
        const QSignalBlocker quiet(this);
        setCheckState(checkState() == Qt::Unchecked ? Qt::Checked : Qt::Unchecked);
    }
};

/// Gives the lines heights with which the list shows whole lines only, wherever it is scrolled to.
class WholeLines final : public QStyledItemDelegate {
  public:
    explicit WholeLines(QListWidget* list) : QStyledItemDelegate(list), list_(*list) {}

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override {
        const QSize line = QStyledItemDelegate::sizeHint(option, index);
        const int inside = list_.height() - 2 * list_.frameWidth();
        const int lines = std::max(1, inside / std::max(1, line.height()));
        const auto edge = [&](int row) { return row * inside / lines; };
        return {line.width(), edge(index.row() + 1) - edge(index.row())};
    }

  private:
    const QListWidget& list_;
};

int valueOf(Qt::CheckState state) {
    switch (state) {
        case Qt::Unchecked:
            return 0;
        case Qt::Checked:
            return 1;
        case Qt::PartiallyChecked:
            break;
    }
    return 2;
}

Qt::CheckState stateOf(int value) {
    if (value == 2) {
        return Qt::PartiallyChecked;
    }
    return value == 1 ? Qt::Checked : Qt::Unchecked;
}

}  // namespace

QtLabel::QtLabel(QWidget& form, const Layout& layout, std::string_view caption)
    : Named(layout.name), caption_(caption) {
    QLabel* const label = placed(new QLabel(toQt(caption), &form), form, layout);
    label->setAccessibleDescription(label->text());
}

QtTextBox::QtTextBox(QtToolkit& toolkit, QWidget& form, const Layout& layout, std::string_view text)
    : Named(layout.name), widget_(placed(new QLineEdit(toQt(text), &form), form, layout)), text_(text) {
    QObject::connect(widget_, &QLineEdit::textChanged, widget_, [this, &toolkit](const QString& typed) {
        toolkit.handle([this, &typed] {
            std::string content = fromQt(typed);
            if (content != text_) {
                text_ = std::move(content);
                call(changed_);
            }
        });
    });
}

void QtTextBox::setText(std::string_view text) {
    if (text == text_) {
        return;
    }
    text_ = text;
    {
        const QSignalBlocker quiet(widget_);
        widget_->setText(toQt(text));
    }
    call(changed_);
}

QtCheckBox::QtCheckBox(QtToolkit& toolkit, QWidget& form, const Layout& layout, std::string_view caption)
    : Named(layout.name),
      toolkit_(toolkit),
      widget_(placed(new TwoWayCheckBox(toQt(caption), &form), form, layout)) {
    widget_->setTristate(true);
    widget_->setAccessibleDescription(widget_->text());
    // Assistive tools switch a box without a click.
    QObject::connect(widget_, &QCheckBox::clicked, widget_, [this] { takeOver(); });
    QObject::connect(widget_, &QCheckBox::toggled, widget_, [this] { takeOver(); });
}

void QtCheckBox::takeOver() {
    toolkit_.handle([this] {
        const int value = valueOf(widget_->checkState());
        if (value != value_) {
            value_ = value;
            call(changed_);
        }
    });
}

void QtCheckBox::setValue(int value) {
    if (value < 0 || value > 2) {
        throw RuntimeError(ErrorNumber::invalidPropertyValue,
                           "Invalid property value: " + name() + " cannot take " + std::to_string(value));
    }
    if (value == value_) {
        return;
    }
    value_ = value;
    {
        const QSignalBlocker quiet(widget_);
        widget_->setCheckState(stateOf(value));
    }
    call(changed_);
}

QtButton::QtButton(QtToolkit& toolkit, QWidget& form, const Layout& layout, std::string_view caption)
    : Named(layout.name), widget_(placed(new QPushButton(&form), form, layout)) {
    setCaption(caption);
    widget_->setAutoDefault(true);  // the Enter key presses the button that has the focus, as Space does
    QObject::connect(widget_, &QPushButton::clicked, widget_,
                     [this, &toolkit] { toolkit.handle([this] { call(clicked_); }); });
}

void QtButton::setCaption(std::string_view caption) {
    caption_ = caption;
    widget_->setText(toQt(caption));
    widget_->setAccessibleDescription(widget_->text().remove('&'));
}

QtListBox::QtListBox(QWidget& form, const Layout& layout)
    : Named(layout.name), widget_(placed(new QListWidget(&form), form, layout)) {
    widget_->setItemDelegate(new WholeLines(widget_));
}

void QtListBox::insert(std::size_t index, std::string_view line) {
    if (index > count()) {
        throw RuntimeError(ErrorNumber::invalidProcedureCall, name() + " has no place for a line there");
    }
    widget_->insertItem(static_cast<int>(index), toQt(line));
}

void QtListBox::remove(std::size_t index) {
    if (index >= count()) {
        throw RuntimeError(ErrorNumber::invalidProcedureCall, name() + " has no such line to remove");
    }
    const std::unique_ptr<QListWidgetItem> removed(widget_->takeItem(static_cast<int>(index)));
}

std::size_t QtListBox::count() const {
    return static_cast<std::size_t>(widget_->count());
}

std::string QtListBox::line(std::size_t index) const {
    if (index >= count()) {
        throw RuntimeError(ErrorNumber::invalidProcedureCall, name() + " has no such line");
    }
    return fromQt(widget_->item(static_cast<int>(index))->text());
}

}  // namespace platform::qt
