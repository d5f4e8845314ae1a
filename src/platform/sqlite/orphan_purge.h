// Deleting the root words that no row of word_index refers to, without looking at every word of the library.
#pragma once

#include <string_view>

namespace platform::sqlite {

class Handle;

/// Whether the statement is the service's own purge of root words.
bool isOrphanPurge(std::string_view statement);

/// Does what that statement does, in a transaction of its own where none is open. The library must note which
/// words may have lost their last hit (word_release and word_purge).
void purgeOrphans(Handle& handle);

}  // namespace platform::sqlite
