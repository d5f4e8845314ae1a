// A StatementTrace is a file with every statement that the service runs, for an operator who looks for a
// fault. The composition root owns it.
#pragma once

#include <fstream>
#include <functional>
#include <string>
#include <string_view>

namespace app {

class StatementTrace {
  public:
    using ErrorReport = std::function<void(std::string_view text)>;

    /// Opens the file for appending; an empty path means no trace. Raises a base::RuntimeError when the file
    /// cannot be opened.
    StatementTrace(const std::string& path, ErrorReport report);

    [[nodiscard]] bool isOn() const { return file_.is_open(); }

    /// Appends a statement as it was built. One with line breaks stands between empty lines. A file that can
    /// no longer be written to is reported once and then left alone: the service goes on without its trace.
    void write(std::string_view statement);

  private:
    std::string path_;
    ErrorReport report_;
    std::ofstream file_;
};

}  // namespace app
