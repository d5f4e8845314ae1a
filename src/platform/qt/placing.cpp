#include "platform/qt/placing.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QFontInfo>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>

namespace platform::qt {

namespace {

constexpr double twipsPerInch = 1440;

/// Sizes are tried in steps of a quarter of a point.
constexpr int stepsPerPoint = 4;
constexpr int smallest = 6 * stepsPerPoint;

/// How close the letters may stand, in percent, before smaller ones are taken.
constexpr double closest = 92;

bool captionFits(const QWidget& control, const QFontMetrics& metrics) {
    if (const auto* label = qobject_cast<const QLabel*>(&control)) {
        return metrics.horizontalAdvance(label->text()) <= label->width();
    }
    if (const auto* box = qobject_cast<const QCheckBox*>(&control)) {
        return box->sizeHint().width() <= box->width();
    }
    if (const auto* button = qobject_cast<const QPushButton*>(&control)) {
        const int caption = metrics.horizontalAdvance(QString(button->text()).remove('&'));
        return caption + 2 * metrics.averageCharWidth() <= button->width() &&
               metrics.height() + metrics.descent() <= button->height();
    }
    if (qobject_cast<const QLineEdit*>(&control) != nullptr) {
        return metrics.height() + 4 <= control.height();
    }
    return true;
}

bool captionsFit(const QWidget& window) {
    const QList<QWidget*> controls = window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    return std::all_of(controls.begin(), controls.end(), [](const QWidget* control) {
        return captionFits(*control, QFontMetrics(control->font()));
    });
}

}  // namespace

/// Edges are rounded, not sizes: controls that end at the same place in twips do so in pixels.
QRect toPixels(const Bounds& bounds, const QWidget& window) {
    const auto pixels = [&window](int twips) { return qRound(twips * window.logicalDpiX() / twipsPerInch); };
    const QPoint topLeft(pixels(bounds.left), pixels(bounds.top));
    const QPoint end(pixels(bounds.left + bounds.width), pixels(bounds.top + bounds.height));
    return {topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y())};
}

void orderTabs(QWidget& window) {
    QList<QWidget*> order = window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    const auto tabIndex = [](const QWidget* control) { return control->property(tabIndexProperty).toInt(); };
    order.removeIf([](const QWidget* control) { return control->focusPolicy() == Qt::NoFocus; });
    std::sort(order.begin(), order.end(),
              [&](const QWidget* a, const QWidget* b) { return tabIndex(a) < tabIndex(b); });
    for (qsizetype i = 1; i < order.size(); ++i) {
        QWidget::setTabOrder(order[i - 1], order[i]);
    }
    if (!order.isEmpty()) {
        order.front()->setFocus();
    }
}

void fitCaptions(QWidget& window) {
    QFont font = window.font();
    for (int size = qRound(QFontInfo(font).pointSizeF() * stepsPerPoint); size >= smallest; --size) {
        font.setPointSizeF(static_cast<double>(size) / stepsPerPoint);
        for (const double spacing : {100.0, 96.0, closest}) {
            font.setLetterSpacing(QFont::PercentageSpacing, spacing);
            window.setFont(font);
            if (captionsFit(window)) {
                return;
            }
        }
    }
}

}  // namespace platform::qt
