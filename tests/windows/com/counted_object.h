// A CountedObject is an automation object that tells how many references to it are held. The test owns it; no
// release deletes it, so that one too many shows as well as one too few.
#pragma once

#include <memory>

#include "windows/com_server/server_object.h"

namespace com_tests {

class CountedObject : public com_server::ServerObject {
  public:
    /// Without references. `hasChild`: it gives an object of its kind to those who ask.
    explicit CountedObject(bool hasChild = false);

    /// A reference for a new owner.
    IDispatch* referred() {
        AddRef();
        return this;
    }

    [[nodiscard]] long references() const { return references_; }
    [[nodiscard]] long everReferred() const { return everReferred_; }
    [[nodiscard]] CountedObject& child() { return *child_; }

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    /// Errors come with all the texts that an error may have.
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* details,
                                     UINT* badArgument) override;

  private:
    void texts();
    void objects();
    void failures();

    std::unique_ptr<CountedObject> child_;
    long references_ = 0;
    long everReferred_ = 0;
};

}  // namespace com_tests
