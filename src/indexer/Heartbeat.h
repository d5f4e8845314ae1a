// The heartbeat tells a supervisor that the service lives and what it works on.
#pragma once

#include <cstdint>
#include <string>

#include "infra/Services.h"

namespace indexer {

/// Sets the last sign of life to now and the seconds within which the next one is due.
void writeHeartbeat(infra::Services& services, std::int32_t seconds);

/// Names the queue entry and the document in work; 0 and an empty text mean that there is none.
void writeJobInWork(infra::Services& services, std::int32_t queueId, const std::string& documentKey);

}  // namespace indexer
