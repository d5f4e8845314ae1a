// Where the tests that read real documents find them.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace corpus {

/// The regular files below a folder of the corpus, sorted; none where there is no corpus. The environment's
/// TYINDEXER_CORPUS comes before the folder that the build was told.
inline std::vector<std::string> filesBelow(const char* builtIn, const std::string& folder) {
    const char* chosen = std::getenv("TYINDEXER_CORPUS");
    const auto root = std::filesystem::path(chosen != nullptr ? chosen : builtIn) / folder;
    std::vector<std::string> files;
    std::error_code failure;
    for (std::filesystem::recursive_directory_iterator entry(root, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (entry->is_regular_file()) {
            files.push_back(entry->path().string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace corpus
