// A LexedStatement is a statement cut into its literals and what is left of it, the shape: statements that
// differ in nothing but their values have one shape. Whoever runs statements owns one and uses it for all of
// them, so that reading a statement allocates nothing once the buffers have grown.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace platform::jet {

/// Stands in a shape where a literal stood. The lexer lets no such character through outside literals.
inline constexpr char literalMark = '\x01';

struct Literal {
    enum class Kind { text, number };

    Kind kind = Kind::text;
    std::string_view value;         // a text without its quotes, a number with its sign
    std::size_t position = 0;       // where it begins in the statement, in bytes
    std::size_t length = 0;         // its length there
    std::size_t shapePosition = 0;  // where its mark stands in the shape
    bool mayBeSigned = false;       // a minus or a point there begins a number
};

class LexedStatement {
  public:
    /// Reads a statement, which must stay alive as long as the literals are used. Raises a RuntimeError that
    /// names the position for a quote, bracket or parenthesis without its partner and for a character that no
    /// statement has outside literals.
    ///
    /// Numbers behind TOP, GROUP BY and ORDER BY stay in the shape: there they are no values. A statement
    /// that is neither a query nor an INSERT, UPDATE or DELETE stays whole and is its own shape.
    ///
    /// Gives true when the shape is that of the statement read before: rows of one kind come one after the
    /// other, and then only their literals are read.
    bool read(std::string_view statement);

    [[nodiscard]] const std::string& shape() const { return shape_; }
    [[nodiscard]] const std::vector<Literal>& literals() const { return literals_; }

    /// True when the statement is in the dialect and so has to be translated.
    [[nodiscard]] bool isTranslatable() const { return isTranslatable_; }

    /// Raises a RuntimeError: what is wrong, and at which character of the statement.
    [[noreturn]] void raiseAt(const std::string& what, std::size_t shapePosition) const;

  private:
    [[nodiscard]] bool readSameShape(std::string_view statement);
    [[nodiscard]] bool readLiteralAgain(Literal& literal);
    void readWhole(std::string_view statement);
    void readToken();
    void readWord();
    void readNumber();
    void readText(char quote);
    void readBracketed();
    void readSymbol(char symbol);
    void readEnd();

    [[nodiscard]] std::size_t endOfNumber() const;
    [[nodiscard]] std::string_view textAt(char quote, std::size_t& end);
    [[nodiscard]] bool numberStartsAt(std::size_t position) const;
    void lift(Literal::Kind kind, std::string_view value, std::size_t end);
    [[noreturn]] void fail(const std::string& what, std::size_t position) const;
    [[nodiscard]] std::size_t statementPosition(std::size_t shapePosition) const;

    std::string_view statement_;
    std::string shape_;
    std::string unquoted_;  // texts that held doubled quotes
    std::vector<Literal> literals_;
    std::size_t position_ = 0;  // next byte to read
    std::size_t copied_ = 0;    // bytes of the statement that are in the shape already
    std::size_t depth_ = 0;     // open parentheses
    std::size_t keepDepth_ = 0;
    bool keepNumbers_ = false;     // behind BY, at keepDepth_ or deeper
    bool keepNextNumber_ = false;  // behind TOP
    bool afterOperand_ = false;    // a minus now is an operator, not a sign
    bool isTranslatable_ = true;
    bool hasShape_ = false;  // of a statement in the dialect that was read to its end
};

}  // namespace platform::jet
