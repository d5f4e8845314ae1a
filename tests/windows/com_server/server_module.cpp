#include "windows/com_server/server_module.h"

#include <array>
#include <string>

#include "windows/com_server/live_objects.h"

namespace com_server {
namespace {

/// Makes objects of one class. It lives as long as its last reference.
class Factory : public IClassFactory {
  public:
    explicit Factory(const ServerClass& made) : made_(made) {}
    Factory(const Factory&) = delete;
    Factory& operator=(const Factory&) = delete;
    virtual ~Factory() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (id != IID_IUnknown && id != IID_IClassFactory) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        *object = nullptr;
        if (outer != nullptr) {
            return CLASS_E_NOAGGREGATION;
        }
        IDispatch* made = made_.create();
        const HRESULT status = made->QueryInterface(id, object);
        made->Release();
        return status;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL /*lock*/) override { return S_OK; }

  private:
    Live live_;
    const ServerClass& made_;
    ULONG references_ = 1;
};

LSTATUS writeDefault(const std::wstring& path, const std::wstring& text, const wchar_t* name = nullptr) {
    HKEY key = nullptr;
    LSTATUS status = ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, (L"Software\\Classes\\" + path).c_str(), 0,
                                       nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
    if (status == ERROR_SUCCESS) {
        status = ::RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
        ::RegCloseKey(key);
    }
    return status;
}

}  // namespace

HRESULT classObject(std::span<const ServerClass> classes, REFCLSID classId, REFIID id, void** object) {
    *object = nullptr;
    for (const ServerClass& candidate : classes) {
        CLSID own{};
        if (SUCCEEDED(::CLSIDFromString(candidate.classId, &own)) && own == classId) {
            auto* factory = new Factory(candidate);
            const HRESULT status = factory->QueryInterface(id, object);
            factory->Release();
            return status;
        }
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT registerClasses(std::span<const ServerClass> classes, HMODULE module) {
    std::array<wchar_t, MAX_PATH> path{};
    ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    for (const ServerClass& entry : classes) {
        const std::wstring progId = entry.progId;
        const std::wstring classKey = L"CLSID\\" + std::wstring(entry.classId);
        for (const LSTATUS status :
             {writeDefault(progId + L"\\CLSID", entry.classId), writeDefault(classKey, progId),
              writeDefault(classKey + L"\\ProgID", progId),
              writeDefault(classKey + L"\\InprocServer32", path.data()),
              writeDefault(classKey + L"\\InprocServer32", L"Apartment", L"ThreadingModel")}) {
            if (status != ERROR_SUCCESS) {
                return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
            }
        }
    }
    return S_OK;
}

bool isWine() {
    const HMODULE system = ::GetModuleHandleW(L"ntdll.dll");
    return system != nullptr && ::GetProcAddress(system, "wine_get_version") != nullptr;
}

HMODULE moduleOf(const void* address) {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        static_cast<const wchar_t*>(address), &module);
    return module;
}

}  // namespace com_server
