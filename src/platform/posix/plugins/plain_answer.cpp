#include "platform/posix/plugins/plain_answer.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "base/byte_chunk.h"
#include "base/text.h"

namespace platform::posix {
namespace {

/// Goes through a line and gives up at whatever it does not know. What it accepts means the same to every
/// reader of JSON: no name stands twice, and a text is valid UTF-8 without control characters.
class Scanner {
  public:
    explicit Scanner(std::string_view line) : rest_(line) {}

    bool readMessage(PluginAnswer& answer) {
        enum : unsigned { version = 1, id = 2, result = 4 };
        unsigned seen = 0;
        const bool read = readObject([&](std::string_view name) {
            if (name == "jsonrpc") {
                std::string text;
                return once(seen, version) && readText(text);
            }
            if (name == "id") {
                skipBlanks();
                return once(seen, id) && readInteger(answer.request);
            }
            return name == "result" && once(seen, result) && readResult(answer);
        });
        skipBlanks();
        return read && rest_.empty() && (seen & (id | result)) == (id | result);
    }

  private:
    static bool once(unsigned& seen, unsigned part) { return (std::exchange(seen, seen | part) & part) == 0; }

    bool readResult(PluginAnswer& answer) {
        return readObject([&](std::string_view name) {
            if (name == "results" && !answer.results) {
                return readValues(answer.results.emplace());
            }
            if (name == "result" && !answer.result) {
                return readValue(answer.result.emplace());
            }
            return name == "more" && !answer.more && readTruth(answer.more.emplace());
        });
    }

    /// Calls `readMember` for each name, to read what it stands for.
    template <class ReadMember>
    bool readObject(ReadMember readMember) {
        if (!take('{')) {
            return false;
        }
        do {
            std::string name;
            if (!readText(name) || !take(':') || !readMember(std::string_view(name))) {
                return false;
            }
        } while (take(','));
        return take('}');
    }

    bool readValues(std::vector<base::Variant>& values) {
        if (!take('[')) {
            return false;
        }
        if (take(']')) {
            return true;
        }
        do {
            if (!readValue(values.emplace_back())) {
                return false;
            }
        } while (take(','));
        return take(']');
    }

    bool readValue(base::Variant& value) {
        skipBlanks();
        if (rest_.starts_with('"')) {
            std::string text;
            const bool read = readText(text);
            value = std::move(text);
            return read;
        }
        if (takeWord("null")) {
            return true;
        }
        if (bool truth = false; readTruth(truth)) {
            value = truth;
            return true;
        }
        const bool negative = takeWord("-");
        std::int64_t number = 0;
        const bool read = readInteger(number);
        value = static_cast<std::int32_t>(negative ? -number : number);
        return read;
    }

    bool readTruth(bool& truth) {
        skipBlanks();
        truth = takeWord("true");
        return truth || takeWord("false");
    }

    /// A whole number that is not negative and fits in 32 bits, without a fraction or an exponent.
    bool readInteger(std::int64_t& number) {
        constexpr std::size_t mostDigits = 9;
        std::size_t digits = 0;
        for (number = 0;
             digits < rest_.size() && rest_[digits] >= '0' && rest_[digits] <= '9' && digits <= mostDigits;
             ++digits) {
            number = number * 10 + (rest_[digits] - '0');
        }
        const bool padded = digits > 1 && rest_[0] == '0';
        const std::string_view after = rest_.substr(digits, 1);
        rest_.remove_prefix(digits);
        return digits > 0 && digits <= mostDigits && !padded &&
               after.find_first_of(".eE") == std::string_view::npos;
    }

    bool readText(std::string& text) {
        if (!take('"')) {
            return false;
        }
        for (;;) {
            const std::size_t plain = plainLength();
            text.append(rest_, 0, plain);
            rest_.remove_prefix(plain);
            if (rest_.empty()) {
                return false;
            }
            if (rest_.front() == '"') {
                rest_.remove_prefix(1);
                return true;
            }
            if (!(rest_.front() == '\\' ? takeEscape(text) : takeCharacter(text))) {
                return false;
            }
        }
    }

    /// How many bytes of ASCII stand for themselves before something that does not.
    [[nodiscard]] std::size_t plainLength() const {
        return base::findByte(
            rest_,
            [](base::ByteChunk chunk) {
                return chunk.hasBeyondAscii() || chunk.has('"') || chunk.has('\\') || chunk.hasLessThan(' ');
            },
            [](char c) { return (c & 0x80) != 0 || c == '"' || c == '\\' || c < ' '; });
    }

    bool takeEscape(std::string& text) {
        constexpr std::string_view escapes = "\"\\/bfnrt";
        constexpr std::string_view characters = "\"\\/\b\f\n\r\t";
        const char kind = rest_.size() > 1 ? rest_[1] : '\0';
        rest_.remove_prefix(std::min<std::size_t>(rest_.size(), 2));
        if (kind == 'u') {
            return takeNumbered(text);
        }
        const std::size_t which = escapes.find(kind);
        if (which == std::string_view::npos) {
            return false;
        }
        text += characters[which];
        return true;
    }

    /// The four digits of a character's number. Pairs of such, for what is beyond them, are left to the
    /// library.
    bool takeNumbered(std::string& text) {
        constexpr std::size_t digits = 4;
        std::uint32_t number = 0;
        const char* const end = rest_.data() + std::min(rest_.size(), digits);
        if (std::from_chars(rest_.data(), end, number, 16).ptr != rest_.data() + digits ||
            (number >= 0xD800 && number <= 0xDFFF)) {
            return false;
        }
        base::appendCodePoint(text, number);
        rest_.remove_prefix(digits);
        return true;
    }

    /// A character beyond ASCII; false for a control character and for bytes that are no UTF-8.
    bool takeCharacter(std::string& text) {
        std::size_t next = 1;
        const char32_t codePoint = base::codePointAt(rest_, 0, next);
        const bool stray = codePoint >= 0xDC80 && codePoint <= 0xDCFF;
        text.append(rest_, 0, next);
        rest_.remove_prefix(next);
        return codePoint >= 0x80 && !stray;
    }

    void skipBlanks() {
        const std::size_t first = rest_.find_first_not_of(" \t\r\n");
        rest_.remove_prefix(first == std::string_view::npos ? rest_.size() : first);
    }

    bool take(char mark) {
        skipBlanks();
        const bool found = rest_.starts_with(mark);
        rest_.remove_prefix(found ? 1 : 0);
        return found;
    }

    bool takeWord(std::string_view word) {
        const bool found = rest_.starts_with(word);
        rest_.remove_prefix(found ? word.size() : 0);
        return found;
    }

    std::string_view rest_;
};

}  // namespace

std::optional<PluginAnswer> readPlainAnswer(std::string_view line) {
    PluginAnswer answer;
    return Scanner(line).readMessage(answer) ? std::optional(std::move(answer)) : std::nullopt;
}

}  // namespace platform::posix
