#include <optional>

#include "base/runtime_error.h"
#include "base/text.h"
#include "platform/posix/reg_format.h"
#include "platform/posix/reg_text.h"

namespace platform::posix {

namespace {

constexpr std::string_view white = " \t";
constexpr unsigned hexDigitBits = 4;

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(white);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(white) - begin + 1);
}

std::string utf8Of(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        if (bytes.size() % 2 != 0) {
            throw base::RuntimeError(base::ErrorNumber::invalidProcedureCall,
                                     "the text is UTF-16 and ends in half a character: the file is cut off");
        }
        return textOfUtf16(bytes.substr(2));
    }
    return std::string(bytes.starts_with("\xEF\xBB\xBF") ? bytes.substr(3) : bytes);
}

/// A number of hexadecimal digits only; nothing for more digits than 32 bits have.
std::optional<std::uint32_t> hexNumber(std::string_view digits) {
    constexpr std::string_view known = "0123456789abcdef";
    if (digits.empty() || digits.size() > 2 * sizeof(std::uint32_t)) {
        return std::nullopt;
    }
    std::uint32_t number = 0;
    for (const char digit : base::toLower(digits)) {
        const std::size_t value = known.find(digit);
        if (value == std::string_view::npos) {
            return std::nullopt;
        }
        number = number << hexDigitBits | static_cast<std::uint32_t>(value);
    }
    return number;
}

class Parser {
  public:
    explicit Parser(std::string_view bytes) : text_(utf8Of(bytes)), rest_(text_) {}

    std::vector<RegistryEdit> run() {
        readHeader();
        std::string_view line;
        while (nextLine(line)) {
            if (line.front() == '[') {
                readKey(line);
            } else if (line.front() == '@' || line.front() == '"') {
                readValue(line);
            } else {
                fail("this is neither a key nor a value");
            }
        }
        return std::move(edits_);
    }

  private:
    [[noreturn]] void fail(const std::string& what) const {
        throw base::RuntimeError(base::ErrorNumber::invalidProcedureCall,
                                 "line " + std::to_string(lineNumber_) + ": " + what);
    }

    /// The next line of the file without blanks around it; false at the end.
    bool nextPhysicalLine(std::string_view& line) {
        if (rest_.empty()) {
            return false;
        }
        const std::size_t end = rest_.find('\n');
        line = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        ++lineNumber_;
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        line = trimmed(line);
        return true;
    }

    /// The next line that is neither empty nor a comment.
    bool nextLine(std::string_view& line) {
        while (nextPhysicalLine(line)) {
            if (!line.empty() && line.front() != ';') {
                return true;
            }
        }
        return false;
    }

    void readHeader() {
        std::string_view line;
        const bool found = nextLine(line);
        isOld_ = found && base::equalsIgnoringCase(line, oldRegistryHeader);
        if (!isOld_ && (!found || !base::equalsIgnoringCase(line, registryHeader))) {
            fail("the text must begin with \"" + std::string(registryHeader) + "\" or \"" +
                 std::string(oldRegistryHeader) + "\"");
        }
    }

    void readKey(std::string_view line) {
        if (!line.ends_with(']')) {
            fail("the key has no closing ]");
        }
        std::string_view path = line.substr(1, line.size() - 2);
        const bool deletes = path.starts_with('-');
        path.remove_prefix(deletes ? 1 : 0);
        const std::size_t rootEnd = path.find('\\');
        const std::string_view root = path.substr(0, rootEnd);
        if (!base::equalsIgnoringCase(root, registryRoot) &&
            !base::equalsIgnoringCase(root, registryRootShort)) {
            fail("settings are kept below " + std::string(registryRoot) + " only, not below " +
                 std::string(root));
        }
        path.remove_prefix(rootEnd == std::string_view::npos ? path.size() : rootEnd + 1);
        if (path.empty() && deletes) {
            fail("all keys at once cannot be deleted");
        }
        key_ = path;
        canHoldValues_ = !deletes && !path.empty();
        if (!path.empty()) {
            add(deletes ? RegistryEdit::Kind::deleteKey : RegistryEdit::Kind::makeKey, {});
        }
    }

    void readValue(std::string_view line) {
        if (!canHoldValues_) {
            fail("a value must stand below the key that it belongs to");
        }
        SettingsValue value;
        if (line.front() == '"') {
            value.name = readQuoted(line);
        } else {
            line.remove_prefix(1);
        }
        line = trimmed(line);
        if (!line.starts_with('=')) {
            fail("there is no = behind the name of the value");
        }
        line = trimmed(line.substr(1));
        if (line == "-") {
            add(RegistryEdit::Kind::deleteValue, std::move(value));
            return;
        }
        readData(line, value);
        add(RegistryEdit::Kind::setValue, std::move(value));
    }

    void readData(std::string_view line, SettingsValue& value) {
        const std::size_t colon = line.find(':');
        const std::string kind = base::toLower(line.substr(0, colon));
        if (line.starts_with('"')) {
            value.type = ValueType::text;
            value.data = readQuoted(line);
            expectNothingMore(line);
        } else if (colon != std::string_view::npos && kind == "dword") {
            value.type = ValueType::number;
            value.data = readDword(line.substr(colon + 1));
        } else if (colon != std::string_view::npos && kind == "hex") {
            value.type = ValueType::binary;
            value.data = readHex(line.substr(colon + 1));
        } else if (colon != std::string_view::npos && kind.starts_with("hex(") && kind.ends_with(')')) {
            const auto type = hexNumber(std::string_view(kind).substr(4, kind.size() - 5));
            if (!type) {
                fail("the type in " + kind + " is no hexadecimal number");
            }
            value.type = ValueType{*type};
            value.data = storedForm(value.type, readHex(line.substr(colon + 1)));
        } else {
            fail("the data is none of \"text\", dword:, hex:, hex(n): and -");
        }
    }

    /// Takes a quoted text off the front of the line.
    std::string readQuoted(std::string_view& line) const {
        std::string text;
        for (std::size_t i = 1; i < line.size(); ++i) {
            if (line[i] == '"') {
                line.remove_prefix(i + 1);
                return text;
            }
            if (line[i] == '\\' && i + 1 < line.size()) {
                ++i;
                if (line[i] != '\\' && line[i] != '"') {
                    fail("a backslash in a text must be doubled");
                }
            }
            text += line[i];
        }
        fail("the text has no closing quote");
    }

    void expectNothingMore(std::string_view line) const {
        const std::string_view rest = trimmed(line);
        if (!rest.empty() && rest.front() != ';') {
            fail("there is more behind the data: " + std::string(rest));
        }
    }

    [[nodiscard]] std::string readDword(std::string_view digits) const {
        const auto number = hexNumber(trimmed(digits.substr(0, digits.find(';'))));
        if (!number) {
            fail("dword: needs one to eight hexadecimal digits");
        }
        std::string bytes;
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<char>(*number >> shift));
        }
        return bytes;
    }

    std::string readHex(std::string_view line) {
        std::string bytes;
        bool goesOn = true;
        while (goesOn) {
            line = trimmed(line.substr(0, line.find(';')));
            goesOn = line.ends_with('\\');
            line.remove_suffix(goesOn ? 1 : 0);
            for (const std::string_view part : base::split(line, ',')) {
                const std::string_view digits = trimmed(part);
                const auto byte = hexNumber(digits);
                if (!digits.empty() && (!byte || digits.size() > 2)) {
                    fail("\"" + std::string(digits) + "\" is not a byte of two hexadecimal digits");
                }
                if (byte) {
                    bytes.push_back(static_cast<char>(*byte));
                }
            }
            if (goesOn && !nextPhysicalLine(line)) {
                fail("the text ends in the middle of a value");
            }
        }
        return bytes;
    }

    /// Text without its ending NUL, in the bytes in which settings keep it; anything else as it is.
    [[nodiscard]] std::string storedForm(ValueType type, std::string bytes) const {
        if (type != ValueType::text && type != ValueType::expandableText) {
            return bytes;
        }
        if (!isOld_ && bytes.size() % 2 != 0) {
            fail("the bytes of a text must be UTF-16, an even number of them");
        }
        std::string text = isOld_ ? std::move(bytes) : textOfUtf16(bytes);
        if (text.ends_with('\0')) {
            text.pop_back();
        }
        return text;
    }

    void add(RegistryEdit::Kind kind, SettingsValue value) {
        edits_.push_back({kind, std::string(key_), std::move(value)});
    }

    std::string text_;
    std::string_view rest_;
    int lineNumber_ = 0;
    bool isOld_ = false;
    std::string_view key_;
    bool canHoldValues_ = false;
    std::vector<RegistryEdit> edits_;
};

}  // namespace

std::vector<RegistryEdit> parseRegistryText(std::string_view bytes) {
    return Parser(bytes).run();
}

}  // namespace platform::posix
