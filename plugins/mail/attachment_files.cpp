#include "mail/attachment_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/text.h"
#include "shared/files.h"

namespace mail {
namespace {

constexpr auto extensions = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"text/plain", "txt"},
    {"text/markdown", "md"},
    {"text/html", "html"},
    {"text/csv", "csv"},
    {"text/calendar", "ics"},
    {"text/vcard", "vcf"},
    {"text/x-vcard", "vcf"},
    {"text/xml", "xml"},
    {"text/rtf", "rtf"},
    {"message/rfc822", "eml"},
    {"message/global", "eml"},
    {"application/pdf", "pdf"},
    {"application/rtf", "rtf"},
    {"application/xml", "xml"},
    {"application/json", "json"},
    {"application/zip", "zip"},
    {"application/msword", "doc"},
    {"application/vnd.ms-excel", "xls"},
    {"application/vnd.ms-powerpoint", "ppt"},
    {"application/vnd.oasis.opendocument.text", "odt"},
    {"application/vnd.openxmlformats-officedocument.wordprocessingml.document", "docx"},
    {"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet", "xlsx"},
    {"image/jpeg", "jpg"},
    {"image/png", "png"},
    {"image/gif", "gif"},
    {"image/tiff", "tif"},
});

std::string_view lastComponent(std::string_view name) {
    const std::size_t separator = name.find_last_of("/\\");
    return separator == std::string_view::npos ? name : name.substr(separator + 1);
}

/// The dot of an extension made of letters and digits; the end of the name where it has none.
std::size_t extensionDot(std::string_view name) {
    constexpr std::size_t longest = 10;
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) {
        return name.size();
    }
    const std::string_view extension = name.substr(dot + 1);
    const bool good = !extension.empty() && extension.size() <= longest &&
                      std::all_of(extension.begin(), extension.end(),
                                  [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; });
    return good ? dot : name.size();
}

std::string_view cleanName(std::string_view name) {
    return base::trim(lastComponent(base::trim(name)));
}

std::string timePrefix(std::time_t now) {
    std::tm parts{};
    std::array<char, 16> text{};
    localtime_r(&now, &parts);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", &parts)};
}

sdk::ExtractionError writeError(const std::string& path, int code) {
    return shared::openError(shared::OpenError::cannotWriteAttachment, path,
                             "cannot write the attachment: " + std::generic_category().message(code));
}

/// The beginning of a text, cut between two characters.
std::string_view cutToBytes(std::string_view text, std::size_t most) {
    while (text.size() > most) {
        text = base::left(text, base::length(text) - 1);
    }
    return text;
}

/// The path of a file whose name is cut where it would be too long. The service notes each temporary file
/// until it is deleted, and cannot read a note of more than 255 bytes.
std::string shortPath(const std::filesystem::path& folder, const std::string& prefix, const std::string& base,
                      const std::string& ending) {
    constexpr std::size_t longestPath = 250;
    constexpr std::size_t shortestBase = 8;
    const std::size_t others = (folder / prefix).string().size() + ending.size();
    if (others + shortestBase > longestPath) {
        throw shared::openError(shared::OpenError::cannotWriteAttachment, folder.string(),
                                "the path of this folder for temporary files is too long; set TMPDIR to a "
                                "folder with a shorter one");
    }
    std::string file = prefix;
    file.append(cutToBytes(base, longestPath - others)).append(ending);
    return (folder / file).string();
}

std::string temporaryFolder() {
    std::error_code failure;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(failure);
    if (failure) {
        throw shared::openError(
            shared::OpenError::cannotWriteAttachment, "the folder for temporary files",
            "cannot be used: " + failure.message() + "; set TMPDIR to a folder that can be written to");
    }
    return folder.string();
}

}  // namespace

AttachmentFiles::AttachmentFiles(std::time_t now) : prefix_(timePrefix(now)) {}

std::string AttachmentFiles::add(const std::string& name, const std::string& mimeType,
                                 const std::function<bool(int descriptor)>& write) {
    const std::filesystem::path folder = temporaryFolder();
    const std::string base = attachmentBaseName(name);
    const std::string ending = "." + attachmentExtension(name, mimeType);
    int& used = used_[base + ending];
    std::string path;
    int descriptor = -1;
    // Names repeat, within a message and among those of one second: the file that is there is never touched.
    while (descriptor < 0) {
        const std::string number = used == 0 ? "" : "~" + std::to_string(used);
        ++used;
        path = shortPath(folder, prefix_, base, number + ending);
        descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (descriptor < 0 && errno != EEXIST) {
            throw writeError(path, errno);
        }
    }
    errno = 0;
    const int failure = write(descriptor) ? 0 : (errno != 0 ? errno : EIO);
    const int closing = close(descriptor) == 0 ? 0 : errno;
    if (failure != 0 || closing != 0) {
        unlink(path.c_str());
        throw writeError(path, failure != 0 ? failure : closing);
    }
    return path;
}

std::string attachmentExtension(std::string_view name, std::string_view mimeType) {
    const std::string_view clean = cleanName(name);
    const std::size_t dot = extensionDot(clean);
    if (dot < clean.size()) {
        return base::toLower(clean.substr(dot + 1));
    }
    const auto found = std::find_if(extensions.begin(), extensions.end(), [&](const auto& entry) {
        return base::equalsIgnoringCase(entry.first, mimeType);
    });
    return std::string(found == extensions.end() ? "bin" : found->second);
}

std::string attachmentBaseName(std::string_view name) {
    constexpr std::size_t mostCharacters = 80;
    constexpr std::size_t mostBytes = 180;  // file systems allow 255 with prefix, number and extension
    std::string clean(cleanName(name));
    clean.resize(extensionDot(clean));
    std::replace_if(
        clean.begin(), clean.end(),
        [](char c) {
            const auto code = static_cast<unsigned char>(c);
            return code < 0x20 || code == 0x7F ||
                   std::string_view("<>:\"|?*").find(c) != std::string_view::npos;
        },
        '_');
    std::string_view kept = cutToBytes(base::left(clean, mostCharacters), mostBytes);
    while (!kept.empty() && (kept.front() == '.' || kept.front() == ' ')) {
        kept.remove_prefix(1);
    }
    kept = base::trim(kept);
    return kept.empty() ? "attachment" : std::string(kept);
}

}  // namespace mail
