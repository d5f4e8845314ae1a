// A folder of a test's own, gone when the test is.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace fakes {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::random_device random;
        do {
            path_ = std::filesystem::temp_directory_path() / ("tyindexer-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(path_));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] std::string path() const { return path_.string(); }
    [[nodiscard]] std::string operator/(const std::string& name) const { return (path_ / name).string(); }

    /// Writes a file below the folder and gives its path.
    std::string write(const std::string& name, const std::string& bytes) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path_ / name, std::ios::binary) << bytes;
        return *this / name;
    }

    /// The bytes of a file below the folder; empty when there is none.
    [[nodiscard]] std::string read(const std::string& name) const {
        std::ifstream file(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

  private:
    std::filesystem::path path_;
};

}  // namespace fakes
