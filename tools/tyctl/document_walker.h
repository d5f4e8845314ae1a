// A DocumentWalker finds the files that a list of paths names: files themselves, and everything below
// folders.
#pragma once

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tyctl {

/// The data type of a document: its extension in lower case, without the dot; empty when it has none.
std::string dataTypeOf(const std::filesystem::path& path);

/// Why the service cannot be handed this path, or empty text. It trims blanks at the ends of a path and joins
/// doubled backslashes, so that it would look for another file.
std::string reasonAgainst(const std::string& path);

/// True when the text is valid UTF-8.
bool isValidText(const std::string& text);

class DocumentWalker {
  public:
    using Found = std::function<void(const std::string& path)>;
    using Trouble = std::function<void(const std::string& message)>;

    /// `hiddenToo` also enters and takes what begins with a dot below the paths named.
    DocumentWalker(bool hiddenToo, Found found, Trouble trouble);

    /// Tells every file below the path, in the order of their names, as absolute paths. A path that cannot
    /// be read is a trouble, and the walk goes on. A folder is entered once, however many links lead to it.
    void walk(const std::filesystem::path& path);

  private:
    void enter(const std::filesystem::path& folder);
    void visit(const std::filesystem::path& path);

    bool hiddenToo_;
    Found found_;
    Trouble trouble_;
    std::set<std::pair<std::uint64_t, std::uint64_t>> entered_;  // device and file number of each folder
};

}  // namespace tyctl
