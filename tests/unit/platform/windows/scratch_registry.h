// A ScratchRegistry lets HKEY_CURRENT_USER be an empty key of the test's own for as long as it lives, so that
// no test meets the values of another, or those of the user.
#pragma once

#include <stdexcept>
#include <string>

#include <windows.h>

class ScratchRegistry {
  public:
    ScratchRegistry() : path_("Software\\tyIndexer-test-" + std::to_string(::GetCurrentProcessId())) {
        check(::RegCreateKeyExA(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                &key_, nullptr));
        check(::RegOverridePredefKey(HKEY_CURRENT_USER, key_));
    }
    ScratchRegistry(const ScratchRegistry&) = delete;
    ScratchRegistry& operator=(const ScratchRegistry&) = delete;
    ~ScratchRegistry() {
        ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        ::RegCloseKey(key_);
        ::RegDeleteTreeA(HKEY_CURRENT_USER, path_.c_str());
    }

  private:
    static void check(LSTATUS status) {
        if (status != ERROR_SUCCESS) {
            throw std::runtime_error("the registry answers " + std::to_string(status));
        }
    }

    std::string path_;
    HKEY key_ = nullptr;
};
