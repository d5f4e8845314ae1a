#include "windows/plugin/text_document.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "windows/com_server/server_object.h"

namespace test_plugin {
namespace {

std::wstring trimmed(const std::wstring& text) {
    const std::size_t begin = text.find_first_not_of(L" \r");
    return begin == std::wstring::npos ? std::wstring()
                                       : text.substr(begin, text.find_last_not_of(L" \r") + 1 - begin);
}

/// The text in front of a separator and the one behind it.
Typed divided(const std::wstring& text, wchar_t separator) {
    const std::size_t place = std::min(text.find(separator), text.size());
    return {trimmed(text.substr(0, place)), trimmed(text.substr(std::min(place + 1, text.size())))};
}

void readLine(const std::wstring& line, TextDocument& document) {
    const auto rest = [&line](std::size_t marker) { return trimmed(line.substr(marker)); };
    if (line.starts_with(L"Title: ")) {
        document.title = rest(7);
    } else if (line.starts_with(L"Modified: ")) {
        document.modified = rest(10);
    } else if (line.starts_with(L"# ")) {
        document.headings.push_back({L"heading", rest(2)});
    } else if (line.starts_with(L"> ")) {
        document.comments.push_back(divided(rest(2), L'|'));
    } else if (line.starts_with(L"@")) {
        document.tags.push_back(divided(rest(1), L' '));
    } else if (line.starts_with(L"+ ")) {
        document.files.push_back(rest(2));
    } else if (!trimmed(line).empty()) {
        document.sentences.push_back(trimmed(line));
    }
}

}  // namespace

bool readDocument(const std::wstring& path, TextDocument& document) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) {
        return false;
    }
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    document.path = path;
    document.size = static_cast<long>(bytes.size());
    const std::wstring text = com_server::utf16(bytes);
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(L'\n', begin), text.size());
        readLine(text.substr(begin, end - begin), document);
        begin = end + 1;
    }
    return true;
}

}  // namespace test_plugin
