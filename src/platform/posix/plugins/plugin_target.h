// A PluginTarget tells the readers that ask ahead where to ask. The PluginObject that owns them outlives it.
#pragma once

#include <cstdint>

#include "platform/plugin_protocol.h"
#include "platform/posix/plugins/plugin_process.h"

namespace platform::posix {

struct PluginTarget {
    PluginProcess& process;
    std::int64_t object;
    PluginProcess::Milliseconds limit;  // the time that an answer may take
};

/// True when the process says that it does not know such a request.
inline bool isUnknownMethod(const PluginAnswer& answer) {
    return answer.error && answer.error->code == plugin_protocol::methodNotFound;
}

}  // namespace platform::posix
