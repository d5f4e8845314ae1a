// The AdoEngine opens libraries that are Jet files, through ADO's automation objects "ADODB.Connection" and
// "ADODB.Recordset" with the provider "Microsoft.Jet.OLEDB.4.0". The composition root owns it, together with
// the ComApartment that it needs on its thread; its connections may outlive the engine, not the apartment.
//
// Jet is the one engine that speaks the dialect of the service's statements: their texts reach the provider
// unchanged. The provider exists for 32-bit programs only.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "platform/database.h"

namespace platform::windows {

struct AdoTrace;

class AdoEngine : public DatabaseEngine {
  public:
    AdoEngine();
    ~AdoEngine() override;

    std::unique_ptr<Connection> open(const ConnectionSettings& settings) override;
    std::unique_ptr<Recordset> createRecordset() override;

    /// Called with every statement before it runs, and with BEGIN, COMMIT and ROLLBACK TRANSACTION. An empty
    /// function ends it.
    void setTrace(std::function<void(std::string_view statement)> trace);

  private:
    std::shared_ptr<AdoTrace> trace_;
};

}  // namespace platform::windows
