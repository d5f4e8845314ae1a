#include "platform/windows/ansi_text.h"

#include <windows.h>

#include "base/runtime_error.h"
#include "platform/windows/utf16.h"

namespace platform::windows {
namespace {

[[noreturn]] void raise(const std::string& what, unsigned codePage) {
    throw base::RuntimeError(base::ErrorNumber::invalidProcedureCall,
                             what + " the system's code page " + std::to_string(codePage));
}

}  // namespace

std::string toAnsi(std::string_view text) {
    return toCodePage(text, ::GetACP());
}

std::string fromAnsi(std::string_view bytes) {
    return fromCodePage(bytes, ::GetACP());
}

std::string toCodePage(std::string_view text, unsigned codePage) {
    if (text.empty()) {
        return {};
    }
    const std::wstring wide = toUtf16(text);
    // UTF-8 has every character, and refuses to be asked whether it has.
    const bool hasAll = codePage == CP_UTF8;
    BOOL replaced = FALSE;
    BOOL* replacedAsked = hasAll ? nullptr : &replaced;
    const DWORD flags = hasAll ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
    const auto length = static_cast<int>(wide.size());
    const int size =
        ::WideCharToMultiByte(codePage, flags, wide.data(), length, nullptr, 0, nullptr, replacedAsked);
    if (size == 0 || replaced != FALSE) {
        raise("\"" + std::string(text) + "\" has a character that is not in", codePage);
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(codePage, flags, wide.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::string fromCodePage(std::string_view bytes, unsigned codePage) {
    if (bytes.empty()) {
        return {};
    }
    const auto length = static_cast<int>(bytes.size());
    const int size = ::MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(), length, nullptr, 0);
    if (size == 0) {
        raise("a text is not in", codePage);
    }
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    ::MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(), length, wide.data(), size);
    return toUtf8(wide);
}

}  // namespace platform::windows
