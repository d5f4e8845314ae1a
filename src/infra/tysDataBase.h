// tysDataBase is the database object: one open connection to the library, and the helpers that put values
// into SQL text. The window owns one for its whole life; every job makes, opens and closes one of its own.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "base/object_ref.h"
#include "base/variant.h"
#include "infra/Services.h"
#include "platform/database.h"

namespace infra {

class tysDataBase {
  public:
    explicit tysDataBase(Services& services);

    /// Opens the library that the settings name. When it cannot be opened, logs and shows why and ends the
    /// process.
    void initialise();

    /// The open connection, the same one each time; callers never close it. An empty reference before
    /// initialise.
    [[nodiscard]] base::ObjectRef<platform::Connection> getConnection() const;

    /// Closes the connection and drops it. Raises the connection's error when it is not open.
    void finalise();

    /// A new recordset, opened on the connection.
    [[nodiscard]] std::unique_ptr<platform::Recordset> openRecordset(std::string_view statement,
                                                                     platform::CursorType cursor,
                                                                     platform::LockType lock) const;

    /// The text with every single quote doubled, ready to stand between single quotes.
    [[nodiscard]] std::string sanitise(std::string_view s) const;

    /// The same for the first `length` characters of the text; the result has one character more per quote.
    [[nodiscard]] std::string sanitiseToLength(std::string_view s, std::size_t length) const;

    /// Day first without seconds ("5/3/2002 9:07"), "dd, mmm yyyy hh:mm:ss", and month first with unpadded
    /// parts
    /// ("3/5/2002 9:7:4"). What is neither a date nor a text that reads as one gives empty text.
    [[nodiscard]] std::string ausDateTime(const base::Variant& sysDate) const;
    [[nodiscard]] std::string explicitDateTime(const base::Variant& sysDate) const;
    [[nodiscard]] std::string usDateTime(const base::Variant& sysDate) const;

    [[nodiscard]] Services& services() const { return services_; }

  private:
    [[nodiscard]] static std::string userName();
    [[nodiscard]] static std::string password();

    Services& services_;
    base::ObjectRef<platform::Connection> connection_;
};

}  // namespace infra
