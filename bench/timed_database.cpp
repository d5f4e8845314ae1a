#include "bench/timed_database.h"

#include <algorithm>
#include <map>
#include <utility>

namespace bench {
namespace {

using platform::Connection;
using platform::CursorType;
using platform::LockType;
using platform::Recordset;

std::string_view nextWord(std::string_view& text) {
    const std::size_t start = std::min(text.find_first_not_of(" ("), text.size());
    const std::size_t end = std::min(text.find_first_of(" (", start), text.size());
    const std::string_view word = text.substr(start, end - start);
    text.remove_prefix(end);
    return word;
}

/// The verb and the table of a statement.
std::string shortName(std::string_view statement) {
    std::string name(nextWord(statement));
    std::string_view word = nextWord(statement);
    if (word == "@@IDENTITY") {
        return name + " @@IDENTITY";
    }
    while (!word.empty()) {
        const bool namesTable = word == "INTO" || word == "into" || word == "FROM" || name == "UPDATE";
        if (namesTable) {
            return name + " " + std::string(name == "UPDATE" ? word : nextWord(statement));
        }
        word = nextWord(statement);
    }
    return name;
}

class TimedConnection : public Connection {
  public:
    TimedConnection(std::unique_ptr<Connection> connection, DatabaseStages& stages)
        : connection_(std::move(connection)), stages_(stages) {}
    TimedConnection(const TimedConnection&) = delete;
    TimedConnection& operator=(const TimedConnection&) = delete;
    ~TimedConnection() override {
        const Timing timing(stages_.openAndClose);
        connection_.reset();
    }

    void execute(std::string_view statement, int options) override {
        Stage& stage = stages_.of(statement);
        const Timing timing(stage);
        connection_->execute(statement, options);
    }
    std::unique_ptr<Recordset> query(std::string_view statement, int options) override;
    void beginTrans() override {
        const Timing timing(stages_.begin);
        connection_->beginTrans();
    }
    void commitTrans() override {
        const Timing timing(stages_.commit);
        connection_->commitTrans();
    }
    void rollbackTrans() override {
        const Timing timing(stages_.commit);
        connection_->rollbackTrans();
    }
    void close() override {
        const Timing timing(stages_.openAndClose);
        connection_->close();
    }

    [[nodiscard]] Connection& inner() { return *connection_; }

  private:
    std::unique_ptr<Connection> connection_;
    DatabaseStages& stages_;
};

/// All that is done with a query's rows counts as that query's time, and as one call.
class TimedRecordset : public Recordset {
    // Stands first because what it gives has to be known below.
    /// The open has been counted; what follows only adds time.
    template <class Call>
    auto timed(const Call& call) {
        Stage& stage = stage_ == nullptr ? unused_ : *stage_;
        --stage.calls;
        const Timing timing(stage);
        return call();
    }

  public:
    TimedRecordset(std::unique_ptr<Recordset> recordset, DatabaseStages& stages)
        : recordset_(std::move(recordset)), stages_(stages) {}
    TimedRecordset(std::unique_ptr<Recordset> recordset, DatabaseStages& stages, Stage& stage)
        : recordset_(std::move(recordset)), stages_(stages), stage_(&stage) {}
    TimedRecordset(const TimedRecordset&) = delete;
    TimedRecordset& operator=(const TimedRecordset&) = delete;
    ~TimedRecordset() override {
        timed([&] { recordset_.reset(); });
    }

    void open(std::string_view statement, Connection& connection, CursorType cursor, LockType lock,
              int options) override {
        stage_ = &stages_.of(statement);
        const Timing timing(*stage_);
        recordset_->open(statement, dynamic_cast<TimedConnection&>(connection).inner(), cursor, lock,
                         options);
    }
    [[nodiscard]] bool eof() override { return recordset_->eof(); }
    [[nodiscard]] base::Variant field(std::string_view name) override {
        return timed([&] { return recordset_->field(name); });
    }
    void moveNext() override {
        timed([&] { recordset_->moveNext(); });
    }
    void close() override {
        timed([&] { recordset_->close(); });
    }

  private:
    std::unique_ptr<Recordset> recordset_;
    DatabaseStages& stages_;
    Stage* stage_ = nullptr;
    Stage unused_;  // of a recordset that was never opened
};

std::unique_ptr<Recordset> TimedConnection::query(std::string_view statement, int options) {
    Stage& stage = stages_.of(statement);
    const Timing timing(stage);
    return std::make_unique<TimedRecordset>(connection_->query(statement, options), stages_, stage);
}

}  // namespace

Stage& DatabaseStages::of(std::string_view statement) {
    const std::string_view beginning = statement.substr(0, kindLength);
    const auto known = kinds_.find(beginning);
    if (known != kinds_.end()) {
        return known->second.stage;
    }
    return kinds_.emplace(beginning, Kind{std::string(statement), {}}).first->second.stage;
}

void DatabaseStages::forEachKind(
    const std::function<void(const std::string& name, const Stage& stage)>& take) const {
    std::map<std::string, Stage> named;
    for (const auto& [beginning, kind] : kinds_) {
        Stage& stage = named[shortName(kind.example)];
        stage.calls += kind.stage.calls;
        stage.time += kind.stage.time;
        stage.longest = std::max(stage.longest, kind.stage.longest);
    }
    for (const auto& [name, stage] : named) {
        take(name, stage);
    }
}

std::unique_ptr<Connection> TimedEngine::open(const platform::ConnectionSettings& settings) {
    const Timing timing(stages_.openAndClose);
    return std::make_unique<TimedConnection>(engine_.open(settings), stages_);
}

std::unique_ptr<Recordset> TimedEngine::createRecordset() {
    return std::make_unique<TimedRecordset>(engine_.createRecordset(), stages_);
}

}  // namespace bench
