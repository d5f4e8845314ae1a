// What a DLL of automation classes exports: its classes by id, and their entries in the registry.
#pragma once

#include <windows.h>
// windows.h stands first: the automation headers need it.
#include <oleauto.h>

#include <span>

namespace com_server {

struct ServerClass {
    const wchar_t* progId;
    const wchar_t* classId;  // with its braces
    IDispatch* (*create)();
};

/// Gives the factory of a class, for DllGetClassObject.
HRESULT classObject(std::span<const ServerClass> classes, REFCLSID classId, REFIID id, void** object);

/// Writes the classes for the whole machine, with the module's own path, for DllRegisterServer.
HRESULT registerClasses(std::span<const ServerClass> classes, HMODULE module);

/// Whether this is Wine, where names that belong to others may be taken.
bool isWine();

/// The module that an address lies in.
HMODULE moduleOf(const void* address);

}  // namespace com_server
