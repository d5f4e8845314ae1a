// Registers the in-process servers that are named as arguments, as regsvr32 does, and ends with status 1 when
// one of them cannot be. It looks for them beside itself.
#include <windows.h>

#include <cstdio>

int main(int argc, char** argv) {
    using Register = HRESULT(__stdcall*)();
    for (int i = 1; i < argc; ++i) {
        const HMODULE module = ::LoadLibraryA(argv[i]);
        if (module == nullptr) {
            std::printf("%s cannot be loaded: error %lu\n", argv[i], ::GetLastError());
            return 1;
        }
        // Functions of any type come as one type; this is the type that servers export.
        const auto registerServer = reinterpret_cast<Register>(
            reinterpret_cast<void*>(::GetProcAddress(module, "DllRegisterServer")));
        const HRESULT status = registerServer == nullptr ? E_NOTIMPL : registerServer();
        if (FAILED(status)) {
            std::printf("%s cannot be registered: 0x%08lX\n", argv[i], static_cast<unsigned long>(status));
            return 1;
        }
        std::printf("%s is registered\n", argv[i]);
    }
    return 0;
}
