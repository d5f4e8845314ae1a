// An AllocationSpy knows which blocks of COM's allocator are still held: automation's strings and arrays, and
// whatever else is taken from CoTaskMemAlloc. Whoever makes it owns it; there can be one at a time.
#pragma once

#include <cstddef>

namespace com_tests {

class AllocationSpy {
  public:
    /// Blocks from before are not counted. Strings are no longer kept in a cache after their release, for the
    /// rest of the process.
    AllocationSpy();
    AllocationSpy(const AllocationSpy&) = delete;
    AllocationSpy& operator=(const AllocationSpy&) = delete;
    ~AllocationSpy();

    /// Blocks that were allocated since it was made and are not freed.
    [[nodiscard]] std::size_t held() const;
    /// Blocks that were allocated since it was made.
    [[nodiscard]] std::size_t allocated() const;
};

}  // namespace com_tests
