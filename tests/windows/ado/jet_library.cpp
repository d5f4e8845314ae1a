// A library that Jet makes itself, from the same tables as every other.
#include <array>
#include <regex>

#include "base/runtime_error.h"
#include "base/text.h"
#include "platform/sqlite/library_schema.h"
#include "platform/windows/dispatch.h"
#include "windows/ado/ado_library.h"

namespace ado_tests {
namespace {

using platform::windows::Argument;
using platform::windows::Dispatch;

/// Jet inserts one row at a time.
void addStatement(const std::string& statement, std::vector<std::string>& statements) {
    static const std::regex insertion("\\s*(INSERT INTO \\w+ \\([^)]*\\)\\s+VALUES)(.*)");
    static const std::regex row("\\([^)]*\\)");
    std::smatch parts;
    if (std::regex_match(statement, parts, insertion)) {
        const std::string rows = parts[2];
        for (auto found = std::sregex_iterator(rows.begin(), rows.end(), row);
             found != std::sregex_iterator(); ++found) {
            statements.push_back(parts[1].str() + " " + found->str());
        }
    } else if (statement.find("CREATE") != std::string::npos) {
        statements.push_back(statement);
    }
}

class JetLibrary : public contract::Library {
  public:
    JetLibrary() {
        const base::Variant text("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path());
        const Argument argument = &text;
        // The catalogue holds the new file open as long as it lives.
        static_cast<void>(Dispatch::create("ADOX.Catalog").callForObject("Create", {&argument, 1}));
        const auto connection = engine_.open(settings());
        for (const std::string& statement : jetSchema()) {
            connection->execute(statement);
        }
    }

    platform::DatabaseEngine& engine() override { return engine_; }

    /// A library without a workgroup of its own is opened as its administrator, who has no password.
    [[nodiscard]] platform::ConnectionSettings settings() const override { return {path(), {}, "Admin", {}}; }

  private:
    [[nodiscard]] std::string path() const { return folder_ / "library.mdb"; }

    platform::windows::ComApartment apartment_;
    fakes::TemporaryFolder folder_;
    platform::windows::AdoEngine engine_;
};

}  // namespace

/// The statements of the library's schema in Jet's own words; what only concerns SQLite is left out.
std::vector<std::string> jetSchema() {
    // A sentence may be longer than a Text column holds, and a Memo column cannot be compared as a key.
    static const std::vector<std::pair<std::regex, std::string>> words = {
        {std::regex("--[^\n]*"), ""},
        {std::regex("CREATE TRIGGER [\\s\\S]*?\\bEND;"), ""},
        {std::regex("(ANALYZE|DELETE FROM|INSERT INTO) sqlite_[^;]*;"), ""},
        {std::regex("\\(\\w+ / \\d+, (\\w+)\\)"), "($1)"},  // an index of an expression
        {std::regex("INSERT OR ROLLBACK"), "INSERT"},
        {std::regex("PRAGMA[^;]*;|BEGIN;|COMMIT;"), ""},
        {std::regex("INTEGER PRIMARY KEY AUTOINCREMENT"), "COUNTER PRIMARY KEY"},
        {std::regex("content TEXT COLLATE NOCASE"), "content MEMO"},
        {std::regex("TEXT COLLATE NOCASE"), "TEXT(255)"},
        {std::regex("NUMBER"), "DOUBLE"},
        {std::regex("BOOLEAN NOT NULL DEFAULT ([01]) CHECK \\([^)]*\\([^)]*\\)\\)"), "YESNO DEFAULT $1"},
        {std::regex("\\(datetime\\('now', 'localtime'\\)\\)"), "Now()"}};
    std::string text(platform::librarySchema());
    for (const auto& [from, to] : words) {
        text = std::regex_replace(text, from, to);
    }
    std::vector<std::string> statements;
    for (const std::string_view statement : base::split(text, ';')) {
        addStatement(base::replaceAll(statement, "\n", " "), statements);
    }
    return statements;
}

contract::MadeLibrary jetLibrary() {
    if (isStandInRegistered()) {
        return {nullptr, "a machine with Jet is needed; here the stand-in is registered in the place of ADO"};
    }
    try {
        return {std::make_unique<JetLibrary>(), {}};
    } catch (const base::RuntimeError& error) {
        return {nullptr, "this machine makes no Jet library: " + error.description()};
    }
}

}  // namespace ado_tests
