#include "platform/windows/ado_engine.h"

#include <utility>

#include "platform/windows/ado_connection.h"
#include "platform/windows/ado_recordset.h"
#include "platform/windows/ado_trace.h"

namespace platform::windows {

AdoEngine::AdoEngine() : trace_(std::make_shared<AdoTrace>()) {}

AdoEngine::~AdoEngine() = default;

std::unique_ptr<Connection> AdoEngine::open(const ConnectionSettings& settings) {
    return std::make_unique<AdoConnection>(settings, trace_);
}

std::unique_ptr<Recordset> AdoEngine::createRecordset() {
    return std::make_unique<AdoRecordset>(trace_);
}

void AdoEngine::setTrace(std::function<void(std::string_view statement)> trace) {
    trace_->sink = std::move(trace);
}

}  // namespace platform::windows
