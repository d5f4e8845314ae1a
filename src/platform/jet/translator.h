// The translator says a shape of Jet's dialect in the words of another engine, once per shape.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/jet/column_catalog.h"
#include "platform/jet/column_finder.h"
#include "platform/jet/lexer.h"

namespace platform::jet {

/// How the engine says what Jet says otherwise.
struct Dialect {
    std::string_view trueWord;
    std::string_view falseWord;
    /// The text of the parameter with a number from 1.
    std::string (*parameter)(std::size_t number) = nullptr;
    /// Whether a member of a UNION may stand in parentheses.
    bool takesUnionParentheses = false;
};

/// A place for a value in the translated statement.
struct Parameter {
    bool isIdentity = false;  // @@IDENTITY: the last AutoNumber of the connection
    std::size_t literal = 0;  // otherwise the literal that goes there
    MetColumn column;
};

struct Translation {
    struct Origin {
        std::size_t position = 0;       // of a token in the translated text
        std::size_t shapePosition = 0;  // of the token that it came from
    };

    std::string text;
    std::vector<Parameter> parameters;  // in the order of the text
    std::vector<Origin> origins;        // ascending
    bool readsIdentity = false;
    bool givesAutoNumber = false;  // an INSERT into a table with an AutoNumber

    /// The byte of the shape from which a byte of the text came.
    [[nodiscard]] std::size_t shapePosition(std::size_t position) const;
};

/// Translates:
///   DELETE * FROM              DELETE FROM
///   TRUE, FALSE                the dialect's words
///   SELECT TOP n               LIMIT n behind the query
///   @@IDENTITY                 a parameter, and LIMIT 1 behind the query
///   = Null, <> Null            IS NULL, IS NOT NULL (in comparisons; SET column = Null stores null)
///   UNION (SELECT ...)         UNION SELECT ...
/// Raises a RuntimeError for a TOP that has no number or stands in a member of a UNION.
Translation translate(const LexedStatement& statement, const Dialect& dialect, const ColumnCatalog& catalog);

}  // namespace platform::jet
