#include "mail/uuencode.h"

#include <gmime/gmime.h>

#include <algorithm>

#include "shared/sentences.h"

namespace mail {
namespace {

/// The name in "begin 644 name"; empty for any other line.
std::string_view nameInBeginLine(std::string_view line) {
    constexpr std::string_view word = "begin ";
    if (!line.starts_with(word)) {
        return {};
    }
    line.remove_prefix(word.size());
    const std::size_t digits = std::min(line.find_first_not_of("01234567"), line.size());
    const bool isMode = digits == 3 || digits == 4;
    return isMode && line.size() > digits + 1 && line[digits] == ' ' ? line.substr(digits + 1)
                                                                     : std::string_view();
}

/// Decodes the lines between the first and the last one.
std::string decode(std::string_view lines) {
    std::string bytes(lines.size(), '\0');
    int state = GMIME_UUDECODE_STATE_BEGIN;
    guint32 saved = 0;
    auto* const target = reinterpret_cast<unsigned char*>(bytes.data());
    const auto* const source = reinterpret_cast<const unsigned char*>(lines.data());
    bytes.resize(g_mime_encoding_uudecode_step(source, lines.size(), target, &state, &saved));
    return bytes;
}

}  // namespace

std::optional<EncodedFile> findEncodedFile(std::string_view text) {
    std::size_t begin = std::string_view::npos;
    std::size_t content = 0;
    std::string_view name;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t start = text.size() - rest.size();
        const std::string_view line = shared::takeLine(rest);
        if (begin == std::string_view::npos) {
            name = nameInBeginLine(line);
            begin = name.empty() ? begin : start;
            content = text.size() - rest.size();
        } else if (line == "end") {
            return EncodedFile{text.substr(0, begin), std::string(name),
                               decode(text.substr(content, start - content)), rest};
        }
    }
    return std::nullopt;
}

}  // namespace mail
