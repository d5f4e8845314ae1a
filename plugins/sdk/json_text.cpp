#include "sdk/json_text.h"

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string_view>

#include "base/byte_chunk.h"
#include "base/text.h"
#include "platform/plugin_protocol.h"

namespace sdk {
namespace {

using nlohmann::json;

void appendByLibrary(std::string& to, const json& value) {
    to += value.dump(-1, ' ', false, json::error_handler_t::replace);
}

/// How many bytes stand for themselves in a JSON text before one of ASCII that does not; in `valid`, whether
/// these are UTF-8.
std::size_t plainLength(std::string_view text, bool& valid) {
    std::size_t length = 0;
    for (valid = true; valid;) {
        length += base::findByte(
            text.substr(length),
            [](base::ByteChunk chunk) {
                return chunk.hasBeyondAscii() || chunk.has('"') || chunk.has('\\') || chunk.hasLessThan(' ');
            },
            [](char c) { return (c & 0x80) != 0 || c == '"' || c == '\\' || c < ' '; });
        if (length == text.size() || (text[length] & 0x80) == 0) {
            break;
        }
        const char32_t codePoint = base::codePointAt(text, length, length);
        valid = codePoint < 0xDC80 || codePoint > 0xDCFF;  // no text holds these; they stand for stray bytes
    }
    return length;
}

char shortEscape(char character) {
    constexpr std::string_view characters = "\"\\\b\f\n\r\t";
    constexpr std::string_view escapes = "\"\\bfnrt";
    const std::size_t which = characters.find(character);
    return which == std::string_view::npos ? '\0' : escapes[which];
}

void appendText(std::string& to, const std::string& text) {
    const std::size_t start = to.size();
    std::string_view rest = text;
    to += '"';
    for (;;) {
        bool valid = true;
        const std::size_t plain = plainLength(rest, valid);
        const char escape = plain < rest.size() ? shortEscape(rest[plain]) : '\0';
        if (!valid || (plain < rest.size() && escape == '\0')) {
            to.resize(start);
            appendByLibrary(to, text);
            return;
        }
        to.append(rest, 0, plain);
        if (plain == rest.size()) {
            break;
        }
        to.append({'\\', escape});
        rest.remove_prefix(plain + 1);
    }
    to += '"';
}

}  // namespace

void appendJson(std::string& to, const base::Variant& value) {
    if (const auto* text = std::get_if<std::string>(&value.value())) {
        appendText(to, *text);
    } else {
        appendByLibrary(to, platform::plugin_protocol::valueToJson<json>(value));
    }
}

}  // namespace sdk
