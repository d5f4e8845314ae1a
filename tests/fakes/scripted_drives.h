// Drive letters mapped by a test.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/drives.h"

namespace fakes {

class ScriptedDrives : public platform::Drives {
  public:
    platform::DriveStatus connection(std::string_view localName, char* share, std::uint32_t& size) override {
        asked.emplace_back(localName);
        sizes.push_back(size);
        if (failure) {
            failure();
        }
        const auto found = shares.find(std::string(localName));
        if (found == shares.end()) {
            return platform::DriveStatus::notConnected;
        }
        const auto needed = static_cast<std::uint32_t>(found->second.size() + 1);
        if (size < needed) {
            size = needed;
            return platform::DriveStatus::moreData;
        }
        std::copy(found->second.begin(), found->second.end(), share);
        share[found->second.size()] = '\0';
        return platform::DriveStatus::success;
    }

    std::map<std::string, std::string> shares;  // "X:" to "\\server\share"
    std::vector<std::string> asked;
    std::vector<std::uint32_t> sizes;
    std::function<void()> failure;
};

}  // namespace fakes
