#include "tyctl/library.h"

#include "infra/tysRegistry.h"
#include "tyctl/failure.h"

namespace tyctl {

Library::Library(Settings& settings)
    : path_(settings.text(infra::serviceKey, "DataBasePath")),
      services_({settings.store(), engine_, automation_, toolkit_, files_, process_, drives_, clock_}),
      database_(services_) {
    if (path_.empty()) {
        throw Failure("no library is set up in " + settings.path() + "; run tyctl init");
    }
    try {
        // An opening of our own first: the one below would end the program with a message meant for services.
        platform::ConnectionSettings source;
        source.dataSource = path_;
        engine_.open(source)->close();
    } catch (const std::exception& error) {
        throw Failure("cannot open the library " + path_ + ": " + error.what() +
                      "; check the setting service\\DataBasePath, or run tyctl init for a new library");
    }
    database_.initialise();
}

void Library::execute(const std::string& statement) {
    database_.getConnection()->execute(statement);
}

std::unique_ptr<platform::Recordset> Library::query(const std::string& statement) {
    return database_.getConnection()->query(statement);
}

void Library::beginTransaction() {
    database_.getConnection()->beginTrans();
}

void Library::commitTransaction() {
    database_.getConnection()->commitTrans();
}

std::int64_t Library::count(const std::string& statement) {
    return static_cast<std::int64_t>(query(statement)->field("counted").toDouble());
}

std::string Library::quoted(std::string_view text) const {
    return "'" + database_.sanitise(text) + "'";
}

std::string Library::quotedNow() const {
    return "'" + clock_.now().longText() + "'";
}

}  // namespace tyctl
