#include "tyctl/document_walker.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "base/text.h"

namespace tyctl {
namespace fs = std::filesystem;

std::string dataTypeOf(const fs::path& path) {
    const std::string extension = path.extension().string();
    return extension.empty() ? extension : base::toLower(extension.substr(1));
}

std::string reasonAgainst(const std::string& path) {
    if (!path.empty() && path.back() == ' ') {
        return "the path ends in a blank, which the service would drop; rename it first";
    }
    if (path.find("\\\\", 2) != std::string::npos) {
        return "the path holds two backslashes in a row, which the service would join; rename it first";
    }
    return {};
}

bool isValidText(const std::string& text) {
    std::size_t position = 0;
    while (position < text.size()) {
        std::size_t next = 0;
        const char32_t code = base::codePointAt(text, position, next);
        // Bytes outside a sequence read as these; a real one would take three bytes.
        if (code >= 0xDC80 && code <= 0xDCFF && next == position + 1) {
            return false;
        }
        position = next;
    }
    return true;
}

DocumentWalker::DocumentWalker(bool hiddenToo, Found found, Trouble trouble)
    : hiddenToo_(hiddenToo), found_(std::move(found)), trouble_(std::move(trouble)) {}

void DocumentWalker::walk(const fs::path& path) {
    if (path.empty()) {
        trouble_("an empty path names no file or folder; left out");
        return;
    }
    fs::path whole = fs::absolute(path).lexically_normal();
    if (!whole.has_filename() && whole.has_relative_path()) {
        whole = whole.parent_path();
    }
    visit(whole);
}

void DocumentWalker::visit(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found) {
        trouble_(path.string() + ": there is no such file or folder");
    } else if (fs::is_directory(status)) {
        enter(path);
    } else if (fs::is_regular_file(status)) {
        found_(path.string());
    } else if (error) {
        trouble_(path.string() + ": cannot be looked at: " + error.message());
    } else {
        trouble_(path.string() + ": is neither a file nor a folder; left out");
    }
}

void DocumentWalker::enter(const fs::path& folder) {
    struct stat identity {};
    if (stat(folder.c_str(), &identity) != 0) {
        trouble_(folder.string() + ": cannot be read: " + std::generic_category().message(errno));
        return;
    }
    if (!entered_.emplace(identity.st_dev, identity.st_ino).second) {
        return;
    }
    std::error_code error;
    std::vector<fs::path> entries;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (hiddenToo_ || entry->path().filename().string().front() != '.') {
            entries.push_back(entry->path());
        }
    }
    if (error) {
        trouble_(folder.string() + ": cannot be read: " + error.message());
    }
    std::sort(entries.begin(), entries.end());
    for (const fs::path& entry : entries) {
        visit(entry);
    }
}

}  // namespace tyctl
