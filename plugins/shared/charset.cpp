#include "shared/charset.h"

#include <unicode/ucnv.h>
#include <unicode/ucsdet.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "base/byte_chunk.h"

namespace shared {
namespace {

constexpr const char* fallbackCharset = "windows-1252";

struct ByteOrderMark {
    std::string_view bytes;
    const char* charset;
};

/// UTF-32 stands before UTF-16, whose little-endian mark it begins with.
constexpr std::array<ByteOrderMark, 5> marks{{{{"\xEF\xBB\xBF", 3}, "UTF-8"},
                                              {{"\xFF\xFE\0\0", 4}, "UTF-32LE"},
                                              {{"\0\0\xFE\xFF", 4}, "UTF-32BE"},
                                              {{"\xFF\xFE", 2}, "UTF-16LE"},
                                              {{"\xFE\xFF", 2}, "UTF-16BE"}}};

/// First bytes of formats that hold few enough control characters to pass for text.
constexpr std::array<std::string_view, 12> binaryBeginnings{{{"%PDF-", 5},
                                                             {"PK\x03\x04", 4},
                                                             {"\x7F"
                                                              "ELF",
                                                              4},
                                                             {"\x89PNG", 4},
                                                             {"GIF87a", 6},
                                                             {"GIF89a", 6},
                                                             {"\xFF\xD8\xFF", 3},
                                                             {"\x1F\x8B\x08", 3},
                                                             {"BZh9", 4},
                                                             {"7z\xBC\xAF", 4},
                                                             {"Rar!\x1A", 5},
                                                             {"\xD0\xCF\x11\xE0", 4}}};

const ByteOrderMark* markOf(std::string_view bytes) {
    const auto found = std::find_if(marks.begin(), marks.end(), [&](const ByteOrderMark& mark) {
        return bytes.substr(0, mark.bytes.size()) == mark.bytes;
    });
    return found == marks.end() ? nullptr : found;
}

bool holdsNul(std::string_view bytes) {
    return !bytes.empty() && std::memchr(bytes.data(), '\0', bytes.size()) != nullptr;
}

/// UTF-16 without a mark: NUL bytes on one side of the pairs only, and in a quarter of the pairs at least.
std::optional<std::string> unmarkedUtf16(std::string_view bytes) {
    const std::string_view sample = bytes.substr(0, binarySample);
    if (!holdsNul(sample)) {
        return std::nullopt;  // as nearly every text; counting would look at each byte
    }
    std::array<std::size_t, 2> nuls{};
    for (std::size_t i = 0; i < sample.size(); ++i) {
        nuls[i % 2] += sample[i] == '\0' ? 1 : 0;
    }
    const std::size_t pairs = sample.size() / 2;
    if (nuls[0] == 0 && nuls[1] * 4 > pairs) {
        return "UTF-16LE";
    }
    if (nuls[1] == 0 && nuls[0] * 4 > pairs) {
        return "UTF-16BE";
    }
    return std::nullopt;
}

/// How many control characters there are that texts do not use. ESC is not among them: ISO-2022 encodings are
/// made of it. The counting has no branches and sums up in bytes, so that the compiler makes it one of many
/// bytes at once.
std::size_t countControls(std::string_view bytes) {
    constexpr std::size_t block = 128;  // a sum of as many fits in a byte
    std::size_t controls = 0;
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, block);
        std::uint8_t sum = 0;
        for (const char character : part) {
            const auto code = static_cast<std::uint8_t>(character);
            const bool low = code < 0x20;
            const bool used = code == 0x1B || static_cast<std::uint8_t>(code - 0x08) <= 0x0D - 0x08;
            sum = static_cast<std::uint8_t>(sum + static_cast<std::uint8_t>((low & !used) | (code == 0x7F)));
        }
        controls += sum;
        bytes.remove_prefix(part.size());
    }
    return controls;
}

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

Converter openConverter(const std::string& charset) {
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(charset.empty() ? nullptr : ucnv_open(charset.c_str(), &status), ucnv_close);
    return U_SUCCESS(status) ? std::move(converter) : Converter(nullptr, ucnv_close);
}

/// The encoding that the bytes look like; empty when nothing speaks for any.
std::string detectCharset(std::string_view bytes) {
    constexpr std::size_t enough = std::size_t{1} << 17;
    constexpr std::int32_t leastConfidence = 20;  // a few words give no more by chance
    // A sample from the first byte that is not ASCII on tells more than the ASCII before it.
    const auto first = std::find_if(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) != 0; });
    const auto start = static_cast<std::size_t>(first - bytes.begin());
    const std::string_view sample = bytes.substr(start > enough / 2 ? start - enough / 2 : 0, enough);

    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, decltype(&ucsdet_close)> detector(ucsdet_open(&status),
                                                                              ucsdet_close);
    ucsdet_setText(detector.get(), sample.data(), static_cast<std::int32_t>(sample.size()), &status);
    const UCharsetMatch* match = ucsdet_detect(detector.get(), &status);
    if (U_FAILURE(status) || match == nullptr || ucsdet_getConfidence(match, &status) < leastConfidence) {
        return {};
    }
    const std::string name = ucsdet_getName(match, &status);
    // Every byte above 127 is a character in windows-1252, and the same one wherever ISO-8859-1 has one.
    return U_FAILURE(status) || name == "ISO-8859-1" ? fallbackCharset : name;
}

std::string convert(std::string_view bytes, UConverter* from) {
    const Converter to = openConverter("UTF-8");
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    std::array<char, 1 << 14> room;
    std::array<UChar, 1 << 13> pivot;
    UChar* pivotSource = pivot.data();
    UChar* pivotTarget = pivot.data();
    const char* source = bytes.data();
    const char* const end = bytes.data() + bytes.size();
    UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
    for (UBool reset = true; status == U_BUFFER_OVERFLOW_ERROR; reset = false) {
        status = U_ZERO_ERROR;
        char* target = room.data();
        ucnv_convertEx(to.get(), from, &target, room.data() + room.size(), &source, end, pivot.data(),
                       &pivotSource, &pivotTarget, pivot.data() + pivot.size(), reset, true, &status);
        text.append(room.data(), target);
    }
    return text;
}

std::string_view withoutMark(std::string_view text) {
    const ByteOrderMark* mark = markOf(text);
    return mark == nullptr ? text : text.substr(mark->bytes.size());
}

}  // namespace

bool looksBinary(std::string_view bytes) {
    const bool known = std::any_of(binaryBeginnings.begin(), binaryBeginnings.end(), [&](auto beginning) {
        return bytes.substr(0, beginning.size()) == beginning;
    });
    if (known) {
        return true;
    }
    const ByteOrderMark* mark = markOf(bytes);
    const bool wide = (mark != nullptr && mark->charset != std::string_view("UTF-8")) || unmarkedUtf16(bytes);
    if (wide || bytes.empty()) {
        return false;
    }
    return holdsNul(bytes) || countControls(bytes) > 8 + bytes.size() / 50;
}

bool isUtf8(std::string_view text) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto size = static_cast<std::int64_t>(text.size());
    std::int64_t position = 0;
    while (position < size) {
        position += static_cast<std::int64_t>(base::findByte(
            text.substr(static_cast<std::size_t>(position)),
            [](base::ByteChunk chunk) { return chunk.hasBeyondAscii(); },
            [](char byte) { return (byte & 0x80) != 0; }));
        while (position < size && bytes[position] >= 0x80) {
            UChar32 codePoint = 0;
            U8_NEXT(bytes, position, size, codePoint);
            if (codePoint < 0) {
                return false;
            }
        }
    }
    return true;
}

std::string toUtf8(std::string bytes) {
    if (const ByteOrderMark* mark = markOf(bytes)) {
        const Converter converter = openConverter(mark->charset);
        return convert(withoutMark(bytes), converter.get());
    }
    if (const auto charset = unmarkedUtf16(bytes)) {
        return convert(bytes, openConverter(*charset).get());
    }
    if (isUtf8(bytes)) {
        return bytes;
    }
    Converter converter = openConverter(detectCharset(bytes));
    if (!converter) {
        converter = openConverter(fallbackCharset);
    }
    return convert(bytes, converter.get());
}

std::string toUtf8(std::string bytes, const std::string& charset) {
    const Converter named = openConverter(charset);
    UErrorCode status = U_ZERO_ERROR;
    const std::string_view name = named ? ucnv_getName(named.get(), &status) : "";
    if (name.empty() || name == "US-ASCII" || markOf(bytes) != nullptr) {
        return toUtf8(std::move(bytes));
    }
    if (name == "UTF-8") {
        return isUtf8(bytes) ? std::move(bytes) : toUtf8(std::move(bytes));
    }
    return convert(bytes, named.get());
}

}  // namespace shared
