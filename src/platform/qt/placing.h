// Where the controls stand. Places are fixed, in twips, and letters are not: every desktop brings its own, so
// the window picks letters with which no caption is cut off.
#pragma once

#include "platform/ui.h"

class QRect;
class QWidget;

namespace platform::qt {

/// The property of a widget that holds its place in the tab order.
inline constexpr const char* tabIndexProperty = "tabIndex";

/// The place inside the window, or the window itself, in Qt's pixels, of which 96 make an inch on a plain
/// screen. Qt itself draws each of them with as many of the screen's as the desktop's scale asks for.
[[nodiscard]] QRect toPixels(const Bounds& bounds, const QWidget& window);

/// Joins the controls in the order of their tab indexes and gives the first one the focus.
void orderTabs(QWidget& window);

/// Gives the window the desktop's font, as much smaller as its captions and boxes need.
void fitCaptions(QWidget& window);

}  // namespace platform::qt
