// A library file of a test's own, and a hand that writes to it beside the service.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class LibraryFile {
  public:
    /// Makes a library with an empty queue.
    explicit LibraryFile(std::string path);

    /// Runs statements in SQLite's own dialect.
    void run(std::string_view statements) const;
    /// The first column of each row.
    [[nodiscard]] std::vector<std::string> rows(std::string_view query) const;

    /// Puts an entry into the queue.
    void queue(int id, bool claimed = false) const;
    /// The entries as "id" or "id claimed", by id.
    [[nodiscard]] std::vector<std::string> entries() const;

    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    std::string path_;
};
