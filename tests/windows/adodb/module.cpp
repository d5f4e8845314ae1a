// The stand-in for ADO as an in-process server. It takes ADO's own names, so it registers itself under Wine
// alone: on Windows they belong to the system.
#include <array>

#include "windows/adodb/class_ids.h"
#include "windows/adodb/connection.h"
#include "windows/adodb/recordset.h"
#include "windows/com_server/live_objects.h"
#include "windows/com_server/server_module.h"

namespace {

const std::array classes = {com_server::ServerClass{L"ADODB.Connection", stand_in::connectionClass,
                                                    []() -> IDispatch* { return new stand_in::Connection; }},
                            com_server::ServerClass{L"ADODB.Recordset", stand_in::recordsetClass,
                                                    []() -> IDispatch* { return new stand_in::Recordset; }}};

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
