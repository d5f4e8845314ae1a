// The errors that ADO raises itself, with its numbers and texts.
#pragma once

#include "windows/com_server/server_object.h"

namespace stand_in {

/// ADO's own number as a code of a control.
constexpr HRESULT adoCode(unsigned number) {
    return static_cast<HRESULT>(0x800A0000U + number);
}

inline com_server::ServerError wrongArguments() {
    return {adoCode(3001),
            L"Arguments are of the wrong type, are out of acceptable range, or are in conflict with one "
            L"another."};
}
inline com_server::ServerError noCurrentRecord() {
    return {
        adoCode(3021),
        L"Either BOF or EOF is True, or the current record has been deleted. Requested operation requires "
        L"a current record."};
}
inline com_server::ServerError inTransaction() {
    return {adoCode(3246), L"Connection object cannot be explicitly closed while in a transaction."};
}
inline com_server::ServerError itemNotFound() {
    return {adoCode(3265),
            L"Item cannot be found in the collection corresponding to the requested name or ordinal."};
}
inline com_server::ServerError objectClosed() {
    return {adoCode(3704), L"Operation is not allowed when the object is closed."};
}
inline com_server::ServerError objectOpen() {
    return {adoCode(3705), L"Operation is not allowed when the object is open."};
}
inline com_server::ServerError providerNotFound() {
    return {adoCode(3706), L"Provider cannot be found. It may not be properly installed."};
}
inline com_server::ServerError connectionClosed() {
    return {
        adoCode(3709),
        L"The connection cannot be used to perform this operation. It is either closed or invalid in this "
        L"context."};
}
inline com_server::ServerError noTransaction() {
    return {static_cast<HRESULT>(0x8004D00E), L"No transaction is active."};
}

/// Runs what the provider does; its errors become those that a provider raises for a statement.
template <class Work>
auto asProvider(const Work& work) {
    try {
        return work();
    } catch (const std::exception& error) {
        throw com_server::ServerError{static_cast<HRESULT>(0x80040E14), com_server::utf16(error.what())};
    }
}

}  // namespace stand_in
