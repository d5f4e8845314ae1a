#include "platform/jet/column_finder.h"

#include <algorithm>
#include <array>

#include "base/text.h"

namespace platform::jet {
namespace {

constexpr std::array<std::string_view, 20> keywords = {
    "SELECT", "FROM",  "WHERE", "INNER",  "LEFT",  "RIGHT",  "OUTER", "CROSS", "JOIN", "ON",
    "GROUP",  "ORDER", "SET",   "VALUES", "UNION", "HAVING", "AND",   "OR",    "NOT",  "IN"};

bool isKeyword(const Token& token) {
    return std::any_of(keywords.begin(), keywords.end(),
                       [&token](std::string_view word) { return token.isWord(word); });
}

}  // namespace

ColumnFinder::ColumnFinder(std::span<const Token> tokens, const ColumnCatalog& catalog)
    : tokens_(tokens), catalog_(catalog), scopeOf_(tokens.size(), 0), insertPosition_(tokens.size(), none) {
    readScopes();
    readInsert();
}

const Token& ColumnFinder::at(std::size_t token) const {
    return token < tokens_.size() ? tokens_[token] : noToken;
}

std::size_t ColumnFinder::addScope(std::size_t parent) {
    scopes_.push_back({parent, {}, false});
    return scopes_.size() - 1;
}

void ColumnFinder::readScopes() {
    Walk walk{addScope(none), false, false};
    std::vector<Walk> outer;
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
        const Token& token = tokens_[i];
        if (token.isSymbol("(")) {
            outer.push_back(walk);
            if (at(i + 1).isWord("SELECT")) {
                walk = {addScope(walk.scope), false, false};
            } else {
                walk.inFrom = walk.expectsTable;
            }
        } else if (token.isSymbol(")") && !outer.empty()) {
            walk = outer.back();
            walk.expectsTable = false;
            outer.pop_back();
        } else if (token.isSymbol(",")) {
            walk.expectsTable = walk.inFrom;
        } else if (token.isWord()) {
            readScopeWord(i, walk);
        }
        scopeOf_[i] = walk.scope;
    }
}

void ColumnFinder::readScopeWord(std::size_t token, Walk& walk) {
    const Token& word = tokens_[token];
    if (word.isWord("SELECT")) {
        // The second member of a UNION and the query of an INSERT read tables of their own.
        if (scopes_[walk.scope].hasSelect || !scopes_[walk.scope].sources.empty()) {
            walk.scope = addScope(scopes_[walk.scope].parent);
        }
        scopes_[walk.scope].hasSelect = true;
        walk.inFrom = walk.expectsTable = false;
    } else if (word.isWord("FROM") || word.isWord("JOIN")) {
        walk.inFrom = walk.expectsTable = true;
    } else if (word.isWord("INTO") || word.isWord("UPDATE")) {
        walk.expectsTable = true;
    } else if (walk.expectsTable) {
        addSource(token, walk.scope);
        walk.expectsTable = false;
    } else if (word.isWord("WHERE") || word.isWord("GROUP") || word.isWord("ORDER") || word.isWord("UNION")) {
        walk.inFrom = false;
    }
}

void ColumnFinder::addSource(std::size_t token, std::size_t scope) {
    const std::string_view table = tokens_[token].name();
    const std::size_t next = at(token + 1).isWord("AS") ? token + 2 : token + 1;
    const bool hasAlias = at(next).isWord() && !isKeyword(at(next));
    scopes_[scope].sources.push_back({hasAlias ? at(next).name() : table, table});
}

void ColumnFinder::readInsert() {
    if (!at(0).isWord("INSERT") || !at(1).isWord("INTO") || !at(2).isWord()) {
        return;
    }
    insertTable_ = tokens_[2].name();
    readInsertItems(readInsertColumns(3));
}

std::size_t ColumnFinder::readInsertColumns(std::size_t token) {
    if (!at(token).isSymbol("(") || at(token + 1).isWord("SELECT")) {
        if (const Table* table = catalog_.table(insertTable_)) {
            for (const Column& column : table->columns) {
                insertColumns_.emplace_back(column.name);
            }
        }
        return token;
    }
    for (++token; token < tokens_.size() && !tokens_[token].isSymbol(")"); ++token) {
        if (tokens_[token].isWord()) {
            insertColumns_.push_back(tokens_[token].name());
        }
    }
    return token + 1;
}

void ColumnFinder::readInsertItems(std::size_t token) {
    const bool isValues = at(token).isWord("VALUES");
    const std::size_t itemDepth = isValues ? 1 : 0;
    std::size_t depth = 0;
    std::size_t position = 0;
    for (; token < tokens_.size(); ++token) {
        if (tokens_[token].isSymbol("(")) {
            position = depth == 0 && isValues ? 0 : position;
            ++depth;
        } else if (tokens_[token].isSymbol(")")) {
            depth -= depth > 0 ? 1 : 0;
        } else if (depth == itemDepth && tokens_[token].isSymbol(",")) {
            ++position;
        } else if (depth == itemDepth && tokens_[token].isWord("FROM")) {
            return;
        } else if (depth == itemDepth) {
            insertPosition_[token] = position;
        }
    }
}

MetColumn ColumnFinder::column(std::size_t literal) const {
    const std::size_t position = insertPosition_[literal];
    if (position != none && isWholeItem(literal)) {
        return position < insertColumns_.size() ? lookUp(insertTable_, insertColumns_[position])
                                                : MetColumn{};
    }
    const std::size_t operand = comparedOperand(literal);
    return operand == none ? MetColumn{} : resolve(operand);
}

bool ColumnFinder::isWholeItem(std::size_t token) const {
    const Token& before = at(token - 1);
    const Token& after = at(token + 1);
    const bool starts = before.isSymbol("(") || before.isSymbol(",") || before.isWord("SELECT");
    const bool ends = after.isSymbol(")") || after.isSymbol(",") || after.isWord("FROM") ||
                      after.isWord("AS") || token + 1 == tokens_.size();
    return starts && ends;
}

std::size_t ColumnFinder::comparedOperand(std::size_t literal) const {
    if (literal > 0 && at(literal - 1).isComparison()) {
        return leftOperand(literal - 1);
    }
    if (at(literal + 1).isComparison()) {
        return rightOperand(literal + 2);
    }
    if (literal > 0 && at(literal - 1).isWord("BETWEEN")) {
        return leftOperand(literal - 1);
    }
    if (literal > 2 && at(literal - 1).isWord("AND") && at(literal - 3).isWord("BETWEEN")) {
        return leftOperand(literal - 3);
    }
    return listedOperand(literal);
}

/// The last word of the column name that ends before a token: "date", "a.date", "((a.date))", "date NOT".
std::size_t ColumnFinder::leftOperand(std::size_t before) const {
    if (before > 0 && at(before - 1).isWord("NOT")) {
        --before;
    }
    std::size_t closed = 0;
    while (before > 0 && at(before - 1).isSymbol(")")) {
        --before;
        ++closed;
    }
    if (before == 0 || !at(before - 1).isWord() || isKeyword(at(before - 1))) {
        return none;
    }
    const std::size_t word = before - 1;
    std::size_t first = word >= 2 && at(word - 1).isSymbol(".") ? word - 2 : word;
    for (; closed > 0; --closed, --first) {
        if (first == 0 || !at(first - 1).isSymbol("(")) {
            return none;  // the end of an expression, not of a name
        }
    }
    const bool isArgument = first > 0 && first < word && at(first).isSymbol("(") && at(first - 1).isWord() &&
                            !isKeyword(at(first - 1));
    return isArgument ? none : word;
}

std::size_t ColumnFinder::rightOperand(std::size_t after) const {
    while (at(after).isSymbol("(")) {
        ++after;
    }
    if (!at(after).isWord() || isKeyword(at(after)) || at(after + 1).isSymbol("(")) {
        return none;
    }
    return at(after + 1).isSymbol(".") && at(after + 2).isWord() ? after + 2 : after;
}

/// The column of "column IN ( literal, literal )".
std::size_t ColumnFinder::listedOperand(std::size_t literal) const {
    std::size_t token = literal;
    while (token > 0 && (at(token - 1).isLiteral() || at(token - 1).isSymbol(","))) {
        --token;
    }
    if (token < 2 || !at(token - 1).isSymbol("(") || !at(token - 2).isWord("IN")) {
        return none;
    }
    return leftOperand(token - 2);
}

MetColumn ColumnFinder::resolve(std::size_t lastWord) const {
    const std::string_view column = tokens_[lastWord].name();
    const bool isQualified = lastWord >= 2 && at(lastWord - 1).isSymbol(".");
    const std::string_view qualifier = isQualified ? tokens_[lastWord - 2].name() : std::string_view();
    for (std::size_t scope = scopeOf_[lastWord]; scope != none; scope = scopes_[scope].parent) {
        for (const Source& source : scopes_[scope].sources) {
            if (isQualified && !base::equalsIgnoringCase(source.alias, qualifier)) {
                continue;
            }
            MetColumn found = lookUp(source.table, column);
            if (found.type != ColumnType::unknown) {
                return found;
            }
        }
    }
    return {};
}

MetColumn ColumnFinder::lookUp(std::string_view tableName, std::string_view columnName) const {
    const Table* table = catalog_.table(tableName);
    if (table == nullptr) {
        return {};
    }
    for (const Column& column : table->columns) {
        if (base::equalsIgnoringCase(column.name, columnName)) {
            return {column.type, std::string(tableName) + "." + column.name};
        }
    }
    return {};
}

}  // namespace platform::jet
