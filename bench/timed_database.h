// A database engine that passes every call on and tells how long each kind of statement took. The stages
// program owns it; the engine behind it must outlive it.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "bench/stopwatch.h"
#include "platform/database.h"

namespace bench {

/// The time of the database, split by what was asked of it.
class DatabaseStages {
  public:
    /// The stage of the statements that begin like this one.
    Stage& of(std::string_view statement);

    /// Calls `take` with a short name of each kind of statement and its stage.
    void forEachKind(const std::function<void(const std::string& name, const Stage& stage)>& take) const;

    Stage openAndClose;  // of connections
    Stage begin;
    Stage commit;

  private:
    /// Statements with as many first characters in common are of one kind.
    static constexpr std::size_t kindLength = 24;

    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    struct Kind {
        std::string example;
        Stage stage;
    };
    std::unordered_map<std::string, Kind, Hash, std::equal_to<>> kinds_;
};

class TimedEngine : public platform::DatabaseEngine {
  public:
    TimedEngine(platform::DatabaseEngine& engine, DatabaseStages& stages)
        : engine_(engine), stages_(stages) {}
    std::unique_ptr<platform::Connection> open(const platform::ConnectionSettings& settings) override;
    std::unique_ptr<platform::Recordset> createRecordset() override;

  private:
    platform::DatabaseEngine& engine_;
    DatabaseStages& stages_;
};

}  // namespace bench
