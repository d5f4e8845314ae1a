#include "unit/app/library_file.h"

#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <utility>

#include "platform/sqlite/library_schema.h"

namespace {

struct Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};

int collect(void* rows, int columns, char** values, char** /*names*/) {
    static_cast<std::vector<std::string>*>(rows)->emplace_back(columns > 0 && values[0] != nullptr ? values[0]
                                                                                                   : "");
    return 0;
}

std::vector<std::string> execute(const std::string& path, const std::string& statements) {
    sqlite3* opened = nullptr;
    const int status = sqlite3_open(path.c_str(), &opened);
    const std::unique_ptr<sqlite3, Close> database(opened);
    sqlite3_busy_timeout(opened, 5000);
    std::vector<std::string> rows;
    if (status != SQLITE_OK ||
        sqlite3_exec(opened, statements.c_str(), collect, &rows, nullptr) != SQLITE_OK) {
        throw std::runtime_error(statements + ": " + sqlite3_errmsg(opened));
    }
    return rows;
}

}  // namespace

LibraryFile::LibraryFile(std::string path) : path_(std::move(path)) {
    platform::createLibrary(path_);
}

void LibraryFile::run(std::string_view statements) const {
    execute(path_, std::string(statements));
}

std::vector<std::string> LibraryFile::rows(std::string_view query) const {
    return execute(path_, std::string(query));
}

void LibraryFile::queue(int id, bool claimed) const {
    run("INSERT INTO file_index_queue (id, doc_path, flag_dirty) VALUES (" + std::to_string(id) +
        ", '/documents/one.txt', " + (claimed ? "1" : "0") + ")");
}

std::vector<std::string> LibraryFile::entries() const {
    return rows("SELECT id || iif(flag_dirty, ' claimed', '') FROM file_index_queue ORDER BY id");
}
