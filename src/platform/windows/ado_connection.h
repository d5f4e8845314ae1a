// An AdoConnection is an open "ADODB.Connection". Whoever opened it owns it.
#pragma once

#include <memory>
#include <string_view>

#include "platform/database.h"
#include "platform/windows/dispatch.h"

namespace platform::windows {

struct AdoTrace;

class AdoConnection final : public Connection {
  public:
    /// Raises a RuntimeError with the provider's description when the library cannot be opened.
    AdoConnection(const ConnectionSettings& settings, std::shared_ptr<AdoTrace> trace);
    ~AdoConnection() override;

    void execute(std::string_view statement, int options) override;
    std::unique_ptr<Recordset> query(std::string_view statement, int options) override;
    void beginTrans() override;
    void commitTrans() override;
    void rollbackTrans() override;
    void close() override;

    /// For recordsets that are opened on it.
    [[nodiscard]] const Dispatch& object() const { return connection_; }

  private:
    void setProperty(const char* name, const std::string& value);

    Dispatch connection_;
    std::shared_ptr<AdoTrace> trace_;
    bool inTransaction_ = false;
    bool isOpen_ = false;
};

}  // namespace platform::windows
