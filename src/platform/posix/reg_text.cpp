#include "platform/posix/reg_text.h"

#include <cstdint>

#include "base/text.h"

namespace platform::posix {

namespace {

constexpr char32_t firstHighSurrogate = 0xD800;
constexpr char32_t firstLowSurrogate = 0xDC00;
constexpr char32_t behindSurrogates = 0xE000;
constexpr char32_t firstBeyondPlane = 0x10000;
constexpr unsigned surrogateBits = 10;
constexpr char32_t surrogateMask = 0x3FF;
constexpr unsigned byteBits = 8;

char32_t unitAt(std::string_view bytes, std::size_t position) {
    return static_cast<unsigned char>(bytes[position]) |
           static_cast<char32_t>(static_cast<unsigned char>(bytes[position + 1])) << byteBits;
}

void appendUnit(std::string& bytes, char32_t unit) {
    bytes.push_back(static_cast<char>(unit & 0xFFU));
    bytes.push_back(static_cast<char>(unit >> byteBits));
}

bool isHigh(char32_t unit) {
    return unit >= firstHighSurrogate && unit < firstLowSurrogate;
}

bool isLow(char32_t unit) {
    return unit >= firstLowSurrogate && unit < behindSurrogates;
}

}  // namespace

std::string textOfUtf16(std::string_view bytes) {
    std::string text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        char32_t point = unitAt(bytes, i);
        if (isHigh(point) && i + 3 < bytes.size() && isLow(unitAt(bytes, i + 2))) {
            point = firstBeyondPlane + ((point - firstHighSurrogate) << surrogateBits) +
                    (unitAt(bytes, i + 2) - firstLowSurrogate);
            i += 2;
        }
        base::appendCodePoint(text, point);
    }
    return text;
}

std::string utf16OfText(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size();) {
        const char32_t point = base::codePointAt(text, i, i);
        if (point < firstBeyondPlane) {
            appendUnit(bytes, point);
        } else {
            const char32_t beyond = point - firstBeyondPlane;
            appendUnit(bytes, firstHighSurrogate + (beyond >> surrogateBits));
            appendUnit(bytes, firstLowSurrogate + (beyond & surrogateMask));
        }
    }
    return bytes;
}

}  // namespace platform::posix
