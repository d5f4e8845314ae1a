#include "platform/jet/lexer.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "base/runtime_error.h"
#include "base/text.h"

namespace platform::jet {
namespace {

enum class CharClass : std::uint8_t { invalid, blank, letter, digit, quote, bracket, symbol, end };

constexpr std::array<CharClass, 256> makeClasses() {
    std::array<CharClass, 256> classes{};
    const auto set = [&classes](std::string_view characters, CharClass charClass) {
        for (const char c : characters) {
            classes[static_cast<unsigned char>(c)] = charClass;
        }
    };
    set(" \t\r\n", CharClass::blank);
    set("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_@", CharClass::letter);
    set("0123456789", CharClass::digit);
    set("'\"", CharClass::quote);
    set("[", CharClass::bracket);
    set("()+-*/=<>!,.&^", CharClass::symbol);
    set(";", CharClass::end);
    for (std::size_t c = 0x80; c < classes.size(); ++c) {
        classes[c] = CharClass::letter;
    }
    return classes;
}

constexpr std::array<CharClass, 256> charClasses = makeClasses();

CharClass classOf(char c) {
    return charClasses[static_cast<unsigned char>(c)];
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Compares a word with one that is given in lower case.
bool isWord(std::string_view word, std::string_view lower) {
    if (word.size() != lower.size()) {
        return false;
    }
    for (std::size_t i = 0; i < word.size(); ++i) {
        if ((static_cast<unsigned char>(word[i]) | 0x20U) != static_cast<unsigned char>(lower[i])) {
            return false;
        }
    }
    return true;
}

/// A statement that begins with another word (CREATE TABLE, PRAGMA) is no statement of the dialect.
bool beginsInDialect(std::string_view statement) {
    const std::size_t start = statement.find_first_not_of(" \t\r\n(");
    if (start == std::string_view::npos) {
        return true;
    }
    std::size_t end = start;
    while (end < statement.size() && classOf(statement[end]) == CharClass::letter) {
        ++end;
    }
    const std::string_view word = statement.substr(start, end - start);
    return isWord(word, "select") || isWord(word, "insert") || isWord(word, "update") ||
           isWord(word, "delete") || isWord(word, "explain");
}

}  // namespace

bool LexedStatement::read(std::string_view statement) {
    if (hasShape_ && readSameShape(statement)) {
        return true;
    }
    hasShape_ = false;
    readWhole(statement);
    hasShape_ = isTranslatable_;
    return false;
}

/// What lies between the literals decides, together with the kinds of the literals, how each character is
/// read: where all of it is equal, so are the tokens.
bool LexedStatement::readSameShape(std::string_view statement) {
    statement_ = statement;
    unquoted_.clear();
    position_ = 0;
    std::size_t shapeStart = 0;
    const auto skipShape = [this, &shapeStart](std::size_t shapeEnd) {
        const std::size_t size = shapeEnd - shapeStart;
        const bool isSame = statement_.size() - position_ >= size &&
                            std::memcmp(statement_.data() + position_, shape_.data() + shapeStart, size) == 0;
        position_ += size;
        return isSame;
    };
    for (Literal& literal : literals_) {
        if (!skipShape(literal.shapePosition) || !readLiteralAgain(literal)) {
            return false;
        }
        shapeStart = literal.shapePosition + 1;
    }
    return skipShape(shape_.size()) && position_ == statement_.size();
}

/// Reads a literal of the kind that stood in this place. False where none stands or its text has no end.
bool LexedStatement::readLiteralAgain(Literal& literal) {
    const char c = position_ < statement_.size() ? statement_[position_] : ' ';
    std::size_t end = position_;
    if (literal.kind == Literal::Kind::number) {
        const bool startsSigned =
            (c == '-' && numberStartsAt(position_ + 1)) || (c == '.' && numberStartsAt(position_));
        if (!isDigit(c) && !(literal.mayBeSigned && startsSigned)) {
            return false;
        }
        end = endOfNumber();
        literal.value = statement_.substr(position_, end - position_);
    } else {
        if (classOf(c) != CharClass::quote) {
            return false;
        }
        literal.value = textAt(c, end);
        if (end == std::string_view::npos) {
            return false;
        }
    }
    literal.position = position_;
    literal.length = end - position_;
    position_ = end;
    return true;
}

void LexedStatement::readWhole(std::string_view statement) {
    statement_ = statement;
    shape_.clear();
    literals_.clear();
    unquoted_.clear();
    position_ = copied_ = depth_ = 0;
    keepNumbers_ = keepNextNumber_ = afterOperand_ = false;
    isTranslatable_ = beginsInDialect(statement);
    if (!isTranslatable_) {
        shape_ = statement;
        return;
    }
    while (position_ < statement_.size()) {
        readToken();
    }
    shape_.append(statement_, copied_, statement_.size() - copied_);
    if (depth_ != 0) {
        fail("a parenthesis is not closed", statement_.size());
    }
    if (shape_.find_first_not_of(" \t\r\n") == std::string::npos) {
        fail("the statement is empty", 0);
    }
}

void LexedStatement::readToken() {
    const char c = statement_[position_];
    switch (classOf(c)) {
        case CharClass::blank:
            ++position_;
            break;
        case CharClass::letter:
            readWord();
            break;
        case CharClass::digit:
            readNumber();
            break;
        case CharClass::quote:
            readText(c);
            break;
        case CharClass::bracket:
            readBracketed();
            break;
        case CharClass::symbol:
            readSymbol(c);
            break;
        case CharClass::end:
            readEnd();
            break;
        case CharClass::invalid:
            fail("unexpected character", position_);
    }
}

void LexedStatement::readWord() {
    const std::size_t start = position_;
    while (position_ < statement_.size() &&
           (classOf(statement_[position_]) == CharClass::letter || isDigit(statement_[position_]))) {
        ++position_;
    }
    const std::string_view word = statement_.substr(start, position_ - start);
    keepNextNumber_ = isWord(word, "top");
    if (!keepNumbers_ && isWord(word, "by")) {
        keepNumbers_ = true;
        keepDepth_ = depth_;
    }
    afterOperand_ = true;
}

bool LexedStatement::numberStartsAt(std::size_t position) const {
    if (position < statement_.size() && statement_[position] == '.') {
        ++position;
    }
    return position < statement_.size() && isDigit(statement_[position]);
}

std::size_t LexedStatement::endOfNumber() const {
    std::size_t end = position_;
    const auto skipDigits = [this, &end] {
        while (end < statement_.size() && isDigit(statement_[end])) {
            ++end;
        }
    };
    if (statement_[end] == '-') {
        ++end;
    }
    skipDigits();
    if (end < statement_.size() && statement_[end] == '.') {
        ++end;
        skipDigits();
    }
    if (end < statement_.size() && (statement_[end] == 'e' || statement_[end] == 'E')) {
        const std::size_t mantissaEnd = end++;
        if (end < statement_.size() && (statement_[end] == '+' || statement_[end] == '-')) {
            ++end;
        }
        const std::size_t exponent = end;
        skipDigits();
        end = end == exponent ? mantissaEnd : end;
    }
    return end;
}

void LexedStatement::readNumber() {
    const std::size_t end = endOfNumber();
    if (keepNumbers_ || keepNextNumber_) {
        position_ = end;
    } else {
        lift(Literal::Kind::number, statement_.substr(position_, end - position_), end);
    }
    keepNextNumber_ = false;
    afterOperand_ = true;
}

/// The text that begins with a quote where the statement stands, with `end` behind its last quote; npos where
/// it has none.
std::string_view LexedStatement::textAt(char quote, std::size_t& end) {
    const std::size_t start = position_ + 1;
    std::size_t pieceStart = start;
    std::size_t unquotedStart = std::string::npos;
    for (;;) {
        const std::size_t pieceEnd = statement_.find(quote, pieceStart);
        end = pieceEnd == std::string_view::npos ? pieceEnd : pieceEnd + 1;
        if (end == std::string_view::npos) {
            return {};
        }
        const bool doubled = end < statement_.size() && statement_[end] == quote;
        if (!doubled && unquotedStart == std::string::npos) {
            return statement_.substr(start, pieceEnd - start);
        }
        if (unquotedStart == std::string::npos) {
            unquoted_.reserve(statement_.size());  // literals are views into it: it must never move
            unquotedStart = unquoted_.size();
        }
        unquoted_.append(statement_, pieceStart, pieceEnd - pieceStart);
        if (!doubled) {
            return std::string_view(unquoted_).substr(unquotedStart);
        }
        unquoted_ += quote;
        pieceStart = end + 1;
    }
}

void LexedStatement::readText(char quote) {
    std::size_t end = 0;
    const std::string_view value = textAt(quote, end);
    if (end == std::string_view::npos) {
        fail("a text literal has no closing quote", position_);
    }
    lift(Literal::Kind::text, value, end);
    afterOperand_ = true;
}

void LexedStatement::readBracketed() {
    const std::size_t end = statement_.find(']', position_);
    if (end == std::string_view::npos) {
        fail("a bracketed name is not closed", position_);
    }
    if (statement_.find(literalMark, position_) < end) {
        fail("unexpected character in a bracketed name", position_);
    }
    position_ = end + 1;
    afterOperand_ = true;
}

void LexedStatement::readSymbol(char symbol) {
    if ((symbol == '-' && !afterOperand_ && numberStartsAt(position_ + 1)) ||
        (symbol == '.' && !afterOperand_ && numberStartsAt(position_))) {
        readNumber();
        return;
    }
    if (symbol == '(') {
        ++depth_;
    } else if (symbol == ')') {
        if (depth_ == 0) {
            fail("a parenthesis is closed that was not opened", position_);
        }
        --depth_;
        keepNumbers_ = keepNumbers_ && depth_ >= keepDepth_;
    }
    afterOperand_ = std::strchr("(,=<>", symbol) == nullptr;
    ++position_;
}

void LexedStatement::readEnd() {
    if (statement_.find_first_not_of(" \t\r\n;", position_) != std::string_view::npos) {
        fail("more than one statement", position_);
    }
    statement_ = statement_.substr(0, position_);
}

void LexedStatement::lift(Literal::Kind kind, std::string_view value, std::size_t end) {
    shape_.append(statement_, copied_, position_ - copied_);
    literals_.push_back({kind, value, position_, end - position_, shape_.size(), !afterOperand_});
    shape_ += literalMark;
    position_ = copied_ = end;
}

std::size_t LexedStatement::statementPosition(std::size_t shapePosition) const {
    std::size_t position = shapePosition;
    for (const Literal& literal : literals_) {
        if (literal.shapePosition < shapePosition) {
            position += literal.length - 1;
        }
    }
    return position;
}

void LexedStatement::raiseAt(const std::string& what, std::size_t shapePosition) const {
    fail(what, statementPosition(shapePosition));
}

void LexedStatement::fail(const std::string& what, std::size_t position) const {
    constexpr std::size_t shown = 200;
    const std::size_t character = base::length(statement_.substr(0, position)) + 1;
    std::string text(base::left(statement_, shown));
    if (text.size() < statement_.size()) {
        text += "...";
    }
    throw base::RuntimeError(base::ErrorNumber::databaseError,
                             "Invalid statement: " + what + " at character " + std::to_string(character) +
                                 " of the statement: " + text);
}

}  // namespace platform::jet
