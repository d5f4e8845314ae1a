// Timer measures nested sections of work with an outside profiler object and writes the times to a file
// beside the program. It is a diagnostic aid: nothing in the service makes one; whoever does owns it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/automation.h"
#include "platform/system.h"

namespace infra {

class Timer {
  public:
    /// Switches WriteLog on and off; it is on at first.
    void setLoggin(bool flag);

    /// Creates the section profiler and starts it. An empty file name stands for "TYinxTest.log". Raises the
    /// profiler's error when it cannot be created.
    explicit Timer(const platform::System& system, std::string_view logFileName = {});

    /// Opens a section inside the present one. A hundred may be open at once; an error is shown and written.
    void StartTimer();

    /// Closes the innermost section and writes its time. An error is shown.
    void EndTimer(std::string_view strMessage);

    /// Writes the time since the line before; the first call writes nothing. An error is shown.
    void WriteLog(std::string_view strMessage);

    /// Appends one line to the file. Raises the file system's error.
    void RealWriteLog(std::string_view strMessage);

    /// Writes the text and shows it in a message box.
    void MyMsgBox(std::string_view strMessage);

  private:
    using Milliseconds = double;

    [[nodiscard]] std::unique_ptr<platform::AutomationObject> createProfiler() const;

    /// The time of the section at a depth. Raises "Subscript out of range" outside 0 to 100.
    [[nodiscard]] Milliseconds& sectionTime(std::int16_t depth);
    void chargeOpenSection();

    platform::System system_;
    std::string logFileName_;
    std::unique_ptr<platform::AutomationObject> sectionProfiler_;
    std::unique_ptr<platform::AutomationObject> lineProfiler_;
    std::array<Milliseconds, 101> sectionTimes_{};
    std::int16_t depth_ = 0;
    bool debugOn_ = true;
};

}  // namespace infra
