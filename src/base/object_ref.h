// An ObjectRef shares an object and raises a RuntimeError where an empty reference is used. Its holders own
// the object together: it goes with the last of them.
#pragma once

#include <memory>
#include <utility>

#include "base/runtime_error.h"

namespace base {

template <class T>
class ObjectRef {
  public:
    ObjectRef() = default;
    explicit ObjectRef(std::shared_ptr<T> object) : object_(std::move(object)) {}

    [[nodiscard]] bool empty() const { return object_ == nullptr; }

    /// Raises error 91 when the reference is empty.
    T& operator*() const {
        if (object_ == nullptr) {
            throw RuntimeError(ErrorNumber::objectNotSet, "Object variable not set");
        }
        return *object_;
    }
    T* operator->() const { return &**this; }

    friend bool operator==(const ObjectRef&, const ObjectRef&) = default;

  private:
    std::shared_ptr<T> object_;
};

}  // namespace base
