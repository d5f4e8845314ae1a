#include "windows/job/job_fixture.h"

#include <windows.h>

#include <utility>

#include "base/text.h"
#include "platform/windows/ado_engine.h"
#include "platform/windows/windows_settings.h"
#include "windows/ado/ado_library.h"

namespace job_tests {
namespace {

constexpr const wchar_t* ownRegistryKey = L"Software\\Orlent Corporation";
constexpr std::size_t riverSize = 1000;

}  // namespace

std::unique_ptr<platform::Connection> LibraryEngine::open(const platform::ConnectionSettings& settings) {
    asked = settings;
    platform::ConnectionSettings own = library_.settings();
    own.dataSource = settings.dataSource;
    return library_.engine().open(own);
}

JobSettings::JobSettings() {
    if (ado_tests::isStandInRegistered()) {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, ownRegistryKey);
        store_ = std::make_unique<platform::windows::WindowsSettings>();
    } else {
        store_ = std::make_unique<fakes::MemorySettingsStore>();
    }
}

JobSettings::~JobSettings() {
    if (ado_tests::isStandInRegistered()) {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, ownRegistryKey);
    }
}

void JobFixture::SetUp() {
    made = GetParam()();
    if (made.library == nullptr) {
        GTEST_SKIP() << made.reason;
    }
    dynamic_cast<platform::windows::AdoEngine&>(made.library->engine())
        .setTrace([this](std::string_view statement) { trace.emplace_back(statement); });
    engine = std::make_unique<LibraryEngine>(*made.library);
    services = std::make_unique<infra::Services>(
        platform::System{settings.store(), *engine, automation, toolkit, files, process, drives, clock});
    services->registry.SaveSettingString(platform::RootKey::currentUser, infra::serviceKey, "DataBasePath",
                                         made.library->settings().dataSource);
    services->registry.SaveSettingString(platform::RootKey::currentUser, infra::indexerKey, "LogFilePath",
                                         work.folder / "service.log");
    registerPlugin("txt", "TyTest.Text");
    indexer = std::make_unique<indexer::Indexer>(*services);
    writeRiver();
}

void JobFixture::writeRiver(const std::string& added) {
    std::string text =
        "Title: The Ki's river\nModified: 2002-03-05 09:07:04\nThe river Ki rises; a 'q'.\nA boat, a "
        "river.\n" +
        added;
    text.resize(riverSize, '\n');
    work.folder.write("docs/o'ki/river.txt", text);
}

void JobFixture::registerPlugin(const std::string& dataType, const std::string& progId) {
    services->registry.SaveSettingString(platform::RootKey::currentUser,
                                         std::string(infra::dataTypesKey) + dataType, "IndexPlugin", progId);
}

void JobFixture::enqueue(int indexType) {
    made.library->engine()
        .open(made.library->settings())
        ->execute(
            "INSERT INTO file_index_queue (doc_path, index_type, date_time, data_type, user_id, flag_dirty) "
            "VALUES ('" +
            base::replaceAll(riverPath, "'", "''") + "', " + std::to_string(indexType) +
            ", '2026-11-16 01:00:00', 'txt', 7, FALSE)");
    ++lastEntry;
    trace.clear();
}

Statements JobFixture::statementsOf(int indexType) {
    enqueue(indexType);
    EXPECT_TRUE(indexer->DoIndex(lastEntry));
    return std::exchange(trace, {});
}

std::vector<std::string> JobFixture::rows(std::string_view statement,
                                          const std::vector<std::string>& fields) {
    const auto connection = made.library->engine().open(made.library->settings());
    std::vector<std::string> found;
    for (const auto recordset = connection->query(statement); !recordset->eof(); recordset->moveNext()) {
        std::string row;
        for (const std::string& field : fields) {
            row += (row.empty() ? "" : " ") + recordset->field(field).toText();
        }
        found.push_back(row);
    }
    return found;
}

}  // namespace job_tests
