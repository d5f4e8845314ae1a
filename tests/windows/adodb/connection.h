// The stand-in's "ADODB.Connection": it opens a library that is a SQLite file under the name of Jet's
// provider.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/database.h"
#include "windows/adodb/recorder.h"

namespace stand_in {

struct Session;

/// A named value of a connection, as its collection "Properties" gives it.
class Property : public RecordedObject {
  public:
    Property(std::shared_ptr<Session> session, std::wstring name);
};

class Properties : public RecordedObject {
  public:
    explicit Properties(std::shared_ptr<Session> session);
};

class Connection : public RecordedObject {
  public:
    Connection();
    ~Connection() override;

    /// Null when it is not open. Recordsets that hold the session notice when it closes.
    [[nodiscard]] std::shared_ptr<Session> session() const { return session_; }

  private:
    void open(com_server::Call& call);
    void execute(com_server::Call& call);
    void close();
    void transactions();

    std::shared_ptr<Session> session_;
};

/// What a connection shares with its properties and recordsets.
struct Session {
    std::wstring provider;
    std::map<std::wstring, std::wstring> properties;
    std::unique_ptr<platform::Connection> open;  // null when closed
    bool inTransaction = false;

    /// Raises ADO's error of a closed object.
    platform::Connection& requireOpen();
};

}  // namespace stand_in
