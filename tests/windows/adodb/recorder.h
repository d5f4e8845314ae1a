// A RecordedObject writes down what a program asks of it, one line for each use of a member: its name, with a
// "=" behind it when the member is set, then its arguments with their types, separated by tabs. The file is
// the one that the environment variable TYTEST_ADO_RECORD names; without it nothing is written.
#pragma once

#include <string>
#include <utility>

#include "windows/com_server/server_object.h"

namespace stand_in {

/// "I4 3", "BSTR text" (a tab, a line end and a backslash in it escaped), "DISPATCH", or "-" for one left
/// out.
std::string described(const VARIANT* argument);

/// The base of all of the stand-in's objects: no member can be left out of the record.
class RecordedObject : public com_server::ServerObject {
  public:
    /// `name` is what the record calls the object.
    explicit RecordedObject(std::wstring name) : name_(std::move(name)) {}

  protected:
    void used(const std::wstring& member, WORD kind, const com_server::Call& call) override;

  private:
    std::wstring name_;
};

}  // namespace stand_in
