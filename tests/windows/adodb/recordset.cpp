#include "windows/adodb/recordset.h"

#include <type_traits>
#include <utility>

#include "base/runtime_error.h"
#include "platform/sqlite/sqlite_engine.h"
#include "windows/adodb/ado_errors.h"
#include "windows/adodb/connection.h"

namespace stand_in {
namespace {

using com_server::Call;

/// As Jet's provider gives it: a date as a date, a Yes/No as a boolean, a number in its own width.
void give(const base::Variant& value, VARIANT& result) {
    std::visit(
        [&result](const auto& plain) {
            using Plain = std::decay_t<decltype(plain)>;
            if constexpr (std::is_same_v<Plain, bool>) {
                V_VT(&result) = VT_BOOL;
                V_BOOL(&result) = plain ? VARIANT_TRUE : VARIANT_FALSE;
            } else if constexpr (std::is_same_v<Plain, std::int16_t>) {
                V_VT(&result) = VT_I2;
                V_I2(&result) = plain;
            } else if constexpr (std::is_same_v<Plain, std::int32_t>) {
                V_VT(&result) = VT_I4;
                V_I4(&result) = plain;
            } else if constexpr (std::is_same_v<Plain, double>) {
                V_VT(&result) = VT_R8;
                V_R8(&result) = plain;
            } else if constexpr (std::is_same_v<Plain, base::DateTime>) {
                V_VT(&result) = VT_DATE;
                V_DATE(&result) = static_cast<double>(plain.seconds()) / 86400;  // from the zero date on
            } else if constexpr (std::is_same_v<Plain, std::string>) {
                const std::wstring wide = com_server::utf16(plain);
                V_VT(&result) = VT_BSTR;
                V_BSTR(&result) = ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
            } else {
                V_VT(&result) = VT_NULL;
            }
        },
        value.value());
}

/// The session of an open connection of the stand-in's own.
std::shared_ptr<Session> sessionOf(const VARIANT& argument) {
    auto* connection = dynamic_cast<Connection*>(V_DISPATCH(&argument));
    if (connection == nullptr) {
        throw wrongArguments();
    }
    if (connection->session()->open == nullptr) {
        throw connectionClosed();
    }
    return connection->session();
}

}  // namespace

platform::Recordset& Rows::requireOpen() {
    if (open == nullptr || session->open == nullptr) {
        throw objectClosed();
    }
    return *open;
}

Field::Field(std::shared_ptr<Rows> rows, const std::wstring& name)
    : RecordedObject(L"Fields(" + name + L")") {
    readable(L"Value", {}, [rows = std::move(rows), name = com_server::utf8(name)](Call& call) {
        platform::Recordset& recordset = rows->requireOpen();
        if (recordset.eof()) {
            throw noCurrentRecord();
        }
        give(asProvider([&] { return recordset.field(name); }), *call.result);
    });
}

Fields::Fields(std::shared_ptr<Rows> rows) : RecordedObject(L"Fields") {
    readable(L"Item", {{VT_BSTR}}, [rows = std::move(rows)](Call& call) {
        platform::Recordset& recordset = rows->requireOpen();
        try {
            if (!recordset.eof()) {
                static_cast<void>(recordset.field(com_server::utf8(call.text(0))));
            }
        } catch (const base::RuntimeError&) {
            throw itemNotFound();
        }
        call.give(static_cast<IDispatch*>(new Field(rows, call.text(0))));
    });
}

Recordset::Recordset() : Recordset(nullptr, nullptr) {}

Recordset::Recordset(std::shared_ptr<Session> session, std::unique_ptr<platform::Recordset> opened)
    : RecordedObject(L"Recordset"), rows_(std::make_shared<Rows>()) {
    rows_->session = std::move(session);
    rows_->open = std::move(opened);
    method(L"Open", {{VT_BSTR}, {VT_DISPATCH}, {VT_I4, true}, {VT_I4, true}, {VT_I4, true}},
           [this](Call& call) { open(call); });
    readable(L"EOF", {}, [this](Call& call) { call.give(rows_->requireOpen().eof()); });
    readable(L"Fields", {}, [this](Call& call) { call.give(static_cast<IDispatch*>(new Fields(rows_))); });
    readable(L"State", {}, [this](Call& call) { call.give(LONG{rows_->open == nullptr ? 0 : 1}); });
    method(L"MoveNext", {}, [this](Call&) {
        platform::Recordset& recordset = rows_->requireOpen();
        if (recordset.eof()) {
            throw noCurrentRecord();
        }
        asProvider([&] { recordset.moveNext(); });
    });
    method(L"Close", {}, [this](Call&) {
        rows_->requireOpen().close();
        rows_->open.reset();
    });
}

void Recordset::open(Call& call) {
    if (rows_->open != nullptr && rows_->session->open != nullptr) {
        throw objectOpen();
    }
    const LONG cursor = call.number(2, 0);
    const LONG lock = call.number(3, 1);
    if (cursor < 0 || cursor > 3 || lock < 1 || lock > 4 || call.number(4, -1) != -1) {
        throw wrongArguments();
    }
    rows_->session = sessionOf(*call.arguments[1]);
    rows_->open = asProvider([&] {
        static platform::SqliteEngine engine;
        auto recordset = engine.createRecordset();
        recordset->open(com_server::utf8(call.text(0)), *rows_->session->open,
                        static_cast<platform::CursorType>(cursor), static_cast<platform::LockType>(lock));
        return recordset;
    });
}

}  // namespace stand_in
