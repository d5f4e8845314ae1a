// The tokens of a shape: what the translator works on. They are views into the shape.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace platform::jet {

struct Token {
    enum class Kind { word, symbol, literal, number };

    Kind kind = Kind::word;
    std::string_view text;
    std::size_t position = 0;  // in the shape, in bytes

    /// A word, without regard to case.
    [[nodiscard]] bool isWord(std::string_view word) const;
    [[nodiscard]] bool isWord() const { return kind == Kind::word; }
    [[nodiscard]] bool isSymbol(std::string_view symbol) const;
    [[nodiscard]] bool isLiteral() const { return kind == Kind::literal; }

    /// =, <>, <, >, <=, >= or LIKE.
    [[nodiscard]] bool isComparison() const;

    /// The name that a word stands for, without the brackets it may stand in.
    [[nodiscard]] std::string_view name() const;
};

std::vector<Token> tokensOf(std::string_view shape);

/// A token of no kind, which stands before the first and behind the last one.
inline constexpr Token noToken{Token::Kind::symbol, {}, 0};

}  // namespace platform::jet
