#include "platform/windows/utf16.h"

#include "base/text.h"

namespace platform::windows {
namespace {

constexpr char32_t firstSupplementary = 0x10000;
constexpr char32_t firstHighSurrogate = 0xD800;
constexpr char32_t firstLowSurrogate = 0xDC00;
constexpr char32_t surrogatesOfAKind = 0x400;

bool isSurrogate(wchar_t unit, char32_t first) {
    return unit >= first && unit < first + surrogatesOfAKind;
}

}  // namespace

std::wstring toUtf16(std::string_view text) {
    std::wstring wide;
    wide.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const char32_t point = base::codePointAt(text, position, position);
        if (point < firstSupplementary) {
            wide += static_cast<wchar_t>(point);
        } else {
            const char32_t rest = point - firstSupplementary;
            wide += static_cast<wchar_t>(firstHighSurrogate + rest / surrogatesOfAKind);
            wide += static_cast<wchar_t>(firstLowSurrogate + rest % surrogatesOfAKind);
        }
    }
    return wide;
}

std::string toUtf8(std::wstring_view text) {
    std::string utf8;
    utf8.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t point = text[i];
        if (isSurrogate(text[i], firstHighSurrogate) && i + 1 < text.size() &&
            isSurrogate(text[i + 1], firstLowSurrogate)) {
            point = firstSupplementary + (point - firstHighSurrogate) * surrogatesOfAKind +
                    (text[++i] - firstLowSurrogate);
        }
        base::appendCodePoint(utf8, point);
    }
    return utf8;
}

}  // namespace platform::windows
