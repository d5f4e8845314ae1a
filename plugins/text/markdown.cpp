#include "text/markdown.h"

#include <algorithm>
#include <utility>

namespace text {
namespace {

/// A paragraph this long is handed on before its end; it is no heading any more.
constexpr std::size_t longestParagraph = std::size_t{1} << 20;

std::string_view trimmed(std::string_view line) {
    const std::size_t first = line.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view()
                                           : line.substr(first, line.find_last_not_of(" \t") - first + 1);
}

bool consistsOf(std::string_view text, char mark) {
    return !text.empty() && text.find_first_not_of(mark) == std::string_view::npos;
}

/// How many of one of the fence marks the line begins with, when they are enough for a fence.
std::size_t fenceLength(std::string_view line) {
    constexpr std::size_t shortest = 3;
    if (line.empty() || (line[0] != '`' && line[0] != '~')) {
        return 0;
    }
    const std::size_t length = std::min(line.find_first_not_of(line[0]), line.size());
    const bool isInlineCode = line[0] == '`' && line.find('`', length) != std::string_view::npos;
    return length >= shortest && !isInlineCode ? length : 0;
}

/// The level of an ATX heading, "#" to "######"; 0 where there is none.
std::size_t headingLevel(std::string_view line) {
    constexpr std::size_t deepest = 6;
    const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
    const bool ends = level == line.size() || line[level] == ' ' || line[level] == '\t';
    return level <= deepest && ends ? level : 0;
}

/// Without "#" marks at the end that stand behind a blank.
std::string_view withoutClosingMarks(std::string_view heading) {
    const std::size_t last = heading.find_last_not_of('#');
    if (last == std::string_view::npos) {
        return {};
    }
    return heading[last] == ' ' || heading[last] == '\t' ? trimmed(heading.substr(0, last)) : heading;
}

/// "---", "* * *" and the like.
bool isThematicBreak(std::string_view line) {
    constexpr std::ptrdiff_t fewest = 3;
    if (line.empty() || (line[0] != '-' && line[0] != '*' && line[0] != '_')) {
        return false;
    }
    const auto marks = std::count(line.begin(), line.end(), line[0]);
    const auto blanks = std::count_if(line.begin(), line.end(), [](char c) { return c == ' ' || c == '\t'; });
    return marks >= fewest && marks + blanks == static_cast<std::ptrdiff_t>(line.size());
}

/// The line under the head of a table: bars, dashes, colons and blanks only.
bool isTableRule(std::string_view line) {
    return line.find('|') != std::string_view::npos && line.find('-') != std::string_view::npos &&
           line.find_first_not_of("|-: \t") == std::string_view::npos;
}

/// "[name]: target", which is no text. A footnote ("[^1]: ...") is.
bool isLinkDefinition(std::string_view line) {
    const std::size_t end = line.find("]:");
    return line.size() > 1 && line[0] == '[' && line[1] != '^' && end != std::string_view::npos &&
           line.substr(0, end).find('[', 1) == std::string_view::npos &&
           !trimmed(line.substr(end + 2)).empty();
}

class MarkdownReader {
  public:
    MarkdownReader(shared::SentenceCollector& sentences, std::size_t mostHeadings)
        : sentences_(sentences), mostHeadings_(mostHeadings) {}

    void read(std::string_view text) {
        readFrontMatter(text);
        while (!text.empty()) {
            readLine(shared::takeLine(text));
        }
        endParagraph();
    }

    std::vector<std::string> takeHeadings() { return std::move(headings_); }

  private:
    /// Lines between "---" at the very beginning and the next "---" are kept one by one.
    void readFrontMatter(std::string_view& text) {
        std::string_view rest = text;
        if (shared::takeLine(rest) != "---") {
            return;
        }
        const std::string_view inside = rest;
        while (!rest.empty()) {
            const std::size_t start = text.size() - rest.size();
            const std::string_view line = shared::takeLine(rest);
            if (trimmed(line).empty()) {
                return;  // a ruled line and a paragraph, no front matter
            }
            if (line == "---" || line == "...") {
                const std::size_t length = start - (text.size() - inside.size());
                for (std::string_view lines = inside.substr(0, length); !lines.empty();) {
                    addSentence(shared::takeLine(lines));
                }
                text = rest;
                return;
            }
        }
    }

    void readLine(std::string_view line) {
        if (fence_ != 0) {
            readCode(line);
            return;
        }
        std::string_view content = trimmed(line);
        while (!content.empty() && content[0] == '>') {
            content = trimmed(content.substr(1));
        }
        if (const std::size_t marker = isThematicBreak(content) ? 0 : shared::listMarkerLength(content)) {
            endParagraph();
            inItem_ = true;
            content = withoutTaskMark(trimmed(content.substr(marker)));
        }
        readContent(content);
    }

    void readContent(std::string_view content) {
        const bool isHeadingRule = consistsOf(content, '=') || consistsOf(content, '-');
        if (isHeadingRule && !paragraph_.empty() && !inItem_) {
            endHeading();
        } else if (content.empty() || isTableRule(content) || isThematicBreak(content) ||
                   isLinkDefinition(content)) {
            endParagraph();
        } else if (const std::size_t length = fenceLength(content)) {
            endParagraph();
            fence_ = content[0];
            fenceLength_ = length;
        } else if (const std::size_t level = headingLevel(content)) {
            endParagraph();
            paragraph_ = withoutClosingMarks(trimmed(content.substr(level)));
            endHeading();
        } else if (content[0] == '|') {
            endParagraph();
            addRow(content);
        } else {
            addLine(content);
        }
    }

    void readCode(std::string_view line) {
        const std::string_view content = trimmed(line);
        if (content.size() >= fenceLength_ && consistsOf(content, fence_)) {
            fence_ = 0;
            return;
        }
        addSentence(line);
    }

    static std::string_view withoutTaskMark(std::string_view item) {
        const bool task = item.starts_with("[ ] ") || item.starts_with("[x] ") || item.starts_with("[X] ");
        return task ? trimmed(item.substr(4)) : item;
    }

    void addSentence(std::string_view text) {
        sentences_.add(text);
        sentences_.endParagraph();
    }

    void addRow(std::string_view row) {
        std::string cells = withoutInlineMarks(row);
        std::replace(cells.begin(), cells.end(), '|', ' ');
        addSentence(cells);
    }

    void addLine(std::string_view line) {
        paragraph_.append(line).append("\n");
        if (paragraph_.size() > longestParagraph) {
            sentences_.add(withoutInlineMarks(paragraph_));
            paragraph_.clear();
        }
    }

    void endParagraph() {
        sentences_.add(withoutInlineMarks(paragraph_));
        sentences_.endParagraph();
        paragraph_.clear();
        inItem_ = false;
    }

    void endHeading() {
        std::string heading = shared::foldWhiteSpace(withoutInlineMarks(paragraph_));
        paragraph_.clear();
        addSentence(heading);
        if (!heading.empty() && headings_.size() < mostHeadings_) {
            headings_.push_back(std::move(heading));
        }
    }

    shared::SentenceCollector& sentences_;
    std::size_t mostHeadings_;
    std::vector<std::string> headings_;
    std::string paragraph_;
    bool inItem_ = false;  // a ruled line under a list item makes no heading of it
    char fence_ = 0;       // the mark of the code block that is open
    std::size_t fenceLength_ = 0;
};

}  // namespace

std::vector<std::string> addMarkdown(shared::SentenceCollector& sentences, std::string_view text,
                                     std::size_t mostHeadings) {
    MarkdownReader reader(sentences, mostHeadings);
    reader.read(text);
    return reader.takeHeadings();
}

}  // namespace text
