// How many objects of a server's are alive: each server of the suite exports the count of its own.
#pragma once

namespace com_server {

/// Counts what it is part of. Servers are called on one thread.
struct Live {
    Live() { ++count; }
    Live(const Live&) = delete;
    Live& operator=(const Live&) = delete;
    ~Live() { --count; }

    static inline long count = 0;
};

/// The objects and factories of a server that lies in this process, by the name of its file; 0 for one that
/// is not loaded.
long liveObjectsOf(const wchar_t* module);

}  // namespace com_server
