#include "platform/sqlite/row_batch.h"

#include <memory>
#include <span>
#include <string>
#include <utility>

#include "platform/sqlite/handle.h"
#include "platform/sqlite/library_schema.h"

namespace platform::sqlite {
namespace {

// More make a row no cheaper: by then it is the indexes that cost.
constexpr std::size_t rowsAtOnce = 16;

// Longer ones take so long by themselves that keeping a copy would cost more than it saves.
constexpr std::size_t longestStatement = 8192;

struct Kind {
    std::string_view table;
    std::string_view insertHead;  // as the service builds it
};
constexpr std::array<Kind, 2> rowKinds = {
    {{"word_index",
      "INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
      "first_matching_sentence ) VALUES( "},
     {"ascii_sentences",
      "INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) VALUES("}}};

/// The values of one row as they stand in a translated insert: "( ?1 , ?2 )", numbered from a row's first.
std::string tuple(std::size_t parameters, std::size_t row) {
    std::string text = "(";
    for (std::size_t i = 1; i <= parameters; ++i) {
        text.append(i == 1 ? " ?" : " , ?").append(std::to_string(row * parameters + i));
    }
    return text + " )";
}

/// The insert of one row as an insert of many; empty when its values are not one tuple of literals.
std::string insertOfMany(const jet::Translation& insert) {
    const std::size_t parameters = insert.parameters.size();
    if (parameters == 0 || insert.readsIdentity || !insert.text.ends_with("VALUES " + tuple(parameters, 0))) {
        return {};
    }
    std::string many = insert.text;
    for (std::size_t row = 1; row < rowsAtOnce; ++row) {
        many.append(", ").append(tuple(parameters, row));
    }
    return many;
}

bool canBeMany(PreparedShape& shape) {
    if (shape.many == nullptr) {
        std::string many = insertOfMany(shape.translation);
        if (many.empty()) {
            return false;
        }
        shape.many = std::make_unique<PreparedShape>();
        shape.many->translation.text = std::move(many);
    }
    return true;
}

/// Keeps a value beyond the statement that holds it.
void keep(jet::ParameterValue& kept, jet::ParameterValue value) {
    const auto* view = std::get_if<std::string_view>(&value);
    if (view == nullptr) {
        kept = std::move(value);
    } else if (auto* text = std::get_if<std::string>(&kept)) {
        text->assign(*view);
    } else {
        kept = std::string(*view);
    }
}

}  // namespace

bool RowBatch::isFor(std::string_view insert) {
    static_assert(rowKinds.size() == kinds);
    if (insert.size() > longestStatement || !handle_.isInTransaction()) {
        return false;
    }
    for (std::size_t kind = 0; kind < kinds; ++kind) {
        if (insert.starts_with(rowKinds[kind].insertHead)) {
            return takesEveryRow(kind);
        }
    }
    return false;
}

/// Within a transaction nobody else changes the tables, so that one look at the version is enough.
bool RowBatch::takesEveryRow(std::size_t kind) {
    if (!knowsSchema_) {
        const std::int64_t version = handle_.schemaVersion();
        if (version != schemaVersion_) {
            takesEveryRow_.fill(Answer::unknown);
            schemaVersion_ = version;
        }
        knowsSchema_ = true;
    }
    Answer& answer = takesEveryRow_.at(kind);
    if (answer == Answer::unknown) {
        answer = isAsMade(rowKinds[kind].table) ? Answer::yes : Answer::no;
    }
    return answer == Answer::yes;
}

bool RowBatch::isAsMade(std::string_view table) {
    const std::string name = "'" + std::string(table) + "' COLLATE NOCASE";
    const std::string ask = "SELECT coalesce(sql, '') AS made FROM sqlite_schema WHERE tbl_name = " + name +
                            " UNION ALL SELECT '' FROM sqlite_temp_schema WHERE tbl_name = " + name;
    Statement parts = handle_.prepare(ask, 0, Texts::stay);
    bool isThere = false;
    while (parts.step(ask)) {
        isThere = true;
        const std::string made = parts.row(*parts.columns()).at(0).toText();
        if (made.empty() || librarySchema().find(made + ";") == std::string_view::npos) {
            return false;
        }
    }
    return isThere;
}

bool RowBatch::take(PreparedShape& shape, const jet::LexedStatement& lexed, std::string_view text) {
    if (shape_ != &shape) {
        if (!canBeMany(shape)) {
            return false;
        }
        write(text);
        shape_ = &shape;
        ++shape.inUse;
    }
    add(lexed);
    if (rows_ == rowsAtOnce) {
        write(text);
    }
    return true;
}

void RowBatch::add(const jet::LexedStatement& lexed) {
    const auto& parameters = shape_->translation.parameters;
    const std::size_t first = rows_ * parameters.size();
    if (values_.size() < first + parameters.size()) {
        values_.resize(first + parameters.size());
    }
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const jet::Parameter& parameter = parameters[i];
        const jet::Literal& literal = lexed.literals()[parameter.literal];
        if (const auto whole = jet::plainWholeNumber(literal, parameter.column)) {
            values_[first + i] = *whole;
        } else {
            keep(values_[first + i], jet::parameterValue(literal, parameter.column));
        }
    }
    ++rows_;
}

void RowBatch::write(std::string_view text) {
    if (shape_ == nullptr) {
        return;
    }
    if (!handle_.isInTransaction()) {
        forget();  // SQLite has ended the transaction by itself
        return;
    }
    try {
        writeRows(text);
    } catch (...) {
        handle_.rollBackQuietly();
        throw;
    }
    forget();
}

void RowBatch::writeRows(std::string_view text) {
    const std::span values(values_);
    const std::size_t parameters = shape_->translation.parameters.size();
    if (rows_ == rowsAtOnce) {
        handle_.insert(*shape_->many, values.first(rows_ * parameters), text);
        return;
    }
    for (std::size_t row = 0; row < rows_; ++row) {
        handle_.insert(*shape_, values.subspan(row * parameters, parameters), text);
    }
}

void RowBatch::forget() noexcept {
    if (shape_ != nullptr) {
        --std::exchange(shape_, nullptr)->inUse;
    }
    rows_ = 0;
}

}  // namespace platform::sqlite
