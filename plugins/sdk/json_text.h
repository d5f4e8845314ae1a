// Values as JSON text, written to its place in an answer right away: a document's sentences need no tree of
// values before.
#pragma once

#include <string>

#include "base/variant.h"

namespace sdk {

/// Appends the value. Bytes of a text that are no UTF-8 become U+FFFD: a document in a strange encoding must
/// not end the plug-in.
void appendJson(std::string& to, const base::Variant& value);

}  // namespace sdk
