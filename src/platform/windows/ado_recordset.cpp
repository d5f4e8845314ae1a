#include "platform/windows/ado_recordset.h"

#include <array>
#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "base/runtime_error.h"
#include "platform/windows/ado_connection.h"
#include "platform/windows/ado_trace.h"

namespace platform::windows {

AdoRecordset::AdoRecordset(std::shared_ptr<AdoTrace> trace)
    : recordset_(Dispatch::create("ADODB.Recordset")), trace_(std::move(trace)) {}

AdoRecordset::AdoRecordset(Dispatch recordset, std::shared_ptr<AdoTrace> trace)
    : recordset_(std::move(recordset)), trace_(std::move(trace)), isOpen_(true) {}

AdoRecordset::~AdoRecordset() {
    if (isOpen_) {
        try {
            close();
        } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): a destructor has nobody to tell
        }
    }
}

void AdoRecordset::open(std::string_view statement, Connection& connection, CursorType cursor, LockType lock,
                        int options) {
    const auto* ado = dynamic_cast<const AdoConnection*>(&connection);
    if (ado == nullptr) {
        throw base::RuntimeError(base::ErrorNumber::invalidProcedureCall,
                                 "A recordset of ADO opens on connections of ADO only");
    }
    trace_->tell(statement);
    const base::Variant text{std::string(statement)};
    const base::Variant cursorType(static_cast<std::int32_t>(cursor));
    const base::Variant lockType(static_cast<std::int32_t>(lock));
    const base::Variant option(static_cast<std::int32_t>(options));
    const std::array<Argument, 5> arguments = {&text, &ado->object(), &cursorType, &lockType, &option};
    recordset_.call("Open", arguments);
    fields_.clear();  // a closed connection has closed the recordset without a word
    isOpen_ = true;
}

bool AdoRecordset::eof() {
    return recordset_.get("EOF").toBool();
}

base::Variant AdoRecordset::field(std::string_view name) {
    auto found = fields_.find(name);
    if (found == fields_.end()) {
        const base::Variant key{std::string(name)};
        const Argument argument = &key;
        Dispatch field = recordset_.getObject("Fields").getObject("Item", {&argument, 1});
        found = fields_.emplace(name, std::move(field)).first;
    }
    return found->second.get("Value");
}

void AdoRecordset::moveNext() {
    recordset_.call("MoveNext");
}

void AdoRecordset::close() {
    fields_.clear();
    isOpen_ = false;
    recordset_.call("Close");
}

}  // namespace platform::windows
