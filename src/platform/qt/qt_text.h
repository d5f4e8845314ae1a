// Texts on their way between the service, which speaks UTF-8, and Qt.
#pragma once

#include <string>
#include <string_view>

class QString;

namespace platform::qt {

[[nodiscard]] QString toQt(std::string_view text);
[[nodiscard]] std::string fromQt(const QString& text);

}  // namespace platform::qt
