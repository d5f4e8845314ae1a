// The contract's methods by name, for calls that arrive as text.
#pragma once

#include <span>
#include <string_view>

#include "base/variant.h"
#include "sdk/extractor.h"

namespace sdk {

/// Calls a method. Raises an ExtractionError when there is no such method or the number of arguments is
/// wrong, and whatever the method raises.
base::Variant callByName(Extractor& extractor, std::string_view method, std::span<base::Variant> arguments);

}  // namespace sdk
