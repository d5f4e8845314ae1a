#include "platform/windows/com_error.h"

#include <windows.h>
// windows.h stands first: the automation headers need it.
#include <oleauto.h>

#include <array>
#include <cstdio>
#include <memory>

#include "base/runtime_error.h"
#include "platform/windows/utf16.h"

namespace platform::windows {
namespace {

struct LocalFreer {
    void operator()(wchar_t* text) const { ::LocalFree(text); }
};

/// Without the line end and blanks that the system's texts close with; empty for a code that has no text.
std::wstring systemText(HRESULT status) {
    wchar_t* raw = nullptr;
    // With ALLOCATE_BUFFER the function takes a pointer to the buffer's pointer in the buffer's place.
    const DWORD size = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        static_cast<DWORD>(status), 0, reinterpret_cast<wchar_t*>(&raw), 0, nullptr);
    const std::unique_ptr<wchar_t, LocalFreer> owner(raw);
    std::wstring text(raw == nullptr ? L"" : std::wstring(raw, size));
    text.resize(text.find_last_not_of(L"\r\n ") + 1);
    return text;
}

/// The number that Basic shows for a code: controls number their errors in the low word of facility 10.
int numberOf(HRESULT status) {
    return HRESULT_FACILITY(status) == FACILITY_CONTROL ? HRESULT_CODE(status) : static_cast<int>(status);
}

}  // namespace

std::string statusText(long status) {
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "0x%08lX", static_cast<unsigned long>(status));
    const std::string text = toUtf8(systemText(status));
    return text.empty() ? "error " + std::string(code.data()) : text + " (" + code.data() + ")";
}

void raiseComError(long status, const std::string& doing, const tagEXCEPINFO* details) {
    if (details == nullptr) {
        throw base::RuntimeError(numberOf(status), doing + ": " + statusText(status));
    }
    const HRESULT code = details->scode != 0 ? details->scode : status;
    const int number = details->wCode != 0 ? details->wCode : numberOf(code);
    if (::SysStringLen(details->bstrDescription) == 0) {
        throw base::RuntimeError(
            number,
            doing + ": " + (details->wCode != 0 ? "error " + std::to_string(number) : statusText(code)));
    }
    throw base::RuntimeError(number,
                             toUtf8({details->bstrDescription, ::SysStringLen(details->bstrDescription)}));
}

}  // namespace platform::windows
