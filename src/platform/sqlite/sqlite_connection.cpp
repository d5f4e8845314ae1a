#include "platform/sqlite/sqlite_connection.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "base/checked.h"
#include "base/runtime_error.h"
#include "platform/sqlite/orphan_purge.h"
#include "platform/sqlite/sqlite_error.h"
#include "platform/sqlite/sqlite_recordset.h"

namespace platform::sqlite {
namespace {

constexpr int objectIsClosed = 3704;

[[noreturn]] void fail(const std::string& description) {
    throw base::RuntimeError(base::ErrorNumber::databaseError, description);
}

}  // namespace

SqliteConnection::SqliteConnection(std::shared_ptr<HandlePool> pool, std::unique_ptr<Handle> handle)
    : pool_(std::move(pool)), handle_(std::move(handle)) {}

SqliteConnection::~SqliteConnection() {
    release();
}

Handle& SqliteConnection::handle() {
    if (handle_ == nullptr) {
        throw base::RuntimeError(objectIsClosed, "Operation is not allowed when the connection is closed");
    }
    return *handle_;
}

void SqliteConnection::execute(std::string_view statement, int /*options*/) {
    Handle& open = handle();
    trace(statement);
    settleRecordsets();
    if (const std::int32_t id = open.newRootWords().keep(statement); id != 0) {
        identity_ = id;
        return;
    }
    ready(open, statement);
    if (isOrphanPurge(statement) && open.notesReleasedWords()) {
        purgeOrphans(open);
        return;
    }
    if (open.insertLater(statement) || executeOverWarmHandle(statement)) {
        return;
    }
    Statement prepared = open.prepare(statement, identity_, Texts::stay);
    prepared.step(statement);
    if (prepared.translation().givesAutoNumber && open.changedRows() > 0) {
        identity_ = base::narrow32(open.lastRowKey());
    }
}

/// Changes rows over the handle that was given back last, when there is one. Mostly it is the one that wrote
/// last, so that the pages it keeps are those of the library, and they stay so. Were the rows changed over
/// the connection's own handle, the next job would read all its pages anew.
bool SqliteConnection::executeOverWarmHandle(std::string_view statement) {
    if (handle_->isAtWork() || !(statement.starts_with("UPDATE ") || statement.starts_with("DELETE "))) {
        return false;
    }
    std::unique_ptr<Handle> warm = pool_->takeWarm(handle_->path());
    if (warm == nullptr) {
        return false;
    }
    if (!warm->newRootWords().areWritten()) {
        pool_->giveBack(std::move(warm));
        return false;  // what hinders them is the next job's affair
    }
    try {
        warm->prepare(statement, identity_, Texts::stay).step(statement);
    } catch (...) {
        pool_->giveBack(std::move(warm));
        throw;
    }
    pool_->giveBack(std::move(warm));
    return true;
}

/// Readies the handle for a statement, which finds the words added before it in the library.
void SqliteConnection::ready(Handle& open, std::string_view statement) {
    if (!open.isInTransaction()) {
        open.checkFile();
    }
    if (!NewRootWords::canWaitFor(statement)) {
        open.newRootWords().write();
    }
}

std::optional<std::int32_t> SqliteConnection::keyOfNewRootWord(std::string_view statement) {
    if (handle().newRootWords().answers(statement, identity_)) {
        return identity_;
    }
    return std::nullopt;
}

std::unique_ptr<Recordset> SqliteConnection::query(std::string_view statement, int options) {
    auto recordset = std::make_unique<SqliteRecordset>();
    recordset->open(statement, *this, CursorType::forwardOnly, LockType::readOnly, options);
    return recordset;
}

Statement SqliteConnection::prepareQuery(std::string_view statement) {
    Handle& open = handle();
    ready(open, statement);
    Statement prepared = open.prepare(statement, identity_, Texts::vanish);
    if (!prepared.isQuery()) {
        fail("The statement gives no rows, so that no recordset can be opened on it: " +
             shortened(statement));
    }
    return prepared;
}

void SqliteConnection::beginTrans() {
    Handle& open = handle();
    trace("BEGIN TRANSACTION");
    if (open.isInTransaction()) {
        fail("A transaction is already open on this connection; commit it or roll it back first");
    }
    settleRecordsets();
    open.checkFile();
    // What SQLite rolled back by itself is still to be written.
    open.newRootWords().rolledBack();
    // The write lock at once: a transaction that read first could meet rows that another connection has
    // changed since, and would then fail in its middle.
    runControl("BEGIN IMMEDIATE");
    try {
        open.newRootWords().write();
    } catch (...) {
        open.rollBackQuietly();
        open.newRootWords().rolledBack();
        throw;
    }
}

void SqliteConnection::commitTrans() {
    Handle& open = endTransaction("COMMIT TRANSACTION");
    runControl("COMMIT");
    open.newRootWords().committed();
}

void SqliteConnection::rollbackTrans() {
    Handle& open = endTransaction("ROLLBACK TRANSACTION");
    open.rollBack();
    open.newRootWords().rolledBack();
}

/// The handle that has the transaction.
Handle& SqliteConnection::endTransaction(std::string_view traced) {
    Handle& open = handle();
    trace(traced);
    if (!open.isInTransaction()) {
        fail("No transaction is open on this connection");
    }
    settleRecordsets();
    return open;
}

void SqliteConnection::runControl(std::string_view statement) {
    handle().prepare(statement, 0, Texts::stay).step(statement);
}

void SqliteConnection::close() {
    static_cast<void>(handle());
    release();
}

void SqliteConnection::release() noexcept {
    if (handle_ == nullptr) {
        return;
    }
    for (SqliteRecordset* recordset : std::exchange(recordsets_, {})) {
        recordset->connectionClosed();
    }
    try {
        if (handle_->isInTransaction()) {
            trace("ROLLBACK TRANSACTION");
            handle_->rollBack();
            handle_->newRootWords().rolledBack();
        }
        writeNewRootWords();
        pool_->giveBack(std::move(handle_));
    } catch (const std::exception&) {
        handle_.reset();  // closing the file rolls back as well
    }
}

/// Words that cannot be written now stay with the handle, and the next connection that has it writes them.
void SqliteConnection::writeNewRootWords() noexcept {
    try {
        if (!handle_->newRootWords().areWritten()) {
            ready(*handle_, {});
        }
    } catch (const std::exception&) {
        return;
    }
}

void SqliteConnection::attach(SqliteRecordset& recordset) {
    recordsets_.push_back(&recordset);
}

void SqliteConnection::detach(SqliteRecordset& recordset) noexcept {
    std::erase(recordsets_, &recordset);
}

void SqliteConnection::settleRecordsets() {
    for (SqliteRecordset* recordset : recordsets_) {
        recordset->settle();
    }
}

}  // namespace platform::sqlite
