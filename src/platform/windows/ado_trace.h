// What an AdoEngine shares with its connections and recordsets: where their statements are told.
#pragma once

#include <functional>
#include <string_view>

namespace platform::windows {

struct AdoTrace {
    std::function<void(std::string_view statement)> sink;  // empty: nobody listens

    void tell(std::string_view statement) const {
        if (sink) {
            sink(statement);
        }
    }
};

}  // namespace platform::windows
