// An AdoRecordset walks over the rows of a query through an "ADODB.Recordset". Whoever opened it owns it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/database.h"
#include "platform/windows/dispatch.h"

namespace platform::windows {

struct AdoTrace;

class AdoRecordset final : public Recordset {
  public:
    /// A closed one.
    explicit AdoRecordset(std::shared_ptr<AdoTrace> trace);
    /// One that a connection has opened.
    AdoRecordset(Dispatch recordset, std::shared_ptr<AdoTrace> trace);
    ~AdoRecordset() override;

    void open(std::string_view statement, Connection& connection, CursorType cursor, LockType lock,
              int options) override;
    [[nodiscard]] bool eof() override;
    [[nodiscard]] base::Variant field(std::string_view name) override;
    void moveNext() override;
    void close() override;

  private:
    Dispatch recordset_;
    std::shared_ptr<AdoTrace> trace_;
    /// The fields that were asked for since it was opened; they follow the row that it stands on.
    std::map<std::string, Dispatch, std::less<>> fields_;
    bool isOpen_ = false;
};

}  // namespace platform::windows
