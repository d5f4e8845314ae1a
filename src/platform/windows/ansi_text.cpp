#include "platform/windows/ansi_text.h"

#include <windows.h>

#include "base/runtime_error.h"
#include "platform/windows/utf16.h"

namespace platform::windows {
namespace {

[[noreturn]] void raise(const std::string& what) {
    throw base::RuntimeError(base::ErrorNumber::invalidProcedureCall,
                             what + " the system's code page " + std::to_string(::GetACP()));
}

}  // namespace

std::string toAnsi(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    const std::wstring wide = toUtf16(text);
    // A system whose code page is UTF-8 has every character, and refuses to be asked whether it has.
    const bool hasAll = ::GetACP() == CP_UTF8;
    BOOL replaced = FALSE;
    BOOL* replacedAsked = hasAll ? nullptr : &replaced;
    const DWORD flags = hasAll ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
    const auto length = static_cast<int>(wide.size());
    const int size =
        ::WideCharToMultiByte(CP_ACP, flags, wide.data(), length, nullptr, 0, nullptr, replacedAsked);
    if (size == 0 || replaced != FALSE) {
        raise("\"" + std::string(text) + "\" has a character that is not in");
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_ACP, flags, wide.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::string fromAnsi(std::string_view bytes) {
    if (bytes.empty()) {
        return {};
    }
    const auto length = static_cast<int>(bytes.size());
    const int size = ::MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, bytes.data(), length, nullptr, 0);
    if (size == 0) {
        raise("a text is not in");
    }
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    ::MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, bytes.data(), length, wide.data(), size);
    return toUtf8(wide);
}

}  // namespace platform::windows
