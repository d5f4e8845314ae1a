#include "unit/platform/contract/database_contract.h"

#include "fakes/temporary_folder.h"
#include "platform/sqlite/library_schema.h"
#include "platform/sqlite/sqlite_engine.h"

namespace contract {
namespace {

class SqliteLibrary : public Library {
  public:
    SqliteLibrary() { platform::createLibrary(path()); }

    platform::DatabaseEngine& engine() override { return engine_; }
    [[nodiscard]] platform::ConnectionSettings settings() const override { return {path(), {}, {}, {}}; }

  private:
    [[nodiscard]] std::string path() const { return folder_ / "library.db"; }

    fakes::TemporaryFolder folder_;
    platform::SqliteEngine engine_;
};

MadeLibrary sqliteLibrary() {
    return {std::make_unique<SqliteLibrary>(), {}};
}

INSTANTIATE_TEST_SUITE_P(Sqlite, DatabaseContract, ::testing::Values(&sqliteLibrary));

}  // namespace
}  // namespace contract
