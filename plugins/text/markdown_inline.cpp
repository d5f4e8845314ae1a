#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "text/markdown.h"

namespace text {
namespace {

/// How far a mark looks for its end. It keeps the time in proportion to the length of the text.
constexpr std::size_t reach = 1024;

constexpr std::array<std::pair<std::string_view, std::string_view>, 5> entities{
    {{"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&nbsp;", " "}}};

class InlineReader {
  public:
    explicit InlineReader(std::string_view text) : text_(text) {}

    std::string read() {
        while (position_ < text_.size()) {
            readOne();
        }
        removeMarked();
        return std::move(out_);
    }

  private:
    [[nodiscard]] char at(std::size_t position) const {
        return position < text_.size() ? text_[position] : '\0';
    }
    [[nodiscard]] static bool isBlank(char c) { return c == '\0' || c == ' ' || c == '\n' || c == '\t'; }
    [[nodiscard]] static bool isWord(char c) {
        return (c & 0x80) != 0 || std::isalnum(static_cast<unsigned char>(c)) != 0;
    }
    [[nodiscard]] std::size_t runLength(char mark) const {
        std::size_t length = 0;
        while (at(position_ + length) == mark) {
            ++length;
        }
        return length;
    }
    void keep(std::size_t count) {
        out_.append(text_.substr(position_, count));
        position_ += count;
    }

    void readOne() {
        switch (text_[position_]) {
            case '\\':
                return readEscape();
            case '`':
                return readCode();
            case '*':
            case '_':
            case '~':
                return readEmphasis();
            case '[':
                openBrackets_.push_back(out_.size());
                return keep(1);
            case ']':
                return readLinkEnd();
            case '<':
                return readTag();
            case '&':
                return readEntity();
            default:
                return keep(std::min(text_.find_first_of("\\`*_~[]<&", position_), text_.size()) - position_);
        }
    }

    void readEscape() {
        const bool escapes = std::ispunct(static_cast<unsigned char>(at(position_ + 1))) != 0;
        position_ += escapes ? 1 : 0;
        keep(1);
    }

    /// Text between two runs of the same number of backticks stays as it is.
    void readCode() {
        const std::size_t length = runLength('`');
        position_ += length;
        const std::string_view ahead = text_.substr(position_, reach);
        for (std::size_t end = ahead.find('`'); end != std::string_view::npos; end = ahead.find('`', end)) {
            const std::size_t next = std::min(ahead.find_first_not_of('`', end), ahead.size());
            if (next - end == length) {
                keep(end);
                position_ += length;
                return;
            }
            end = next;
        }
        out_.append(length, '`');
    }

    /// "*" goes unless it stands between blanks, "_" only at the edge of a word, "~" only in pairs.
    void readEmphasis() {
        const char mark = text_[position_];
        const std::size_t length = runLength(mark);
        const char before = position_ == 0 ? '\0' : text_[position_ - 1];
        const char after = at(position_ + length);
        const bool isFree = isBlank(before) && isBlank(after);
        const bool isInside = isWord(before) && isWord(after);
        if (isFree || (mark == '_' && isInside) || (mark == '~' && length != 2)) {
            keep(length);
        } else {
            position_ += length;
        }
    }

    /// "](target)" and "][name]" turn what the bracket holds into a link's text.
    void readLinkEnd() {
        const char next = at(position_ + 1);
        const std::size_t end = openBrackets_.empty() ? 0
                                : next == '('         ? targetEnd(position_ + 1)
                                : next == '['         ? bracketEnd(position_ + 1)
                                                      : 0;
        if (end > 0) {
            const std::size_t open = openBrackets_.back();
            removed_.push_back(open);
            if (open > 0 && out_[open - 1] == '!') {
                removed_.push_back(open - 1);
            }
            position_ = end;
        } else {
            keep(1);
        }
        if (!openBrackets_.empty()) {
            openBrackets_.pop_back();
        }
    }

    /// The position behind the ")" that closes the "(" at `open`; 0 where there is none near.
    [[nodiscard]] std::size_t targetEnd(std::size_t open) const {
        int depth = 0;
        for (std::size_t i = open; i < text_.size() && i < open + reach; ++i) {
            depth += text_[i] == '(' ? 1 : text_[i] == ')' ? -1 : 0;
            if (depth == 0) {
                return i + 1;
            }
        }
        return 0;
    }

    [[nodiscard]] std::size_t bracketEnd(std::size_t open) const {
        const std::size_t end = text_.substr(open, reach).find(']');
        return end == std::string_view::npos ? 0 : open + end + 1;
    }

    /// Tags and comments go; an address in angle brackets stays without them.
    void readTag() {
        const char next = at(position_ + 1);
        const bool comment = text_.substr(position_, 4) == "<!--";
        const std::string_view ahead = text_.substr(position_, reach);
        const std::size_t end = comment ? ahead.find("-->") : ahead.find('>');
        const bool tag = comment || next == '/' || std::isalpha(static_cast<unsigned char>(next)) != 0;
        if (!tag || end == std::string_view::npos) {
            keep(1);
            return;
        }
        const std::string_view content = ahead.substr(1, end - 1);
        const bool isAddress = !comment && content.find_first_of(":@") != std::string_view::npos &&
                               content.find_first_of(" \t\n\"") == std::string_view::npos;
        out_.append(isAddress ? content : std::string_view(" "));
        position_ += end + (comment ? 3 : 1);
    }

    void readEntity() {
        for (const auto& [name, character] : entities) {
            if (text_.substr(position_, name.size()) == name) {
                out_.append(character);
                position_ += name.size();
                return;
            }
        }
        keep(1);
    }

    /// Takes the brackets of links out of the result, all in one pass.
    void removeMarked() {
        if (removed_.empty()) {
            return;
        }
        std::sort(removed_.begin(), removed_.end());
        std::string kept;
        kept.reserve(out_.size());
        std::size_t from = 0;
        for (const std::size_t position : removed_) {
            kept.append(out_, from, position - from);
            from = position + 1;
        }
        kept.append(out_, from);
        out_ = std::move(kept);
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::string out_;
    std::vector<std::size_t> openBrackets_;  // where they stand in out_
    std::vector<std::size_t> removed_;
};

}  // namespace

std::string withoutInlineMarks(std::string_view paragraph) {
    return InlineReader(paragraph).read();
}

}  // namespace text
