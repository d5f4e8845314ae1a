// The Recorder writes down what a program asks of the stand-in for ADO, one line for each use of a member:
// its name, then its arguments with their types, separated by tabs. The file is the one that the environment
// variable TYTEST_ADO_RECORD names; without it nothing is written.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "windows/com_server/server_object.h"

namespace stand_in {

/// "I4 3", "BSTR text" (a tab, a line end and a backslash in it escaped), "DISPATCH", or "-" for one left
/// out.
std::string described(const VARIANT* argument);

void record(std::string_view member, const std::vector<VARIANT*>& arguments);

}  // namespace stand_in
