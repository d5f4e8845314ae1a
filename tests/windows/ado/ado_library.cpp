#include "windows/ado/ado_library.h"

#include <windows.h>
// windows.h stands first: COM's header needs it.
#include <objbase.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "base/text.h"
#include "platform/sqlite/library_schema.h"

namespace ado_tests {
namespace {

constexpr const wchar_t* recordVariable = L"TYTEST_ADO_RECORD";
constexpr const wchar_t* standInClass = L"{5B2C7B0E-6E5F-4D0A-9C11-3C4C2F1B7A11}";

std::vector<Use> readRecord(const std::string& text) {
    std::vector<Use> uses;
    for (const std::string_view line : base::split(text, '\n')) {
        if (!line.empty()) {
            Use& use = uses.emplace_back();
            for (const std::string_view part : base::split(line, '\t')) {
                use.emplace_back(part);
            }
        }
    }
    return uses;
}

}  // namespace

bool isStandInRegistered() {
    CLSID registered{};
    CLSID standIn{};
    return SUCCEEDED(::CLSIDFromProgID(L"ADODB.Connection", &registered)) &&
           SUCCEEDED(::CLSIDFromString(standInClass, &standIn)) && registered == standIn;
}

AdoRecord::AdoRecord(std::string file) : file_(std::move(file)) {
    ::SetEnvironmentVariableW(recordVariable, std::filesystem::path(file_).c_str());
}

AdoRecord::~AdoRecord() {
    ::SetEnvironmentVariableW(recordVariable, nullptr);
}

std::vector<Use> AdoRecord::take() {
    std::ifstream file(file_, std::ios::binary);
    const std::vector<Use> all = readRecord({std::istreambuf_iterator<char>(file), {}});
    std::vector<Use> fresh(all.begin() + static_cast<std::ptrdiff_t>(taken_), all.end());
    taken_ = all.size();
    return fresh;
}

StandInLibrary::StandInLibrary() {
    platform::createLibrary(path());
}

platform::ConnectionSettings StandInLibrary::settings() const {
    return {path(), folder_ / "system.mdw", "reader", "password"};
}

contract::MadeLibrary standInLibrary() {
    if (!isStandInRegistered()) {
        return {nullptr, "the stand-in for ADO is registered in the suite's own Wine session only"};
    }
    return {std::make_unique<StandInLibrary>(), {}};
}

std::vector<std::string> statementsOf(const std::vector<Use>& record) {
    constexpr std::string_view type = "BSTR ";
    std::vector<std::string> statements;
    for (const Use& use : record) {
        const std::string& member = use.front();
        if (member == "Connection.Execute" || member == "Recordset.Open") {
            statements.push_back(base::replaceAll(use.at(1).substr(type.size()), "\\\\", "\\"));
        } else if (member == "Connection.BeginTrans") {
            statements.emplace_back("BEGIN TRANSACTION");
        } else if (member == "Connection.CommitTrans") {
            statements.emplace_back("COMMIT TRANSACTION");
        } else if (member == "Connection.RollbackTrans") {
            statements.emplace_back("ROLLBACK TRANSACTION");
        }
    }
    return statements;
}

}  // namespace ado_tests
