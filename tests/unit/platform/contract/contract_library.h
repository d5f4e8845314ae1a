// The library that the contract of the database engines is held on.
#pragma once

#include <memory>
#include <string>

#include "platform/database.h"

namespace contract {

/// An empty library with the engine that opens it.
class Library {
  public:
    Library() = default;
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    virtual ~Library() = default;

    virtual platform::DatabaseEngine& engine() = 0;
    [[nodiscard]] virtual platform::ConnectionSettings settings() const = 0;
};

/// Gives nothing, with a reason, where the machine has no such engine.
struct MadeLibrary {
    std::unique_ptr<Library> library;
    std::string reason;
};
using LibraryMaker = MadeLibrary (*)();

}  // namespace contract
