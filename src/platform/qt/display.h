// The display that a window is shown on, and the question whether there is one.
#pragma once

#include <memory>
#include <optional>
#include <string>

class QApplication;

namespace platform::qt {

/// Why no window can be shown; nothing when one can. Asked before a Display is made, because Qt ends a
/// program that it cannot give a window. Call it while the program has a single thread.
[[nodiscard]] std::optional<std::string> displayTrouble();

/// The connection to the display, for as long as the program has a window. The composition root owns the one
/// there is. The program keeps the "C" locale, in which the service reads and writes its numbers.
class Display {
  public:
    explicit Display(const char* programName);
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;
    ~Display();

  private:
    std::string programName_;
    char* arguments_[2];
    int argumentCount_ = 1;
    std::unique_ptr<QApplication> application_;
};

}  // namespace platform::qt
