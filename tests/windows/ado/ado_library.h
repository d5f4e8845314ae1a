// Libraries that are opened through ADO: on the stand-in where it is registered (under Wine), on Jet's own
// provider where a machine has it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fakes/temporary_folder.h"
#include "platform/windows/ado_engine.h"
#include "platform/windows/com_automation.h"
#include "unit/platform/contract/contract_library.h"

namespace ado_tests {

/// Whether "ADODB.Connection" is the suite's own.
bool isStandInRegistered();

/// One line of the stand-in's record: the member and its arguments.
using Use = std::vector<std::string>;

/// What is asked of the stand-in while this lives, written to a file.
class AdoRecord {
  public:
    explicit AdoRecord(std::string file);
    AdoRecord(const AdoRecord&) = delete;
    AdoRecord& operator=(const AdoRecord&) = delete;
    ~AdoRecord();

    /// What was recorded since the last call.
    std::vector<Use> take();

  private:
    std::string file_;
    std::size_t taken_ = 0;
};

/// A library on disk behind the stand-in, with what was asked of it.
class StandInLibrary : public contract::Library {
  public:
    StandInLibrary();

    platform::DatabaseEngine& engine() override { return engine_; }
    [[nodiscard]] platform::ConnectionSettings settings() const override;
    [[nodiscard]] std::string path() const { return folder_ / "library.db"; }

    /// What was recorded since the last call.
    std::vector<Use> takeRecord() { return record_.take(); }

  private:
    platform::windows::ComApartment apartment_;
    fakes::TemporaryFolder folder_;
    AdoRecord record_{folder_ / "ado.record"};
    platform::windows::AdoEngine engine_;
};

contract::MadeLibrary standInLibrary();

/// A new .mdb, made by Jet itself with the library's tables.
contract::MadeLibrary jetLibrary();

/// The statements that make the library's tables with their first rows, in Jet's words.
std::vector<std::string> jetSchema();

/// The recorded statements as the engines' trace tells them: texts, and BEGIN, COMMIT and ROLLBACK
/// TRANSACTION.
std::vector<std::string> statementsOf(const std::vector<Use>& record);

}  // namespace ado_tests
