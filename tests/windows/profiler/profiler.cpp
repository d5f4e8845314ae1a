#include "windows/profiler/profiler.h"

namespace stand_in {
namespace {

using com_server::Call;
using com_server::ServerError;

constexpr HRESULT brokenCode = static_cast<HRESULT>(0x800A01F4);
constexpr double step = 25;  // tenths of a millisecond

/// What all profilers of the process share. Servers are called on one thread.
struct Ledger {
    std::wstring record;
    int profilers = 0;
    int stops = 0;
    bool isBroken = false;
};

Ledger& ledger() {
    static Ledger shared;
    return shared;
}

}  // namespace

Profiler::Profiler() : number_(++ledger().profilers) {
    method(L"ProfileStart", {}, [this](Call&) { note(L"ProfileStart"); });
    method(L"ProfileStop", {}, [this](Call& call) {
        note(L"ProfileStop");
        const double time = stop();
        if (call.result != nullptr) {
            V_VT(call.result) = VT_R8;
            V_R8(call.result) = time;
        }
    });
    readable(L"Record", {}, [](Call& call) { call.give(ledger().record); });
    method(L"Forget", {}, [](Call&) { ledger() = {}; });
    method(L"Break", {}, [](Call&) { ledger().isBroken = true; });
}

void Profiler::note(const wchar_t* method) const {
    std::wstring& record = ledger().record;
    record += (record.empty() ? L"" : L" ") + std::to_wstring(number_) + L"." + method;
}

double Profiler::stop() {
    if (ledger().isBroken) {
        throw ServerError{brokenCode, L"The profiler's clock has stopped"};
    }
    return step * ++ledger().stops;
}

}  // namespace stand_in
