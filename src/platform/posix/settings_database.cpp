#include "platform/posix/settings_database.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "base/text.h"
#include "platform/posix/settings_connection.h"

namespace platform::posix {

namespace {

constexpr mode_t ownerOnly = 0600;  // a database path may carry a password

SettingsValue valueOf(const SettingsQuery& row) {
    return {row.columnBytes(0), ValueType{static_cast<std::uint32_t>(row.columnNumber(1))},
            row.columnBytes(2)};
}

/// Everything below a key sorts between these two.
std::string beforeKeysBelow(const std::string& folded) {
    return folded.empty() ? folded : folded + '\\';
}

std::string behindKeysBelow(const std::string& folded) {
    return folded.empty() ? "\xFF" : folded + static_cast<char>('\\' + 1);
}

/// What a look for one row came to.
SettingsStatus foundOr(SettingsStatus missing, bool found, SettingsStatus status) {
    return found || status != SettingsStatus::success ? status : missing;
}

}  // namespace

SettingsDatabase::SettingsDatabase(std::string path) : path_(std::move(path)) {}

SettingsDatabase::~SettingsDatabase() = default;

SettingsStatus SettingsDatabase::findKey(const std::string& folded) {
    return run(Purpose::read, [&](Connection& connection) {
        const std::optional<bool> known = connection.memory().key(folded);
        if (known) {
            return *known ? SettingsStatus::success : SettingsStatus::notFound;
        }
        SettingsQuery query = connection.query(SettingsStatement::findKey);
        const bool found = query.text(folded).step();
        if (query.status() == SettingsStatus::success && connection.isAsRecalled()) {
            connection.memory().rememberKey(folded, found);
        }
        return foundOr(SettingsStatus::notFound, found, query.status());
    });
}

SettingsStatus SettingsDatabase::makeKey(std::string_view path) {
    const SettingsStatus present = findKey(base::fold(path));
    if (present != SettingsStatus::notFound) {
        return present;
    }
    return run(Purpose::write, [&](Connection& connection) {
        SettingsStatus status = connection.execute("BEGIN IMMEDIATE");
        for (std::size_t end = 0; status == SettingsStatus::success && end != std::string_view::npos;) {
            end = path.find('\\', end == 0 ? 0 : end + 1);
            const std::string_view key = path.substr(0, end);
            const std::string folded = base::fold(key);
            SettingsQuery query = connection.query(SettingsStatement::makeKey);
            query.text(folded).text(key).step();
            status = query.status();
        }
        if (status == SettingsStatus::success) {
            status = connection.execute("COMMIT");
        }
        if (status != SettingsStatus::success) {
            static_cast<void>(connection.execute("ROLLBACK"));
        }
        return status;
    });
}

SettingsStatus SettingsDatabase::removeKey(const std::string& folded) {
    return run(Purpose::erase, [&](Connection& connection) {
        const std::string before = beforeKeysBelow(folded);
        const std::string behind = behindKeysBelow(folded);
        SettingsQuery query = connection.query(SettingsStatement::removeKey);
        query.text(folded).text(before).text(behind).step();
        return foundOr(SettingsStatus::notFound, connection.changes() > 0, query.status());
    });
}

SettingsStatus SettingsDatabase::subKeys(const std::string& folded, std::vector<std::string>& names) {
    names.clear();
    const SettingsStatus present = folded.empty() ? SettingsStatus::success : findKey(folded);
    if (present != SettingsStatus::success) {
        return present;
    }
    return run(Purpose::read, [&](Connection& connection) {
        const std::string before = beforeKeysBelow(folded);
        const std::string behind = behindKeysBelow(folded);
        SettingsQuery query = connection.query(SettingsStatement::keysBetween);
        query.text(before).text(behind);
        while (query.step()) {
            const std::string key = query.columnBytes(0);
            if (key.find('\\', before.size()) == std::string::npos) {
                const std::string spelling = query.columnBytes(1);
                names.push_back(spelling.substr(spelling.rfind('\\') + 1));
            }
        }
        return query.status();
    });
}

SettingsStatus SettingsDatabase::readValue(const std::string& folded, std::string_view name,
                                           SettingsValue& value) {
    return run(Purpose::read, [&](Connection& connection) {
        std::optional<SettingsValue> found;
        const SettingsStatus status = look(connection, folded, base::fold(name), found);
        if (found) {
            value = std::move(*found);
        }
        return foundOr(SettingsStatus::notFound, found.has_value(), status);
    });
}

SettingsStatus SettingsDatabase::look(Connection& connection, const std::string& folded,
                                      const std::string& foldedName, std::optional<SettingsValue>& value) {
    const std::optional<SettingsValue>* known = connection.memory().value(folded, foldedName);
    if (known != nullptr) {
        value = *known;
        return SettingsStatus::success;
    }
    SettingsQuery query = connection.query(SettingsStatement::readValue);
    if (query.text(folded).text(foldedName).step()) {
        value = valueOf(query);
    }
    if (query.status() == SettingsStatus::success && connection.isAsRecalled()) {
        connection.memory().rememberValue(folded, foldedName, value);
    }
    return query.status();
}

SettingsStatus SettingsDatabase::storeValue(const std::string& folded, std::string_view name, ValueType type,
                                            std::string_view data) {
    bool stored = false;
    const SettingsStatus status = run(Purpose::write, [&](Connection& connection) {
        const std::string foldedName = base::fold(name);
        // Most writes of a running service say what is there already. Seeing that takes no lock from others.
        std::optional<SettingsValue> present;
        static_cast<void>(look(connection, folded, foldedName, present));
        if (present && present->type == type && present->data == data) {
            stored = true;
            return SettingsStatus::success;
        }
        return write(connection, folded, foldedName, {std::string(name), type, std::string(data)}, stored);
    });
    // Nothing was written: another process has stored the same meanwhile, or the key is gone.
    return status == SettingsStatus::success && !stored ? findKey(folded) : status;
}

SettingsStatus SettingsDatabase::write(Connection& connection, const std::string& folded,
                                       const std::string& foldedName, const SettingsValue& value,
                                       bool& stored) {
    SettingsQuery begin = connection.query(SettingsStatement::begin);
    begin.step();
    if (begin.status() != SettingsStatus::success) {
        return begin.status();
    }
    // From here on nobody else commits. What is remembered stays true beside the value that is written now.
    const std::optional<SettingsState> before = connection.state();
    const bool isKnown = before && before == connection.memory().state();
    SettingsStatus status = SettingsStatus::success;
    {
        SettingsQuery query = connection.query(SettingsStatement::storeValue);
        query.text(folded).text(foldedName).text(value.name).number(static_cast<std::uint32_t>(value.type));
        query.bytes(value.data).step();
        stored = connection.changes() > 0;
        status = query.status();
    }
    if (status == SettingsStatus::success) {
        SettingsQuery commit = connection.query(SettingsStatement::commit);
        commit.step();
        status = commit.status();
    }
    if (status != SettingsStatus::success) {
        static_cast<void>(connection.execute("ROLLBACK"));
        return status;
    }
    const std::optional<SettingsState> after = connection.state();
    if (stored && isKnown && after && after->isNextAfter(*before)) {
        connection.memory().follow(*after, folded, foldedName, value);
    }
    return status;
}

SettingsStatus SettingsDatabase::removeValue(const std::string& folded, std::string_view name) {
    return run(Purpose::erase, [&](Connection& connection) {
        const std::string foldedName = base::fold(name);
        SettingsQuery query = connection.query(SettingsStatement::removeValue);
        query.text(folded).text(foldedName).step();
        return foundOr(SettingsStatus::notFound, connection.changes() > 0, query.status());
    });
}

SettingsStatus SettingsDatabase::valueAt(const std::string& folded, std::uint32_t index,
                                         SettingsValue& value) {
    return run(Purpose::read, [&](Connection& connection) {
        SettingsQuery query = connection.query(SettingsStatement::valueAt);
        const bool found = query.text(folded).number(index).step();
        if (found) {
            value = valueOf(query);
        }
        return foundOr(SettingsStatus::noMoreItems, found, query.status());
    });
}

SettingsStatus SettingsDatabase::values(const std::string& folded, std::vector<SettingsValue>& values) {
    values.clear();
    const SettingsStatus present = findKey(folded);
    if (present != SettingsStatus::success) {
        return present;
    }
    return run(Purpose::read, [&](Connection& connection) {
        SettingsQuery query = connection.query(SettingsStatement::values);
        query.text(folded);
        while (query.step()) {
            values.push_back(valueOf(query));
        }
        return query.status();
    });
}

template <class Operation>
SettingsStatus SettingsDatabase::run(Purpose purpose, Operation operation) {
    SettingsStatus status = reach(purpose);
    if (status == SettingsStatus::success) {
        status = operation(*connection_);
    }
    if (status == SettingsStatus::damaged) {
        connection_.reset();
    }
    return status;
}

SettingsStatus SettingsDatabase::reach(Purpose purpose) {
    FileIdentity file;
    int error = identify(path_, file);
    if (connection_ != nullptr && (error != 0 || !connection_->isOf(file))) {
        connection_->forsake();
        connection_.reset();
    }
    if (error == ENOENT || error == ENOTDIR) {
        if (purpose != Purpose::write) {
            return SettingsStatus::notFound;
        }
        const SettingsStatus made = makeFile();
        if (made != SettingsStatus::success) {
            return made;
        }
        error = identify(path_, file);
    }
    if (error != 0 || !file.isPlain) {
        return SettingsStatus::accessDenied;
    }
    SettingsStatus status = connect(file, purpose);
    if (status == SettingsStatus::notFound && purpose == Purpose::write) {
        status = connection_->makeTables();
    }
    if (status == SettingsStatus::success) {
        connection_->recall(file);
    }
    return status;
}

SettingsStatus SettingsDatabase::connect(const FileIdentity& file, Purpose purpose) {
    // What could not be written when it was opened may be writable now.
    if (connection_ != nullptr && purpose == Purpose::write &&
        connection_->mode() == Connection::Mode::unchanging) {
        connection_.reset();
    }
    if (connection_ == nullptr) {
        connection_ = std::make_unique<Connection>(path_, Connection::Mode::shared, file);
    }
    SettingsStatus status = connection_->verify();
    if (status == SettingsStatus::accessDenied) {
        connection_ = std::make_unique<Connection>(path_, Connection::Mode::unchanging, file);
        status = connection_->verify();
    }
    if (status == SettingsStatus::accessDenied) {
        connection_.reset();
    }
    return status;
}

SettingsStatus SettingsDatabase::makeFile() const {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::path(path_).parent_path();
    if (!folder.empty() && std::filesystem::create_directories(folder, error)) {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, error);
    }
    // Made without being opened: closing a descriptor would drop the locks that others in this process hold
    // on the file.
    const bool made = !error && (::mknod(path_.c_str(), S_IFREG | ownerOnly, 0) == 0 || errno == EEXIST);
    return made ? SettingsStatus::success : SettingsStatus::accessDenied;
}

}  // namespace platform::posix
