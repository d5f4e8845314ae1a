// The real database engine with an ear: it writes down what the service asks of it, and can fail to close.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/runtime_error.h"
#include "platform/database.h"

struct DatabaseRecord {
    std::vector<std::string> statements;  // queries with cursor and lock type in front
    int connectionsOpened = 0;
    int connectionsClosed = 0;
    bool closeFails = false;
};

class RecordingConnection : public platform::Connection {
  public:
    RecordingConnection(std::unique_ptr<platform::Connection> inner, DatabaseRecord& record)
        : inner_(std::move(inner)), record_(record) {}

    void execute(std::string_view statement, int options) override {
        record_.statements.emplace_back(statement);
        inner_->execute(statement, options);
    }
    std::unique_ptr<platform::Recordset> query(std::string_view statement, int options) override {
        record_.statements.emplace_back(statement);
        return inner_->query(statement, options);
    }
    void beginTrans() override { inner_->beginTrans(); }
    void commitTrans() override { inner_->commitTrans(); }
    void rollbackTrans() override { inner_->rollbackTrans(); }
    void close() override {
        if (record_.closeFails) {
            throw base::RuntimeError(base::ErrorNumber::databaseError, "the connection is broken");
        }
        inner_->close();
        ++record_.connectionsClosed;
    }
    [[nodiscard]] platform::Connection& inner() const { return *inner_; }

  private:
    std::unique_ptr<platform::Connection> inner_;
    DatabaseRecord& record_;
};

class RecordingRecordset : public platform::Recordset {
  public:
    RecordingRecordset(std::unique_ptr<platform::Recordset> inner, DatabaseRecord& record)
        : inner_(std::move(inner)), record_(record) {}

    void open(std::string_view statement, platform::Connection& connection, platform::CursorType cursor,
              platform::LockType lock, int options) override {
        record_.statements.push_back(std::to_string(static_cast<int>(cursor)) + " " +
                                     std::to_string(static_cast<int>(lock)) + " " + std::to_string(options) +
                                     ": " + std::string(statement));
        inner_->open(statement, dynamic_cast<RecordingConnection&>(connection).inner(), cursor, lock,
                     options);
    }
    [[nodiscard]] bool eof() override { return inner_->eof(); }
    [[nodiscard]] base::Variant field(std::string_view name) override { return inner_->field(name); }
    void moveNext() override { inner_->moveNext(); }
    void close() override {
        inner_->close();
        record_.statements.emplace_back("close");
    }

  private:
    std::unique_ptr<platform::Recordset> inner_;
    DatabaseRecord& record_;
};

class RecordingEngine : public platform::DatabaseEngine {
  public:
    explicit RecordingEngine(platform::DatabaseEngine& inner) : inner_(inner) {}

    std::unique_ptr<platform::Connection> open(const platform::ConnectionSettings& settings) override {
        auto connection = std::make_unique<RecordingConnection>(inner_.open(settings), record);
        ++record.connectionsOpened;
        return connection;
    }
    std::unique_ptr<platform::Recordset> createRecordset() override {
        return std::make_unique<RecordingRecordset>(inner_.createRecordset(), record);
    }

    DatabaseRecord record;

  private:
    platform::DatabaseEngine& inner_;
};
