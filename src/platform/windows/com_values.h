// Values between the service's Variant and automation's VARIANT.
#pragma once

#include "base/variant.h"

struct tagVARIANT;

namespace platform::windows {

/// Gives an initialised VARIANT a value. Raises std::bad_alloc when there is no room for a text.
void toAutomation(const base::Variant& value, tagVARIANT& variant);

/// The value of a VARIANT, through any reference: currencies, decimals and whole numbers beyond 32 bits
/// become doubles. Raises "Type mismatch" for what is no plain value (an object, an array, a missing
/// argument).
base::Variant fromAutomation(const tagVARIANT& variant);

/// A date as automation counts it (days since 30 December 1899, the time of day away from zero), and back.
/// Raises Overflow outside the years 100 to 9999.
double toAutomationDate(base::DateTime date);
base::DateTime fromAutomationDate(double days);

}  // namespace platform::windows
