#include "platform/windows/ado_connection.h"

#include <array>
#include <cstdint>
#include <exception>
#include <span>
#include <string>
#include <utility>

#include "base/runtime_error.h"
#include "platform/windows/ado_recordset.h"
#include "platform/windows/ado_trace.h"

namespace platform::windows {
namespace {

/// OLE DB's code for a second transaction on a session that holds one.
constexpr int transactionExists = static_cast<int>(0x8004D013U);

/// The arguments of Execute.
class Command {
  public:
    Command(std::string_view statement, int options)
        : text_(std::string(statement)), options_(static_cast<std::int32_t>(options)) {}

    [[nodiscard]] std::span<const Argument> arguments() const { return arguments_; }

  private:
    const base::Variant text_;
    const base::Variant options_;
    std::array<Argument, 3> arguments_ = {&text_, Missing{}, &options_};  // no count of affected records
};

}  // namespace

AdoConnection::AdoConnection(const ConnectionSettings& settings, std::shared_ptr<AdoTrace> trace)
    : connection_(Dispatch::create("ADODB.Connection")), trace_(std::move(trace)) {
    // The provider comes first: it is what makes the two properties known.
    connection_.put("Provider", "Microsoft.Jet.OLEDB.4.0");
    setProperty("Data Source", settings.dataSource);
    setProperty("Jet OLEDB:System database", settings.systemDatabase);
    const base::Variant connectionString("");
    const base::Variant user(settings.user);
    const base::Variant password(settings.password);
    const base::Variant options(static_cast<std::int32_t>(unspecifiedOptions));
    const std::array<Argument, 4> arguments = {&connectionString, &user, &password, &options};
    connection_.call("Open", arguments);
    isOpen_ = true;
}

AdoConnection::~AdoConnection() {
    if (isOpen_) {
        try {
            close();
        } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): a destructor has nobody to tell
        }
    }
}

void AdoConnection::execute(std::string_view statement, int options) {
    trace_->tell(statement);
    connection_.call("Execute", Command(statement, options).arguments());
}

std::unique_ptr<Recordset> AdoConnection::query(std::string_view statement, int options) {
    trace_->tell(statement);
    return std::make_unique<AdoRecordset>(
        connection_.callForObject("Execute", Command(statement, options).arguments()), trace_);
}

void AdoConnection::beginTrans() {
    // Jet would nest them. The service's transactions never do, on any engine.
    if (inTransaction_) {
        throw base::RuntimeError(transactionExists, "A transaction is already open on this connection");
    }
    trace_->tell("BEGIN TRANSACTION");
    connection_.call("BeginTrans");
    inTransaction_ = true;
}

void AdoConnection::commitTrans() {
    trace_->tell("COMMIT TRANSACTION");
    connection_.call("CommitTrans");
    inTransaction_ = false;
}

void AdoConnection::rollbackTrans() {
    trace_->tell("ROLLBACK TRANSACTION");
    connection_.call("RollbackTrans");
    inTransaction_ = false;
}

void AdoConnection::close() {
    isOpen_ = false;
    std::exception_ptr failure;
    if (std::exchange(inTransaction_, false)) {
        try {
            rollbackTrans();  // ADO refuses to close a connection with an open transaction
        } catch (...) {
            failure = std::current_exception();  // the library must not stay open for it
        }
    }
    try {
        connection_.call("Close");
    } catch (...) {
        if (!failure) {
            throw;
        }
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void AdoConnection::setProperty(const char* name, const std::string& value) {
    const base::Variant property(name);
    const Argument argument = &property;
    connection_.getObject("Properties").getObject("Item", {&argument, 1}).put("Value", value);
}

}  // namespace platform::windows
