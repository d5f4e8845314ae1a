// Registers the suite's own servers, as an installer does with plug-ins. The tests that use them run behind
// it.
#include <gtest/gtest.h>
#include <windows.h>
// windows.h stands before COM's header, which needs it.
#include <objbase.h>

#include <filesystem>
#include <utility>

#include "windows/adodb/class_ids.h"
#include "windows/com_server/server_module.h"

namespace {

/// What a server that lies beside this program answers when it is to register itself.
HRESULT registerServer(const wchar_t* name) {
    std::wstring own(MAX_PATH, L'\0');
    own.resize(::GetModuleFileNameW(nullptr, own.data(), static_cast<DWORD>(own.size())));
    const HMODULE module = ::LoadLibraryW(std::filesystem::path(own).replace_filename(name).c_str());
    if (module == nullptr) {
        return HRESULT_FROM_WIN32(::GetLastError());
    }
    // Functions of every type come as one type; this is the type that servers export.
    using Register = HRESULT(__stdcall*)();
    const auto entry =
        reinterpret_cast<Register>(reinterpret_cast<void*>(::GetProcAddress(module, "DllRegisterServer")));
    return entry == nullptr ? E_NOTIMPL : entry();
}

bool isKnown(const wchar_t* progId) {
    CLSID classId{};
    return SUCCEEDED(::CLSIDFromProgID(progId, &classId));
}

TEST(Servers, OfPluginsRegisterThemselves) {
    EXPECT_EQ(registerServer(L"test_plugin.dll"), S_OK);
    for (const wchar_t* progId : {L"TyTest.Text", L"TyTest.Stream", L"TyTest.Probe"}) {
        EXPECT_TRUE(isKnown(progId)) << progId;
    }
}

TEST(Servers, InThePlaceOfAdoRegisterThemselvesUnderWineAlone) {
    EXPECT_EQ(SUCCEEDED(registerServer(L"test_adodb.dll")), com_server::isWine());
    if (!com_server::isWine()) {
        return;
    }
    // The tests that need the stand-in are skipped without it, which must not happen unnoticed.
    for (const auto& [progId, own] : {std::pair{L"ADODB.Connection", stand_in::connectionClass},
                                      std::pair{L"ADODB.Recordset", stand_in::recordsetClass}}) {
        CLSID expected{};
        CLSID found{};
        ASSERT_EQ(::CLSIDFromString(own, &expected), S_OK) << progId;
        EXPECT_EQ(::CLSIDFromProgID(progId, &found), S_OK) << progId;
        EXPECT_NE(::IsEqualGUID(found, expected), FALSE) << progId;
    }
}

TEST(Servers, InThePlaceOfTheProfilerRegisterThemselvesUnderWineAlone) {
    EXPECT_EQ(SUCCEEDED(registerServer(L"test_profiler.dll")), com_server::isWine());
    EXPECT_TRUE(!com_server::isWine() || isKnown(L"Parvane.Profiler"));
}

}  // namespace
