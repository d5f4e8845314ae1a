#include "infra/Services.h"

namespace infra {

// The registry comes before the log that it reports to: the log reads its own settings through it. Nothing is
// written before both stand.
Services::Services(const platform::System& parts)
    : system(parts),
      registry(parts.settings, parts.files,
               [this](const std::string& message, LogLevel level) { support.WriteLog(message, level); }),
      support(registry, parts.files, parts.clock, parts.drives) {}

}  // namespace infra
