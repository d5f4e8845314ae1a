#include "platform/jet/translator.h"

#include <algorithm>

#include "base/text.h"
#include "platform/jet/tokens.h"

namespace platform::jet {
namespace {

class Translator {
  public:
    Translator(const LexedStatement& statement, const Dialect& dialect, const ColumnCatalog& catalog)
        : statement_(statement),
          dialect_(dialect),
          tokens_(tokensOf(statement.shape())),
          columns_(tokens_, catalog) {
        const Table* table = columns_.insertTable().empty() ? nullptr : catalog.table(columns_.insertTable());
        result_.givesAutoNumber = table != nullptr && table->hasAutoNumber;
    }

    Translation run() {
        for (token_ = 0; token_ < tokens_.size(); ++token_) {
            const Token& token = tokens_[token_];
            if (token.isLiteral()) {
                addParameter({false, literals_, columns_.column(token_)});
                ++literals_;
            } else if (token.isWord()) {
                translateWord(token);
            } else {
                translateSymbol(token);
            }
        }
        endQuery();
        return std::move(result_);
    }

  private:
    /// What is open: the statement itself or a parenthesis.
    struct Level {
        std::string limit;           // rows that the query is cut to
        bool isUnionMember = false;  // a parenthesis that is left out
    };

    [[nodiscard]] const Token& next() const { return at(token_ + 1); }
    [[nodiscard]] const Token& at(std::size_t token) const {
        return token < tokens_.size() ? tokens_[token] : noToken;
    }

    void emit(std::string_view text) {
        const bool joins = text == "." || result_.text.ends_with('.');
        if (!result_.text.empty() && !joins) {
            result_.text += ' ';
        }
        result_.origins.push_back({result_.text.size(), at(token_).position});
        result_.text += text;
    }

    void addParameter(Parameter parameter) {
        result_.parameters.push_back(std::move(parameter));
        emit(dialect_.parameter(result_.parameters.size()));
    }

    [[noreturn]] void fail(const std::string& what, const Token& token) const {
        statement_.raiseAt(what, token.position);
    }

    void translateWord(const Token& word) {
        if (word.isWord("DELETE") && next().isSymbol("*")) {
            emit(word.text);
            ++token_;
        } else if (word.isWord("TOP") && follows("SELECT")) {
            readTop(word);
        } else if (word.isWord("TRUE") || word.isWord("FALSE")) {
            emit(word.isWord("TRUE") ? dialect_.trueWord : dialect_.falseWord);
        } else if (word.isWord("@@IDENTITY")) {
            result_.readsIdentity = true;
            levels_.back().limit = "1";
            addParameter({true, 0, {}});
        } else if (word.text.find('@') != std::string_view::npos && !word.text.starts_with('[')) {
            fail("unknown name " + std::string(word.text), word);
        } else {
            if (word.isWord("UNION") && !levels_.back().limit.empty()) {
                fail("a member of a UNION cannot be limited", word);
            }
            inSet_ = (inSet_ || word.isWord("SET")) && !word.isWord("WHERE");
            emit(word.text);
        }
    }

    [[nodiscard]] bool follows(std::string_view word) const {
        std::size_t before = token_;
        while (before > 0 && (at(before - 1).isWord("DISTINCT") || at(before - 1).isWord("ALL"))) {
            --before;
        }
        return before > 0 && at(before - 1).isWord(word);
    }

    void readTop(const Token& word) {
        if (next().kind != Token::Kind::number) {
            fail("TOP needs a number", word);
        }
        levels_.back().limit = next().text;
        ++token_;
    }

    void translateSymbol(const Token& symbol) {
        const bool isEqual = symbol.isSymbol("=");
        const bool isAssignment = inSet_ && levels_.size() == 1;
        if ((isEqual || symbol.isSymbol("<>")) && next().isWord("NULL") && !isAssignment) {
            emit(isEqual ? "IS NULL" : "IS NOT NULL");
            ++token_;
        } else if (symbol.isSymbol("(")) {
            levels_.push_back({{}, isUnionMember()});
            if (!levels_.back().isUnionMember) {
                emit("(");
            }
        } else if (symbol.isSymbol(")") && levels_.size() > 1) {
            if (levels_.back().isUnionMember && !levels_.back().limit.empty()) {
                fail("a member of a UNION cannot be limited", symbol);
            }
            endQuery();
            const bool isLeftOut = levels_.back().isUnionMember;
            levels_.pop_back();
            if (!isLeftOut) {
                emit(")");
            }
        } else {
            emit(symbol.text);
        }
    }

    /// Whether the parenthesis at hand encloses a whole member of a UNION, the first one included.
    [[nodiscard]] bool isUnionMember() const {
        if (dialect_.takesUnionParentheses || !next().isWord("SELECT")) {
            return false;
        }
        const Token& before = token_ == 0 ? noToken : at(token_ - 1);
        return token_ == 0 || before.isWord("UNION") ||
               (before.isWord("ALL") && token_ > 1 && at(token_ - 2).isWord("UNION"));
    }

    void endQuery() {
        if (!levels_.back().limit.empty()) {
            emit("LIMIT");
            emit(levels_.back().limit);
        }
    }

    const LexedStatement& statement_;
    const Dialect& dialect_;
    std::vector<Token> tokens_;
    ColumnFinder columns_;
    Translation result_;
    std::vector<Level> levels_ = {Level{}};
    std::size_t token_ = 0;
    std::size_t literals_ = 0;
    bool inSet_ = false;
};

}  // namespace

std::size_t Translation::shapePosition(std::size_t position) const {
    const auto after =
        std::upper_bound(origins.begin(), origins.end(), position,
                         [](std::size_t wanted, const Origin& origin) { return wanted < origin.position; });
    if (after == origins.begin()) {
        return 0;
    }
    const Origin& origin = *(after - 1);
    return origin.shapePosition;
}

Translation translate(const LexedStatement& statement, const Dialect& dialect, const ColumnCatalog& catalog) {
    return Translator(statement, dialect, catalog).run();
}

}  // namespace platform::jet
