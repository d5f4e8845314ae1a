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

// Half a pair is no character and has no place in UTF-8. It is kept as the three bytes that its number would
// have there, which valid text never has.

constexpr std::size_t halfPairSize = 3;

void appendHalfPair(std::string& utf8, char32_t half) {
    utf8 += static_cast<char>(0xE0U | (half >> 12U));
    utf8 += static_cast<char>(0x80U | ((half >> 6U) & 0x3FU));
    utf8 += static_cast<char>(0x80U | (half & 0x3FU));
}

/// The half of a pair whose bytes stand at a position; 0 when no such bytes do.
char32_t halfPairAt(std::string_view text, std::size_t position) {
    if (text.size() - position < halfPairSize) {
        return 0;
    }
    const auto lead = static_cast<unsigned char>(text[position]);
    const auto second = static_cast<unsigned char>(text[position + 1]);
    const auto third = static_cast<unsigned char>(text[position + 2]);
    const bool isHalf = lead == 0xED && second >= 0xA0 && second <= 0xBF && third >= 0x80 && third <= 0xBF;
    return isHalf ? 0xD000U | (static_cast<char32_t>(second & 0x3FU) << 6U) | (third & 0x3FU) : 0;
}

}  // namespace

std::wstring toUtf16(std::string_view text) {
    std::wstring wide;
    wide.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        if (const char32_t half = halfPairAt(text, position); half != 0) {
            wide += static_cast<wchar_t>(half);
            position += halfPairSize;
            continue;
        }
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
        const char32_t unit = text[i];
        const bool isHigh = isSurrogate(text[i], firstHighSurrogate);
        if (isHigh && i + 1 < text.size() && isSurrogate(text[i + 1], firstLowSurrogate)) {
            base::appendCodePoint(utf8, firstSupplementary + (unit - firstHighSurrogate) * surrogatesOfAKind +
                                            (text[++i] - firstLowSurrogate));
        } else if (isHigh || isSurrogate(text[i], firstLowSurrogate)) {
            appendHalfPair(utf8, unit);
        } else {
            base::appendCodePoint(utf8, unit);
        }
    }
    return utf8;
}

}  // namespace platform::windows
