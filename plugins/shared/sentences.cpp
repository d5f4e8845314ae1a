#include "shared/sentences.h"

#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>

#include "base/byte_chunk.h"

namespace shared {
namespace {

/// A paragraph is searched for sentences as soon as it is this long, so that a file of one line needs no
/// second copy of itself.
constexpr std::size_t longestParagraph = std::size_t{1} << 18;

bool isAsciiBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r') || c == '\0';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// How many bytes at the beginning of the text stay as they are when white space is folded: words of ASCII
/// with one blank between them.
std::size_t foldedLength(std::string_view text) {
    using base::ByteChunk;
    const auto isWord = [](char c) { return c > ' ' && (c & 0x80) == 0; };
    if (text.empty() || !isWord(text.front())) {
        return 0;
    }
    const auto changes = [](ByteChunk chunk, ByteChunk before) {
        return chunk.hasBeyondAscii() || chunk.hasLessThan(' ') || chunk.sharesWith(before, ' ');
    };
    std::size_t length = 1;
    while (text.size() - length >= ByteChunk::size &&
           !changes(ByteChunk(text.data() + length), ByteChunk(text.data() + length - 1))) {
        length += ByteChunk::size;
    }
    while (length < text.size() &&
           (isWord(text[length]) || (text[length] == ' ' && text[length - 1] != ' '))) {
        ++length;
    }
    return length;
}

/// Appends `text` with every run of white space as one blank, which is left out at the beginning. NUL counts
/// as white space: no database stores it in a text.
void appendWithSingleBlanks(std::string& to, std::string_view text) {
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t folded = foldedLength(text.substr(position));
        to.append(text, position, folded);
        position += folded;
        if (position == text.size()) {
            break;
        }
        const std::size_t start = position;
        UChar32 codePoint = 0;
        U8_NEXT(text.data(), position, text.size(), codePoint);
        const bool ascii = codePoint >= 0 && codePoint < 0x80;
        if (ascii ? !isAsciiBlank(text[start]) : !u_isUWhiteSpace(codePoint)) {
            to.append(text, start, position - start);
        } else if (!to.empty() && to.back() != ' ') {
            to += ' ';
        }
    }
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    return text;
}

/// Where to cut a text that is too long: behind its last blank within the limit, else before the character
/// that crosses it.
std::size_t cutPosition(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) {
        return text.size();
    }
    const std::size_t blank = text.rfind(' ', limit);
    if (blank != std::string_view::npos && blank > 0) {
        return blank;
    }
    std::size_t cut = limit;
    while (cut > 0 && (text[cut] & 0xC0) == 0x80) {
        --cut;
    }
    return cut == 0 ? limit : cut;
}

/// "1.", "(2)", "iv" is no part of it: a number alone is the mark of what follows, not a sentence.
bool isItemNumber(std::string_view text) {
    constexpr std::size_t longest = 6;
    return !text.empty() && text.size() <= longest && std::any_of(text.begin(), text.end(), isDigit) &&
           std::all_of(text.begin(), text.end(),
                       [](char c) { return isDigit(c) || c == '.' || c == '(' || c == ')'; });
}

/// A line of one repeated mark, such as "-----" under a heading.
bool isRule(std::string_view line) {
    return line.size() >= 2 && std::ispunct(static_cast<unsigned char>(line[0])) != 0 &&
           line.find_first_not_of(line[0]) == std::string_view::npos;
}

/// The library ends sentences within addresses and names of files too; a new one needs a blank before it,
/// unless its script knows none.
bool isWithinAsciiWord(std::string_view text, std::size_t position) {
    return text[position - 1] != ' ' && ((text[position - 1] | text[position]) & 0x80) == 0;
}

bool isAscii(std::string_view text) {
    const auto beyond = [](char c) { return (c & 0x80) != 0; };
    return base::findByte(
               text, [](base::ByteChunk chunk) { return chunk.hasBeyondAscii(); }, beyond) == text.size();
}

bool isLetterOrDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Where the first mark stands that may end a sentence of ASCII; the text's size when there is none.
std::size_t findEndMark(std::string_view text) {
    return base::findByte(
        text, [](base::ByteChunk chunk) { return chunk.has('.') || chunk.has('!') || chunk.has('?'); },
        [](char c) { return c == '.' || c == '!' || c == '?'; });
}

/// True when a sentence may end within a text of ASCII: there a mark has to end it, then marks that close,
/// and then a blank. Headings, list items and lines of code rarely have any, and need not be searched.
bool mayHoldAnEnd(std::string_view text) {
    for (;;) {
        text.remove_prefix(findEndMark(text));
        while (!text.empty() && text.front() != ' ' && !isLetterOrDigit(text.front())) {
            text.remove_prefix(1);
        }
        if (text.empty()) {
            return false;
        }
        if (text.front() == ' ') {
            return true;
        }
    }
}

std::string_view withoutOuterBlanks(std::string_view line) {
    while (!line.empty() && isAsciiBlank(line.front())) {
        line.remove_prefix(1);
    }
    while (!line.empty() && isAsciiBlank(line.back())) {
        line.remove_suffix(1);
    }
    return line;
}

}  // namespace

/// The library's sentence rules for English, which know common abbreviations and serve other languages of
/// the same scripts as well.
class SentenceCollector::Breaker {
  public:
    Breaker() : iterator_(nullptr, ubrk_close) {
        // Reading the rules and the abbreviations takes longer than cutting a short document; a copy shares
        // them.
        static const Iterator rules = open();
        UErrorCode status = U_ZERO_ERROR;
        iterator_.reset(ubrk_clone(rules.get(), &status));
        check(status);
    }
    Breaker(const Breaker&) = delete;
    Breaker& operator=(const Breaker&) = delete;
    ~Breaker() { utext_close(&text_); }

    void setText(std::string_view text, bool ascii) {
        UErrorCode status = U_ZERO_ERROR;
        if (ascii) {  // the library reads its own form faster, and the positions are the same
            wide_.resize(text.size());
            std::copy(text.begin(), text.end(), wide_.begin());
            utext_openUChars(&text_, wide_.data(), static_cast<std::int64_t>(wide_.size()), &status);
        } else {
            utext_openUTF8(&text_, text.data(), static_cast<std::int64_t>(text.size()), &status);
        }
        ubrk_setUText(iterator_.get(), &text_, &status);
        if (U_FAILURE(status)) {
            throw std::runtime_error(std::string("cannot find sentences: ") + u_errorName(status));
        }
    }

    /// The byte at which the next sentence begins; the end of the text after the last.
    std::size_t next(std::size_t end) {
        const std::int32_t position = ubrk_next(iterator_.get());
        return position == UBRK_DONE ? end : static_cast<std::size_t>(position);
    }

  private:
    using Iterator = std::unique_ptr<UBreakIterator, decltype(&ubrk_close)>;

    static Iterator open() {
        UErrorCode status = U_ZERO_ERROR;
        Iterator iterator(ubrk_open(UBRK_SENTENCE, "en@ss=standard", nullptr, 0, &status), ubrk_close);
        check(status);
        return iterator;
    }

    static void check(UErrorCode status) {
        if (U_FAILURE(status)) {
            throw std::runtime_error(std::string("cannot load the sentence rules: ") + u_errorName(status));
        }
    }

    Iterator iterator_;
    UText text_ = UTEXT_INITIALIZER;
    std::u16string wide_;
};

SentenceCollector::SentenceCollector(std::size_t most)
    : breaker_(std::make_unique<Breaker>()), most_(std::max<std::size_t>(most, 1)) {}

SentenceCollector::~SentenceCollector() = default;

void SentenceCollector::add(std::string_view text) {
    while (!text.empty()) {
        // White space is searched for, not characters, so a piece must not tear one.
        std::size_t count = std::min(text.size(), longestParagraph);
        while (count < text.size() && count > 1 && (text[count] & 0xC0) == 0x80) {
            --count;
        }
        appendWithSingleBlanks(paragraph_, text.substr(0, count));
        text.remove_prefix(count);
        if (paragraph_.size() >= longestParagraph) {
            cutSentences(false);
        }
    }
}

void SentenceCollector::endParagraph() {
    cutSentences(true);
}

void SentenceCollector::cutSentences(bool paragraphEnds) {
    const std::string_view text = paragraph_;
    std::size_t start = 0;
    const bool ascii = isAscii(text);
    if (ascii ? mayHoldAnEnd(text) : !trimmed(text).empty()) {
        breaker_->setText(text, ascii);
        for (std::size_t end = breaker_->next(text.size()); end < text.size();
             end = breaker_->next(text.size())) {
            const std::string_view sentence = trimmed(text.substr(start, end - start));
            if (!isItemNumber(sentence) && !isWithinAsciiWord(text, end)) {
                emit(sentence);
                start = end;
            }
        }
    }
    if (paragraphEnds) {
        emit(trimmed(text.substr(start)));
        paragraph_.clear();
        return;
    }
    // The last sentence may go on in what is added next, unless it is too long for that already.
    std::string_view rest = text.substr(start);
    while (rest.size() > longestParagraph / 2) {
        const std::size_t cut = cutPosition(rest, longestSentence);
        emit(trimmed(rest.substr(0, cut)));
        rest.remove_prefix(cut);
    }
    paragraph_.erase(0, text.size() - rest.size());
}

void SentenceCollector::emit(std::string_view sentence) {
    while (sentence.size() > longestSentence) {
        const std::size_t cut = cutPosition(sentence, longestSentence);
        push(trimmed(sentence.substr(0, cut)));
        sentence = trimmed(sentence.substr(cut));
    }
    push(sentence);
}

void SentenceCollector::push(std::string_view sentence) {
    if (sentence.empty()) {
        return;
    }
    if (!sentences_.empty() && inLast_ < perEntry_) {
        sentences_.back().append(" ").append(sentence);
        ++inLast_;
        return;
    }
    if (sentences_.size() == most_) {
        joinPairs();
        push(sentence);
        return;
    }
    sentences_.emplace_back(sentence);
    inLast_ = 1;
}

void SentenceCollector::joinPairs() {
    const std::size_t count = sentences_.size();
    inLast_ += count % 2 == 0 ? perEntry_ : 0;
    for (std::size_t from = 0; from < count; from += 2) {
        std::string joined = std::move(sentences_[from]);
        if (from + 1 < count) {
            joined.append(" ").append(sentences_[from + 1]);
        }
        sentences_[from / 2] = std::move(joined);
    }
    sentences_.resize((count + 1) / 2);
    perEntry_ *= 2;
}

std::vector<std::string> SentenceCollector::take() {
    endParagraph();
    perEntry_ = 1;
    inLast_ = 0;
    return std::exchange(sentences_, {});
}

void addPlainText(SentenceCollector& collector, std::string_view text) {
    addLines(collector, text, std::numeric_limits<std::size_t>::max());
}

void addLines(SentenceCollector& collector, std::string_view& text, std::size_t enough) {
    while (!text.empty() && collector.ended() < enough) {
        const std::string_view line = takeLine(text);
        const std::string_view content = withoutOuterBlanks(line);
        if (content.empty() || listMarkerLength(line) > 0) {
            collector.endParagraph();
        }
        collector.add(line);
        collector.add("\n");
        if (isRule(content)) {
            collector.endParagraph();
        }
    }
    if (text.empty()) {
        collector.endParagraph();
    }
}

std::string foldWhiteSpace(std::string_view text) {
    std::string folded;
    appendWithSingleBlanks(folded, text);
    return std::string(trimmed(folded));
}

std::string_view takeLine(std::string_view& text) {
    const std::size_t end = base::findByte(
        text, [](base::ByteChunk chunk) { return chunk.has('\n') || chunk.has('\r'); },
        [](char c) { return c == '\n' || c == '\r'; });
    const std::string_view line = text.substr(0, end);
    if (end == text.size()) {
        text = {};
        return line;
    }
    const bool two = text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n';
    text.remove_prefix(end + (two ? 2 : 1));
    return line;
}

std::size_t listMarkerLength(std::string_view line) {
    constexpr std::size_t longestNumber = 3;
    std::size_t position = 0;
    const auto at = [&](std::size_t i) { return i < line.size() ? line[i] : '\0'; };
    while (at(position) == ' ' || at(position) == '\t') {
        ++position;
    }
    const std::size_t start = position;
    while (isDigit(at(position)) && position - start <= longestNumber) {
        ++position;
    }
    const std::size_t digits = position - start;
    const char mark = at(position);
    const bool bullet = digits == 0 && (mark == '-' || mark == '*' || mark == '+');
    const bool number = digits > 0 && digits <= longestNumber && (mark == '.' || mark == ')');
    const bool round = line.substr(start).starts_with("\xE2\x80\xA2");
    if (!bullet && !number && !round) {
        return 0;
    }
    position += round ? 3 : 1;
    if (at(position) != ' ' && at(position) != '\t') {
        return 0;
    }
    while (at(position) == ' ' || at(position) == '\t') {
        ++position;
    }
    return position;
}

}  // namespace shared
