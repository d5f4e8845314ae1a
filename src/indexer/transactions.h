// How the indexer begins transactions and gives them up.
#pragma once

#include "infra/tysDataBase.h"

namespace indexer {

/// Begins a transaction. When that fails, logs "Forced to retry transaction" at the level, closes and opens
/// the database object anew and begins once more; an error then rises.
void beginTransaction(infra::tysDataBase& database, infra::LogLevel level);

/// Rolls the open transaction back; does nothing when there is none or no connection.
void rollBackQuietly(infra::tysDataBase& database);

}  // namespace indexer
