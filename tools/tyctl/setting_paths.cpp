#include "tyctl/setting_paths.h"

#include "base/text.h"

namespace tyctl {
namespace {

constexpr std::string_view productKey = R"(software\orlent corporation\tessaly)";
constexpr std::string_view hive = "HKEY_CURRENT_USER";

bool startsWith(std::string_view text, std::string_view start) {
    return text.size() >= start.size() && base::equalsIgnoringCase(text.substr(0, start.size()), start);
}

/// True for the key itself and for every key below it.
bool liesAtOrBelow(std::string_view path, std::string_view key) {
    return startsWith(path, key) && (path.size() == key.size() || path[key.size()] == '\\');
}

std::string withBackslashes(std::string_view path) {
    return base::replaceAll(path, "/", "\\");
}

std::string_view withoutOuterSeparators(std::string_view path) {
    while (!path.empty() && path.front() == '\\') {
        path.remove_prefix(1);
    }
    while (!path.empty() && path.back() == '\\') {
        path.remove_suffix(1);
    }
    return path;
}

}  // namespace

std::string expandKey(std::string_view key) {
    const std::string separated = withBackslashes(key);
    std::string_view path = separated;
    if (liesAtOrBelow(path, hive)) {
        path.remove_prefix(hive.size());
    }
    path = withoutOuterSeparators(path);
    const std::string product(productKey);
    for (const std::string_view below : {"service", "DataTypes"}) {
        if (liesAtOrBelow(path, below)) {
            return product + "\\" + std::string(path);
        }
    }
    for (const std::string_view below : {"Indexer", "Master"}) {
        if (liesAtOrBelow(path, below)) {
            return product + "\\service\\" + std::string(path);
        }
    }
    return std::string(path);
}

SettingName parseSettingName(std::string_view name) {
    const std::string path = withBackslashes(name);
    const std::size_t separator = path.rfind('\\');
    if (separator != std::string::npos) {
        return {expandKey(path.substr(0, separator)), path.substr(separator + 1)};
    }
    if (base::equalsIgnoringCase(path, "Master")) {
        return {expandKey("Master"), {}};
    }
    return {expandKey("service"), path};
}

bool isProductKey(std::string_view key) {
    return liesAtOrBelow(key, productKey);
}

std::string shortKey(std::string_view key) {
    if (!liesAtOrBelow(key, productKey)) {
        return std::string(key);
    }
    const std::string_view below = withoutOuterSeparators(key.substr(productKey.size()));
    if (!liesAtOrBelow(below, "service") && !liesAtOrBelow(below, "DataTypes")) {
        return std::string(key);
    }
    return std::string(below);
}

}  // namespace tyctl
