// COM automation: objects that are created by ProgID and called by method name, without a type library. The
// composition root owns the apartment and the factory; an object belongs to whoever created it and must go
// before the apartment does.
#pragma once

#include <memory>
#include <string_view>

#include "platform/automation.h"

namespace platform::windows {

/// COM for this thread as long as it lives. Make one before the first object, on the thread of the window:
/// plug-ins are apartment-threaded as a rule and are called on the thread that has made them.
class ComApartment {
  public:
    /// Raises a RuntimeError when COM cannot be started.
    ComApartment();
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment();
};

class ComAutomationFactory : public AutomationFactory {
  public:
    /// The ProgID is looked up in the registry (HKEY_CLASSES_ROOT). Needs a ComApartment on this thread.
    ///
    /// Arguments of the object's `call` go by reference in their own type (an index as a 16-bit integer, a
    /// text as a string; empty and null inside a variant); those of `callByValue` go by value. An error of
    /// the object keeps its description; its number is the one that Basic shows: the code itself for the
    /// errors of automation controls (facility 10), the whole HRESULT for every other.
    std::unique_ptr<AutomationObject> create(std::string_view progId) override;
};

}  // namespace platform::windows
