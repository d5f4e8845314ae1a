#include "platform/sqlite/row_batch.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>

#include "platform/sqlite/handle.h"

namespace platform::sqlite {
namespace {

// More make a row no cheaper: by then it is the indexes that cost.
constexpr std::size_t rowsAtOnce = 16;

// Longer ones take so long by themselves that keeping a copy would cost more than it saves.
constexpr std::size_t longestStatement = 8192;

/// The values of one row as they stand in a translated insert: "( ?1 , ?2 )", numbered from a row's first.
std::string tuple(std::size_t parameters, std::size_t row) {
    std::string text = "(";
    for (std::size_t i = 1; i <= parameters; ++i) {
        text.append(i == 1 ? " ?" : " , ?").append(std::to_string(row * parameters + i));
    }
    return text + " )";
}

/// The insert of one row as an insert of many; empty when it does not end in one tuple of parameters.
std::string insertOfMany(const jet::Translation& insert) {
    const std::size_t parameters = insert.parameters.size();
    const std::string one = "VALUES " + tuple(parameters, 0);
    if (parameters == 0 || !insert.text.ends_with(one) || insert.readsIdentity) {
        return {};
    }
    std::string many = insert.text;
    for (std::size_t row = 1; row < rowsAtOnce; ++row) {
        many.append(", ").append(tuple(parameters, row));
    }
    return many;
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

bool RowBatch::take(PreparedShape& shape, const jet::LexedStatement& lexed, std::string_view text) {
    if (text.size() > longestStatement) {
        return false;
    }
    if (shape_ != &shape) {
        if (!canGather(shape)) {
            return false;
        }
        write(text);
        shape_ = &shape;
        ++shape.inUse;
    }
    add(lexed);
    if (rows_ == rowsAtOnce) {
        try {
            write(text);
        } catch (...) {
            --rows_;  // whoever gets the error brings this row again
            throw;
        }
    }
    return true;
}

bool RowBatch::canGather(PreparedShape& shape) {
    if (shape.many == nullptr && shape.translation.takesEveryRow) {
        shape.translation.takesEveryRow = false;
        std::string many = insertOfMany(shape.translation);
        if (!many.empty()) {
            shape.many = std::make_unique<PreparedShape>();
            shape.many->translation.text = std::move(many);
        }
    }
    return shape.many != nullptr;
}

void RowBatch::add(const jet::LexedStatement& lexed) {
    const auto& parameters = shape_->translation.parameters;
    const std::size_t first = rows_ * parameters.size();
    if (values_.size() < first + parameters.size()) {
        values_.resize(first + parameters.size());
    }
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const jet::Parameter& parameter = parameters[i];
        keep(values_[first + i], jet::parameterValue(lexed.literals()[parameter.literal], parameter.column));
    }
    ++rows_;
}

void RowBatch::write(std::string_view text) {
    if (shape_ == nullptr) {
        return;
    }
    if (!handle_.isInTransaction()) {
        forget();  // SQLite has ended the transaction by itself, for want of space or the like
        return;
    }
    const std::size_t parameters = shape_->translation.parameters.size();
    std::size_t written = 0;
    const auto insert = [&](PreparedShape& shape, std::size_t rows) {
        handle_.insert(shape, std::span(values_).subspan(written * parameters, rows * parameters), text);
        written += rows;
    };
    try {
        if (rows_ == rowsAtOnce) {
            insert(*shape_->many, rows_);
        }
        while (written < rows_) {
            insert(*shape_, 1);
        }
    } catch (...) {
        // What is written already is not written again.
        std::rotate(values_.begin(), values_.begin() + static_cast<std::ptrdiff_t>(written * parameters),
                    values_.end());
        rows_ -= written;
        throw;
    }
    forget();
}

void RowBatch::forget() noexcept {
    if (shape_ != nullptr) {
        --std::exchange(shape_, nullptr)->inUse;
    }
    rows_ = 0;
}

}  // namespace platform::sqlite
