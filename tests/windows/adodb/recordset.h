// The stand-in's "ADODB.Recordset", with its fields.
#pragma once

#include <memory>
#include <string>

#include "platform/database.h"
#include "windows/adodb/recorder.h"

namespace stand_in {

struct Session;

/// The rows of an open recordset; null members when it is closed.
struct Rows {
    std::shared_ptr<Session> session;
    std::unique_ptr<platform::Recordset> open;

    /// Raises ADO's error of a closed object, also when the connection was closed meanwhile.
    platform::Recordset& requireOpen();
};

class Field : public RecordedObject {
  public:
    Field(std::shared_ptr<Rows> rows, const std::wstring& name);
};

class Fields : public RecordedObject {
  public:
    explicit Fields(std::shared_ptr<Rows> rows);
};

class Recordset : public RecordedObject {
  public:
    /// A closed one.
    Recordset();
    /// One that a connection has opened; without rows it is closed.
    Recordset(std::shared_ptr<Session> session, std::unique_ptr<platform::Recordset> open);

  private:
    void open(com_server::Call& call);

    std::shared_ptr<Rows> rows_;
};

}  // namespace stand_in
