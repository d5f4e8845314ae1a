#include "platform/jet/tokens.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "platform/jet/lexer.h"

namespace platform::jet {
namespace {

constexpr std::string_view blanks = " \t\r\n";
constexpr std::string_view symbols = "()+-*/=<>!,.&^";

std::size_t endOfToken(std::string_view shape, std::size_t start, Token::Kind kind) {
    switch (kind) {
        case Token::Kind::literal:
            return start + 1;
        case Token::Kind::symbol: {
            const std::string_view two = shape.substr(start, 2);
            constexpr std::array<std::string_view, 4> pairs = {"<>", "<=", ">=", "!="};
            return start + (std::find(pairs.begin(), pairs.end(), two) == pairs.end() ? 1 : 2);
        }
        case Token::Kind::number:
            return std::min(shape.find_first_not_of("0123456789.eE", start), shape.size());
        case Token::Kind::word:
            break;
    }
    if (shape[start] == '[') {
        return shape.find(']', start) + 1;
    }
    std::size_t end = start;
    while (end < shape.size() && shape[end] != literalMark && shape[end] != '[' &&
           blanks.find(shape[end]) == std::string_view::npos &&
           symbols.find(shape[end]) == std::string_view::npos) {
        ++end;
    }
    return end;
}

Token::Kind kindOf(char c) {
    if (c == literalMark) {
        return Token::Kind::literal;
    }
    if (c >= '0' && c <= '9') {
        return Token::Kind::number;
    }
    return symbols.find(c) == std::string_view::npos ? Token::Kind::word : Token::Kind::symbol;
}

}  // namespace

bool Token::isWord(std::string_view word) const {
    return kind == Kind::word && base::equalsIgnoringCase(text, word);
}

bool Token::isSymbol(std::string_view symbol) const {
    return kind == Kind::symbol && text == symbol;
}

bool Token::isComparison() const {
    constexpr std::array<std::string_view, 7> operators = {"=", "<>", "!=", "<", ">", "<=", ">="};
    return (kind == Kind::symbol && std::find(operators.begin(), operators.end(), text) != operators.end()) ||
           isWord("LIKE");
}

std::string_view Token::name() const {
    return text.starts_with('[') ? text.substr(1, text.size() - 2) : text;
}

std::vector<Token> tokensOf(std::string_view shape) {
    std::vector<Token> tokens;
    std::size_t position = shape.find_first_not_of(blanks);
    while (position != std::string_view::npos) {
        const Token::Kind kind = kindOf(shape[position]);
        const std::size_t end = endOfToken(shape, position, kind);
        tokens.push_back({kind, shape.substr(position, end - position), position});
        position = shape.find_first_not_of(blanks, end);
    }
    return tokens;
}

}  // namespace platform::jet
