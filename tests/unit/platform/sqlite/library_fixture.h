// A library of a test's own with an engine and a connection on it.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/runtime_error.h"
#include "fakes/temporary_folder.h"
#include "platform/sqlite/library_schema.h"
#include "platform/sqlite/sqlite_engine.h"

class LibraryTest : public testing::Test {
  protected:
    LibraryTest() { platform::createLibrary(path()); }

    [[nodiscard]] std::string path() const { return folder_ / "library.db"; }

    /// A connection beside the test's own.
    std::unique_ptr<platform::Connection> connect() { return engine_.open({path(), {}, {}, {}}); }

    platform::Connection& connection() {
        if (connection_ == nullptr) {
            connection_ = connect();
        }
        return *connection_;
    }

    void run(std::string_view statement) { connection().execute(statement); }

    std::unique_ptr<platform::Recordset> open(std::string_view statement, platform::CursorType cursor) {
        auto recordset = engine_.createRecordset();
        recordset->open(statement, connection(), cursor, platform::LockType::readOnly);
        return recordset;
    }
    std::unique_ptr<platform::Recordset> openFixed(std::string_view statement) {
        return open(statement, platform::CursorType::fixed);
    }

    /// One field of every row; "NULL" for null.
    std::vector<std::string> texts(std::string_view statement, std::string_view name) {
        std::vector<std::string> found;
        for (const auto rows = openFixed(statement); !rows->eof(); rows->moveNext()) {
            const base::Variant value = rows->field(name);
            found.push_back(value.isNull() ? "NULL" : value.toText());
        }
        return found;
    }

    base::Variant value(std::string_view statement, std::string_view name) {
        return openFixed(statement)->field(name);
    }

    fakes::TemporaryFolder folder_;
    platform::SqliteEngine engine_{{std::chrono::milliseconds(50), 2048}};
    std::unique_ptr<platform::Connection> connection_;
};

/// The description of the error that an action raises; empty when it raises none.
template <class Action>
std::string errorOf(Action&& action) {
    try {
        action();
    } catch (const base::RuntimeError& error) {
        return error.description();
    }
    return {};
}

/// The number of that error; 0 when it raises none.
template <class Action>
int errorNumberOf(Action&& action) {
    try {
        action();
    } catch (const base::RuntimeError& error) {
        return error.number();
    }
    return 0;
}
