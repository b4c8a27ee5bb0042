// Rounding stored reals to the decimal places a class file writes them with.
#pragma once

#include <span>
#include <string>

namespace maintenance {

// `value` rounded to `places` decimal places as a decimal text would be: to nearest from the
// value's exact binary expansion, an exact half rounding away from zero (0.125 -> 0.13,
// -2.5 -> -3), then read back as the nearest double. A value already at its precision comes
// back unchanged; infinities and NaN too. Independent of the C library's rounding mode.
double roundToPlaces(double value, int places);

// The places a field is written with: the most characters after the first "." of any of
// `texts`; 0 where none has one.
int decimalPlaces(std::span<const std::wstring> texts);

}  // namespace maintenance
