#include "indexer/transactions.h"

#include <exception>

namespace indexer {

void beginTransaction(infra::tysDataBase& database, infra::LogLevel level) {
    try {
        database.getConnection()->beginTrans();
        return;
    } catch (const std::exception&) {
        database.services().support.WriteLog("Forced to retry transaction", level);
    }
    database.finalise();
    database.initialise();
    database.getConnection()->beginTrans();
}

void rollBackQuietly(infra::tysDataBase& database) {
    try {
        database.getConnection()->rollbackTrans();
    } catch (const std::exception&) {
        // None was open: the error that led here came before the begin, or the connection is gone and its
        // transaction with it.
        return;
    }
}

}  // namespace indexer
