#include "windows/adodb/connection.h"

#include <utility>

#include "platform/sqlite/sqlite_engine.h"
#include "windows/adodb/ado_errors.h"
#include "windows/adodb/recordset.h"

namespace stand_in {
namespace {

using com_server::Call;

constexpr const wchar_t* jet = L"Microsoft.Jet.OLEDB.4.0";
constexpr long ownOptions = -1;

platform::SqliteEngine& engine() {
    static platform::SqliteEngine shared;
    return shared;
}

}  // namespace

platform::Connection& Session::requireOpen() {
    if (open == nullptr) {
        throw objectClosed();
    }
    return *open;
}

Property::Property(std::shared_ptr<Session> session, std::wstring name) : RecordedObject(L"Property") {
    readable(L"Value", {}, [session, name](Call& call) { call.give(session->properties.at(name)); });
    writable(L"Value", VT_BSTR, [session, name](Call& call) {
        if (session->open != nullptr) {
            throw objectOpen();
        }
        session->properties[name] = call.text(0);
    });
}

Properties::Properties(std::shared_ptr<Session> session) : RecordedObject(L"Properties") {
    readable(L"Item", {{VT_BSTR}}, [session = std::move(session)](Call& call) {
        if (!session->properties.contains(call.text(0))) {
            throw itemNotFound();
        }
        call.give(static_cast<IDispatch*>(new Property(session, call.text(0))));
    });
}

Connection::Connection() : RecordedObject(L"Connection"), session_(std::make_shared<Session>()) {
    readable(L"Provider", {}, [this](Call& call) { call.give(session_->provider); });
    writable(L"Provider", VT_BSTR, [this](Call& call) {
        if (session_->open != nullptr) {
            throw objectOpen();
        }
        if (call.text(0) != jet) {
            throw providerNotFound();
        }
        session_->provider = call.text(0);
        // The provider brings its properties along.
        session_->properties = {{L"Data Source", L""}, {L"Jet OLEDB:System database", L""}};
    });
    readable(L"Properties", {},
             [this](Call& call) { call.give(static_cast<IDispatch*>(new Properties(session_))); });
    readable(L"State", {}, [this](Call& call) { call.give(LONG{session_->open == nullptr ? 0 : 1}); });
    method(L"Open", {{VT_BSTR, true}, {VT_BSTR, true}, {VT_BSTR, true}, {VT_I4, true}},
           [this](Call& call) { open(call); });
    method(L"Execute", {{VT_BSTR}, {VT_BYREF | VT_VARIANT, true}, {VT_I4, true}},
           [this](Call& call) { execute(call); });
    method(L"Close", {}, [this](Call&) { close(); });
    transactions();
}

Connection::~Connection() {
    session_->open.reset();
}

void Connection::open(Call& call) {
    if (session_->open != nullptr) {
        throw objectOpen();
    }
    if (session_->provider.empty()) {
        throw providerNotFound();
    }
    if (!call.text(0).empty() || call.number(3, ownOptions) != ownOptions) {
        throw wrongArguments();
    }
    session_->open = asProvider([this] {
        platform::ConnectionSettings settings;
        settings.dataSource = com_server::utf8(session_->properties.at(L"Data Source"));
        return engine().open(settings);
    });
}

void Connection::execute(Call& call) {
    platform::Connection& connection = session_->requireOpen();
    const std::string statement = com_server::utf8(call.text(0));
    const bool isQuery = ::_strnicmp(statement.c_str(), "SELECT", 6) == 0;
    auto rows = asProvider([&]() -> std::unique_ptr<platform::Recordset> {
        if (isQuery) {
            return connection.query(statement);
        }
        connection.execute(statement);
        return nullptr;
    });
    if (call.result != nullptr) {
        call.give(static_cast<IDispatch*>(new Recordset(session_, std::move(rows))));
    }
}

void Connection::close() {
    session_->requireOpen();
    if (session_->inTransaction) {
        throw inTransaction();
    }
    session_->open->close();
    session_->open.reset();
}

void Connection::transactions() {
    method(L"BeginTrans", {}, [this](Call& call) {
        asProvider([this] { session_->requireOpen().beginTrans(); });
        session_->inTransaction = true;
        call.give(LONG{1});
    });
    const auto end = [this](const wchar_t* name, void (platform::Connection::*work)()) {
        method(name, {}, [this, work](Call&) {
            platform::Connection& connection = session_->requireOpen();
            if (!session_->inTransaction) {
                throw noTransaction();
            }
            asProvider([&] { (connection.*work)(); });
            session_->inTransaction = false;
        });
    };
    end(L"CommitTrans", &platform::Connection::commitTrans);
    end(L"RollbackTrans", &platform::Connection::rollbackTrans);
}

}  // namespace stand_in
