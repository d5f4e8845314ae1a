#include "platform/qt/qt_text.h"

#include <QString>

namespace platform::qt {

QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string fromQt(const QString& text) {
    return text.toStdString();
}

}  // namespace platform::qt
