// A PluginServer answers the service's requests: it keeps the extractors by their handles and calls them by
// method name. runPlugin owns one; it touches no stream, and no file but one that it is told to fetch.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "sdk/extractor.h"

namespace sdk {

class PluginServer {
  public:
    explicit PluginServer(ExtractorFactory factory);

    /// The answer to one line of input, with its line end. Never throws for what the line says: a line that
    /// is no request, an unknown method and an error inside a call are answers like any other.
    std::string answer(std::string_view line);

  private:
    std::string perform(const std::string& method, nlohmann::json& params);
    std::string create();
    void release(std::int64_t handle);
    [[nodiscard]] Extractor& object(std::int64_t handle) const;

    ExtractorFactory factory_;
    std::map<std::int64_t, std::unique_ptr<Extractor>> objects_;
    std::int64_t lastHandle_ = 0;
};

}  // namespace sdk
