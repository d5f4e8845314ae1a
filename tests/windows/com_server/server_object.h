// The base of the suite's own automation objects: a strict IDispatch over a table of members. What a lenient
// server would put up with (a method read as a property, an argument of a neighbouring type) is refused here,
// so that a caller that works with it works with every server.
#pragma once

#include <windows.h>
// windows.h stands first: the automation headers need it.
#include <oleauto.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "windows/com_server/live_objects.h"

namespace com_server {

/// What Invoke itself answers, without an exception.
struct Refusal {
    HRESULT status;
    UINT argument = 0;  // of the call, counted as DISPPARAMS does
};

/// An error inside a member; it goes out as an exception of the object.
struct ServerError {
    HRESULT code;
    std::wstring description;
    bool deferred = false;  // told only when the caller asks
    WORD number = 0;        // instead of the code, as servers of the 16-bit days do
};

/// An argument's type and whether it may be left out. VT_VARIANT takes whatever comes.
struct Parameter {
    VARTYPE type = VT_VARIANT;
    bool isOptional = false;
};

/// One call: its arguments from first to last, null for one that was left out, and the room for its result.
struct Call {
    std::vector<VARIANT*> arguments;
    VARIANT* result = nullptr;

    [[nodiscard]] std::wstring text(std::size_t argument) const;
    [[nodiscard]] LONG number(std::size_t argument, LONG otherwise) const;

    void give(const std::wstring& text) const;
    void give(LONG number) const;
    void give(SHORT number) const;
    void give(bool flag) const;
    /// Takes the reference over.
    void give(IDispatch* object) const;
};

class ServerObject : public IDispatch {
  public:
    using Action = std::function<void(Call& call)>;

    ServerObject() = default;
    ServerObject(const ServerObject&) = delete;
    ServerObject& operator=(const ServerObject&) = delete;
    virtual ~ServerObject() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* members) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* details,
                                     UINT* badArgument) override;

  protected:
    void method(const std::wstring& name, std::vector<Parameter> parameters, Action action);
    void readable(const std::wstring& name, std::vector<Parameter> parameters, Action action);
    void writable(const std::wstring& name, VARTYPE type, Action action);

    /// Told of every use of a member that is not refused, before the member acts. `kind` is the one flag of
    /// Invoke that says what the member is.
    virtual void used(const std::wstring& /*member*/, WORD /*kind*/, const Call& /*call*/) {}

  private:
    struct Member {
        std::wstring name;
        WORD kind;
        std::vector<Parameter> parameters;
        Action action;
    };

    [[nodiscard]] const Member& find(DISPID member, WORD flags) const;
    static Call read(const Member& member, const DISPPARAMS& parameters, VARIANT* result);

    Live live_;
    ULONG references_ = 1;
    std::vector<Member> members_;
};

/// Text for C++ code that speaks UTF-8.
std::string utf8(std::wstring_view text);
std::wstring utf16(std::string_view text);

}  // namespace com_server
