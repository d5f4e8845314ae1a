// The plug-in under test as an in-process server.
#include <array>

#include "windows/com_server/live_objects.h"
#include "windows/com_server/server_module.h"
#include "windows/plugin/mail_plugin.h"
#include "windows/plugin/probe.h"
#include "windows/plugin/text_plugin.h"

namespace {

using test_plugin::Sentences;
using test_plugin::TextPlugin;

const std::array classes = {
    com_server::ServerClass{L"TyTest.Text", L"{5B2C7B0E-6E5F-4D0A-9C11-3C4C2F1B7A01}",
                            []() -> IDispatch* { return new TextPlugin(Sentences::counted); }},
    com_server::ServerClass{L"TyTest.Stream", L"{5B2C7B0E-6E5F-4D0A-9C11-3C4C2F1B7A02}",
                            []() -> IDispatch* { return new TextPlugin(Sentences::streamed); }},
    com_server::ServerClass{L"TyTest.Probe", L"{5B2C7B0E-6E5F-4D0A-9C11-3C4C2F1B7A03}",
                            []() -> IDispatch* { return new test_plugin::Probe; }},
    com_server::ServerClass{L"TyTest.Mail", L"{5B2C7B0E-6E5F-4D0A-9C11-3C4C2F1B7A04}",
                            []() -> IDispatch* { return new test_plugin::MailPlugin; }}};

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
    return com_server::registerClasses(classes, com_server::moduleOf(&classes));
}
}
