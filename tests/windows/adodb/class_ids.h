// The stand-in's own class ids, by which it can be told from ADO.
#pragma once

namespace stand_in {

inline constexpr const wchar_t* connectionClass = L"{5B2C7B0E-6E5F-4D0A-9C11-3C4C2F1B7A11}";
inline constexpr const wchar_t* recordsetClass = L"{5B2C7B0E-6E5F-4D0A-9C11-3C4C2F1B7A12}";

}  // namespace stand_in
