#include "app/statement_trace.h"

#include <filesystem>
#include <utility>

#include "base/runtime_error.h"

namespace app {

StatementTrace::StatementTrace(const std::string& path, ErrorReport report)
    : path_(path), report_(std::move(report)) {
    if (path.empty()) {
        return;
    }
    // As UTF-8 on every system: a plain text would be in the code page of one that has such a thing.
    file_.open(std::filesystem::path(std::u8string(path.begin(), path.end())),
               std::ios::binary | std::ios::app);
    if (!file_) {
        throw base::RuntimeError(base::ErrorNumber::invalidProcedureCall,
                                 "The file for the statements cannot be written: " + path);
    }
}

void StatementTrace::write(std::string_view statement) {
    if (!file_.is_open()) {
        return;
    }
    const std::string_view edge = statement.find_first_of("\r\n") == std::string_view::npos ? "" : "\n";
    // Flushed at once: the last statement is the one that matters when the service is killed.
    file_ << edge << statement << '\n' << edge << std::flush;
    if (!file_) {
        file_.close();
        report_("The trace of statements ends here, its file cannot be written any more: " + path_);
    }
}

}  // namespace app
