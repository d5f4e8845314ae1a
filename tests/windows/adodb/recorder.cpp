#include "windows/adodb/recorder.h"

#include <array>
#include <filesystem>
#include <fstream>

namespace stand_in {
namespace {

std::string escaped(const std::string& text) {
    std::string line;
    for (const char c : text) {
        line += c == '\\'   ? "\\\\"
                : c == '\t' ? "\\t"
                : c == '\n' ? "\\n"
                : c == '\r' ? "\\r"
                            : std::string(1, c);
    }
    return line;
}

}  // namespace

std::string described(const VARIANT* argument) {
    if (argument == nullptr) {
        return "-";
    }
    switch (V_VT(argument)) {
        case VT_BSTR:
            return "BSTR " + escaped(com_server::utf8({V_BSTR(argument), ::SysStringLen(V_BSTR(argument))}));
        case VT_I4:
            return "I4 " + std::to_string(V_I4(argument));
        case VT_DISPATCH:
            return "DISPATCH";
        default:
            return "type " + std::to_string(V_VT(argument));
    }
}

void RecordedObject::used(const std::wstring& member, WORD kind, const com_server::Call& call) {
    std::array<wchar_t, MAX_PATH> path{};
    if (::GetEnvironmentVariableW(L"TYTEST_ADO_RECORD", path.data(), static_cast<DWORD>(path.size())) == 0) {
        return;
    }
    std::ofstream file(std::filesystem::path(path.data()), std::ios::binary | std::ios::app);
    file << escaped(com_server::utf8(name_ + L"." + member)) << (kind == DISPATCH_PROPERTYPUT ? "=" : "");
    for (const VARIANT* argument : call.arguments) {
        file << '\t' << described(argument);
    }
    file << '\n';
}

}  // namespace stand_in
