// An environment variable, set or unset while the object lives.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

class Environment {
  public:
    /// A null value unsets the variable.
    Environment(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            before_ = before;
        }
        set(value);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment() { set(before_ ? before_->c_str() : nullptr); }

  private:
    void set(const char* value) const { value == nullptr ? unsetenv(name_) : setenv(name_, value, 1); }

    const char* name_;
    std::optional<std::string> before_;
};
