#include "platform/posix/settings_memory.h"

#include <bit>

namespace platform::posix {

namespace {

// The settings of a service take a few kilobytes. A tool that walks through a large file must not end up with
// all of it in memory, and a value of this size is read too rarely to matter.
constexpr std::size_t mostBytes = std::size_t{256} * 1024;
constexpr std::size_t mostBytesOfOne = std::size_t{8} * 1024;
constexpr std::size_t bytesAroundOne = 200;

// Words of the header.
constexpr std::size_t commits = 2;  // grows by one with each
constexpr std::size_t marks = 3;    // its first byte tells that the header was written
constexpr std::size_t frames = 4;   // of the log
constexpr std::size_t salt = 8;     // of the log, in two words; a restarted log has another

std::size_t bytesOf(std::string_view folded, std::string_view foldedName,
                    const std::optional<SettingsValue>& value) {
    return folded.size() + foldedName.size() + (value ? value->name.size() + value->data.size() : 0);
}

}  // namespace

bool SettingsState::isWritten() const {
    return std::bit_cast<std::array<std::uint8_t, sizeof(std::uint32_t)>>(header[marks]).front() != 0;
}

bool SettingsState::isNextAfter(const SettingsState& before) const {
    return header[commits] == before.header[commits] + 1 && header[frames] > before.header[frames] &&
           header[salt] == before.header[salt] && header[salt + 1] == before.header[salt + 1];
}

void SettingsMemory::meet(const std::optional<SettingsState>& state) {
    if (!state || state != state_) {
        forget();
        state_ = state;
    }
}

std::optional<bool> SettingsMemory::key(std::string_view folded) const {
    const auto found = keys_.find(folded);
    return found == keys_.end() ? std::nullopt : found->second.present;
}

const std::optional<SettingsValue>* SettingsMemory::value(std::string_view folded,
                                                          std::string_view foldedName) const {
    const auto key = keys_.find(folded);
    if (key == keys_.end()) {
        return nullptr;
    }
    const auto found = key->second.values.find(foldedName);
    return found == key->second.values.end() ? nullptr : &found->second;
}

void SettingsMemory::rememberKey(std::string_view folded, bool present) {
    if (state_ && admit(folded.size())) {
        keyAt(folded).present = present;
    }
}

void SettingsMemory::rememberValue(std::string_view folded, std::string_view foldedName,
                                   const std::optional<SettingsValue>& value) {
    if (state_ && admit(bytesOf(folded, foldedName, value))) {
        keyAt(folded).values.insert_or_assign(std::string(foldedName), value);
    }
}

void SettingsMemory::follow(const SettingsState& state, std::string_view folded, std::string_view foldedName,
                            const SettingsValue& stored) {
    state_ = state;
    const auto key = keys_.find(folded);
    if (key == keys_.end()) {
        return;
    }
    const auto before = key->second.values.find(foldedName);
    if (before == key->second.values.end()) {
        return;
    }
    SettingsValue now = stored;
    if (before->second) {
        now.name = before->second->name;  // the first spelling stays
    }
    bytes_ -= bytesOf(folded, foldedName, before->second) + bytesAroundOne;
    key->second.values.erase(before);
    rememberValue(folded, foldedName, now);
}

void SettingsMemory::forget() {
    keys_.clear();
    bytes_ = 0;
}

bool SettingsMemory::admit(std::size_t bytes) {
    if (bytes > mostBytesOfOne) {
        return false;
    }
    bytes_ += bytes + bytesAroundOne;
    if (bytes_ > mostBytes) {
        forget();
        bytes_ = bytes + bytesAroundOne;
    }
    return true;
}

SettingsMemory::Key& SettingsMemory::keyAt(std::string_view folded) {
    const auto found = keys_.find(folded);
    return found != keys_.end() ? found->second : keys_.try_emplace(std::string(folded)).first->second;
}

}  // namespace platform::posix
