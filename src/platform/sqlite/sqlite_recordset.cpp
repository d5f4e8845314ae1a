#include "platform/sqlite/sqlite_recordset.h"

#include <utility>

#include "base/runtime_error.h"
#include "base/text.h"
#include "platform/sqlite/sqlite_connection.h"

namespace platform::sqlite {
namespace {

// ADO's numbers.
constexpr int objectIsClosed = 3704;
constexpr int objectIsOpen = 3705;
constexpr int itemNotFound = 3265;

const auto rootWordKey =
    std::make_shared<const ResultColumns>(ResultColumns{{"id_root_word"}, {jet::ColumnType::unknown}});

}  // namespace

SqliteRecordset::~SqliteRecordset() {
    clear();
}

void SqliteRecordset::open(std::string_view statement, Connection& connection, CursorType cursor,
                           LockType /*lock*/, int /*options*/) {
    if (connection_ != nullptr) {
        throw base::RuntimeError(objectIsOpen, "Operation is not allowed when the recordset is open");
    }
    auto* opened = dynamic_cast<SqliteConnection*>(&connection);
    if (opened == nullptr) {
        throw base::RuntimeError(base::ErrorNumber::invalidProcedureCall,
                                 "A recordset can be opened on a connection of its own engine only");
    }
    opened->trace(statement);
    connection_ = opened;
    connection_->attach(*this);
    try {
        if (const auto key = connection_->keyOfNewRootWord(statement)) {
            columns_ = rootWordKey;
            row_.assign(1, *key);
            eof_ = false;
            return;
        }
        statement_ = statement;
        live_ = connection_->prepareQuery(statement_);
        columns_ = nullptr;
        if (cursor == CursorType::forwardOnly && !live_->translation().readsIdentity) {
            runForward();
        } else {
            runFixed();
        }
    } catch (...) {
        clear();
        throw;
    }
}

void SqliteRecordset::runFixed() {
    takeLiveRow();
    settle();
}

/// Stands on the first row and has nothing open: other connections may write and tidy up meanwhile.
void SqliteRecordset::runForward() {
    takeLiveRow();
    live_.reset();
    mustRunAgain_ = !eof_;
}

void SqliteRecordset::runAgain() {
    mustRunAgain_ = false;
    const Row delivered = std::move(row_);
    eof_ = true;  // until there is a row again: an error leaves no half of one behind
    live_ = connection_->prepareQuery(statement_);
    takeLiveRow();
    if (!eof_ && row_ == delivered) {
        takeLiveRow();
    }
}

void SqliteRecordset::takeLiveRow() {
    eof_ = !live_->step(statement_);
    if (eof_) {
        live_.reset();
        return;
    }
    columns_ = live_->columns();
    live_->readRow(*columns_, row_);
}

void SqliteRecordset::settle() {
    if (!live_) {
        return;
    }
    rows_.clear();
    next_ = 0;
    while (live_->step(statement_)) {
        live_->readRow(*columns_, rows_.emplace_back());
    }
    live_.reset();
}

bool SqliteRecordset::eof() {
    requireOpen();
    return eof_;
}

base::Variant SqliteRecordset::field(std::string_view name) {
    requireOpen();
    requireRow();
    return row_[positionOf(name)];
}

std::size_t SqliteRecordset::positionOf(std::string_view name) const {
    for (std::size_t i = 0; i < columns_->names.size(); ++i) {
        if (base::equalsIgnoringCase(columns_->names[i], name)) {
            return i;
        }
    }
    throw base::RuntimeError(
        itemNotFound,
        "Item cannot be found in the collection corresponding to the requested name or ordinal: " +
            std::string(name));
}

void SqliteRecordset::moveNext() {
    requireOpen();
    requireRow();
    if (mustRunAgain_) {
        runAgain();
    } else if (live_) {
        takeLiveRow();
    } else if (next_ < rows_.size()) {
        row_ = std::move(rows_[next_++]);
    } else {
        eof_ = true;
        rows_.clear();
        next_ = 0;
    }
}

void SqliteRecordset::forEachRow(std::span<const std::string_view> names, const RowVisitor& visit) {
    std::vector<std::size_t> positions;
    std::vector<base::Variant> fields(names.size());
    const ResultColumns* found = nullptr;
    for (; !eof(); moveNext()) {
        // The columns are those of the row before, unless another program has changed the table meanwhile.
        if (columns_.get() != found) {
            found = columns_.get();
            positions.clear();
            for (const std::string_view name : names) {
                positions.push_back(positionOf(name));
            }
        }
        for (std::size_t i = 0; i < positions.size(); ++i) {
            std::swap(fields[i], row_[positions[i]]);
        }
        visit(fields);
        for (std::size_t i = 0; i < positions.size(); ++i) {
            std::swap(fields[i], row_[positions[i]]);
        }
    }
}

void SqliteRecordset::close() {
    requireOpen();
    clear();
}

void SqliteRecordset::connectionClosed() noexcept {
    connection_ = nullptr;
    clear();
}

void SqliteRecordset::clear() noexcept {
    live_.reset();
    if (connection_ != nullptr) {
        std::exchange(connection_, nullptr)->detach(*this);
    }
    mustRunAgain_ = false;
    eof_ = true;
    rows_.clear();
    next_ = 0;
}

void SqliteRecordset::requireOpen() const {
    if (connection_ == nullptr) {
        throw base::RuntimeError(objectIsClosed, "Operation is not allowed when the recordset is closed");
    }
}

void SqliteRecordset::requireRow() const {
    if (eof_) {
        throw base::RuntimeError(base::ErrorNumber::noCurrentRecord,
                                 "No current record: the recordset is behind its last row");
    }
}

}  // namespace platform::sqlite
