// The stand-in for the profiler as an in-process server. It takes a name that is not the suite's own, so it
// registers itself under Wine alone.
#include <array>

#include "windows/com_server/live_objects.h"
#include "windows/com_server/server_module.h"
#include "windows/profiler/profiler.h"

namespace {

const std::array classes = {com_server::ServerClass{L"Parvane.Profiler",
                                                    L"{5B2C7B0E-6E5F-4D0A-9C11-3C4C2F1B7A21}",
                                                    []() -> IDispatch* { return new stand_in::Profiler; }}};

}  // namespace

extern "C" {

__declspec(dllexport) HRESULT __stdcall DllGetClassObject(REFCLSID classId, REFIID id, void** object) {
    return com_server::classObject(classes, classId, id, object);
}

__declspec(dllexport) HRESULT __stdcall DllCanUnloadNow() {
    return S_FALSE;
}

__declspec(dllexport) long __stdcall LiveObjects() {
    return com_server::Live::count;
}

__declspec(dllexport) HRESULT __stdcall DllRegisterServer() {
    return com_server::isWine() ? com_server::registerClasses(classes, com_server::moduleOf(&classes))
                                : E_ACCESSDENIED;
}
}
