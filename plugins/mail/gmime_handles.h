// Owning handles for the objects of GMime and GLib.
#pragma once

#include <gmime/gmime.h>

#include <memory>
#include <string>

#include "shared/charset.h"

namespace mail {

struct ObjectRelease {
    void operator()(void* object) const { g_object_unref(object); }
};
template <class T>
using ObjectHandle = std::unique_ptr<T, ObjectRelease>;

struct MemoryRelease {
    void operator()(void* memory) const { g_free(memory); }
};
using TextHandle = std::unique_ptr<char, MemoryRelease>;

/// A text of GMime's as valid UTF-8; empty for none.
inline std::string textOf(const char* text) {
    return text == nullptr ? std::string() : shared::toUtf8(std::string(text), "UTF-8");
}

}  // namespace mail
